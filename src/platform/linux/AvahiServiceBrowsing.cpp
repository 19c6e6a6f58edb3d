#include "platform/linux/AvahiServiceBrowsing.h"

#include "async/Clock.h"
#include "platform/linux/AvahiServiceBrowse.h"

#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QPointer>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString service = u"org.freedesktop.Avahi"_s;
const QString serverInterface = u"org.freedesktop.Avahi.Server"_s;
const QString browserInterface = u"org.freedesktop.Avahi.ServiceBrowser"_s;
constexpr int any = -1; // interface or protocol
constexpr auto browsePatience = 5s;
constexpr std::size_t mostEarly = 2000; // signals that wait for their object's path

} // namespace

AvahiServiceBrowsing::AvahiServiceBrowsing(Clock &clock, Bus bus, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_makeBus(std::move(bus))
{}

AvahiServiceBrowsing::~AvahiServiceBrowsing() = default;

std::unique_ptr<ServiceBrowse> AvahiServiceBrowsing::browse(QString type, Handlers handlers)
{
    auto browse = std::make_unique<AvahiServiceBrowse>(*this, std::move(type), std::move(handlers));
    if (connectToBus())
        browse->begin();
    else
        QMetaObject::invokeMethod(
            browse.get(),
            [browse = browse.get()] {
                browse->began(QDBusMessage::createError(QDBusError::NoServer, u"no system bus"_s));
            },
            Qt::QueuedConnection);
    return browse;
}

// An object of the daemon may speak before its path is known here, so what any of them says is listened to.
bool AvahiServiceBrowsing::connectToBus()
{
    if (m_bus && m_bus->isConnected())
        return true;
    m_bus = m_makeBus();
    if (!m_bus->isConnected())
        return false;
    const QString anyPath;
    m_bus->connect(service, anyPath, browserInterface, u"ItemNew"_s, this, SLOT(itemNew(QDBusMessage)));
    m_bus->connect(service, anyPath, browserInterface, u"ItemRemove"_s, this, SLOT(itemRemove(QDBusMessage)));
    m_bus->connect(service, anyPath, browserInterface, u"AllForNow"_s, this, SLOT(allForNow(QDBusMessage)));
    m_bus->connect(service, anyPath, browserInterface, u"Failure"_s, this, SLOT(failure(QDBusMessage)));
    m_owner.emplace(service, *m_bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(&*m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this, &AvahiServiceBrowsing::ownerChanged);
    return true;
}

void AvahiServiceBrowsing::ask(AvahiServiceBrowse &browse)
{
    ++m_inTheMaking;
    call(u"ServiceBrowserNew"_s, {any, any, browse.type(), u"local"_s, 0U}, browsePatience,
         [this, asking = QPointer(&browse)](const QDBusMessage &reply) {
             if (asking)
                 asking->began(reply);
             else if (reply.type() != QDBusMessage::ErrorMessage)
                 release(reply.arguments().value(0).value<QDBusObjectPath>().path());
             if (--m_inTheMaking == 0)
                 m_early.clear();
         });
}

void AvahiServiceBrowsing::call(const QString &method, const QVariantList &arguments,
                                std::chrono::milliseconds limit, Replied replied)
{
    auto message = QDBusMessage::createMethodCall(service, u"/"_s, serverInterface, method);
    message.setArguments(arguments);
    auto *watcher =
        new QDBusPendingCallWatcher(m_bus->asyncCall(message, static_cast<int>(limit.count())), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, replied = std::move(replied)] {
        watcher->deleteLater();
        replied(watcher->reply());
    });
}

void AvahiServiceBrowsing::adopt(const QString &path, AvahiServiceBrowse &browse)
{
    m_byPath[path] = &browse;
    const QPointer stillThere = &browse;
    const auto early = m_early;
    for (const QDBusMessage &signal : early)
        if (stillThere && signal.path() == path)
            browse.take(signal);
}

void AvahiServiceBrowsing::release(const QString &path)
{
    m_byPath.remove(path);
    m_bus->asyncCall(QDBusMessage::createMethodCall(service, path, browserInterface, u"Free"_s));
}

void AvahiServiceBrowsing::deliver(const QDBusMessage &signal)
{
    if (AvahiServiceBrowse *browse = m_byPath.value(signal.path()))
        browse->take(signal);
    else if (m_inTheMaking > 0 && m_early.size() < mostEarly)
        m_early.push_back(signal);
}

void AvahiServiceBrowsing::ownerChanged(const QString &, const QString &former, const QString &now)
{
    const auto browses = m_browses; // one that fails is gone from it
    if (!former.isEmpty()) {
        m_byPath.clear();
        m_early.clear();
        for (AvahiServiceBrowse *browse : browses)
            browse->wentAway();
    }
    if (!now.isEmpty())
        for (AvahiServiceBrowse *browse : browses)
            browse->cameBack();
}

} // namespace morvane
