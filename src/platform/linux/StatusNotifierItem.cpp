#include "platform/linux/StatusNotifierItem.h"

#include "platform/linux/TrayPictures.h"
#include "utils/text/Product.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;
const QString itemPath = u"/StatusNotifierItem"_s;
constexpr auto contents = QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                          QDBusConnection::ExportAllProperties;

} // namespace

StatusNotifierItem::StatusNotifierItem(std::optional<QDBusConnection> bus, QObject *parent)
    : TrayIcon(parent)
    , m_bus(std::move(bus))
{
    if (m_bus && !m_bus->isConnected())
        m_bus.reset();
    if (!m_bus)
        return;
    registerTrayTypes();
    m_face.onActivated = [this] { Q_EMIT chosen(TrayCommand::show); };
    m_menu.onChosen = [this](TrayCommand command) { Q_EMIT chosen(command); };
    m_watcher.setConnection(*m_bus);
    m_watcher.addWatchedService(watcherName);
    connect(&m_watcher, &QDBusServiceWatcher::serviceRegistered, this, &StatusNotifierItem::enlist);
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, &StatusNotifierItem::watcherGone);
    for (const auto *signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        m_bus->connect(watcherName, watcherPath, watcherName, QLatin1StringView(signal), this,
                       SLOT(lookForPanel()));
}

StatusNotifierItem::~StatusNotifierItem()
{
    hide();
}

void StatusNotifierItem::show(const TrayFace &face)
{
    if (!m_bus || m_shown == face)
        return;
    const bool isNewState = !m_shown || m_shown->state != face.state;
    m_shown = face;
    m_menu.set(face.menu);
    m_face.look.toolTip = {{}, {}, QString(Product::name), face.words};
    if (isNewState) {
        m_face.look.status = face.state == TrayState::asking ? u"NeedsAttention"_s : u"Active"_s;
        m_face.look.iconName = TrayPictures::nameOf(face.state);
        m_face.look.pictures = TrayPictures::of(face.state);
    }
    if (m_name.isEmpty())
        return expose();
    if (isNewState) {
        Q_EMIT m_face.NewIcon();
        Q_EMIT m_face.NewAttentionIcon();
        Q_EMIT m_face.NewStatus(m_face.look.status);
    }
    Q_EMIT m_face.NewToolTip();
}

// A name of its own for each time that it is shown: that the name goes is how panels learn that it is hidden.
void StatusNotifierItem::expose()
{
    static int number = 0;
    m_bus->registerObject(itemPath, &m_face, contents);
    m_bus->registerObject(StatusNotifierFace::menu().path(), &m_menu, contents);
    m_name = u"org.kde.StatusNotifierItem-%1-%2"_s.arg(QCoreApplication::applicationPid()).arg(++number);
    if (!m_bus->registerService(m_name))
        m_name = m_bus->baseService(); // in a sandbox that keeps such names to itself
    enlist();
}

void StatusNotifierItem::hide()
{
    if (m_name.isEmpty())
        return;
    m_face.look.status = u"Passive"_s; // for a panel that looks only at this
    Q_EMIT m_face.NewStatus(m_face.look.status);
    if (m_name != m_bus->baseService())
        m_bus->unregisterService(m_name);
    m_bus->unregisterObject(StatusNotifierFace::menu().path());
    m_bus->unregisterObject(itemPath);
    m_name.clear();
    m_shown.reset();
    watcherGone();
}

void StatusNotifierItem::enlist()
{
    if (m_name.isEmpty())
        return;
    ++m_round;
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                               u"RegisterStatusNotifierItem"_s);
    call.setAutoStartService(false); // a panel isn't ours to start
    call.setArguments({m_name});
    auto *answer = new QDBusPendingCallWatcher(m_bus->asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, round = m_round] {
        answer->deleteLater();
        if (round != m_round)
            return;
        m_isEnlisted = !answer->isError();
        lookForPanel();
    });
}

void StatusNotifierItem::lookForPanel()
{
    if (!m_isEnlisted)
        return setDrawn(false);
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, u"org.freedesktop.DBus.Properties"_s,
                                               u"Get"_s);
    call.setAutoStartService(false);
    call.setArguments({watcherName, u"IsStatusNotifierHostRegistered"_s});
    auto *answer = new QDBusPendingCallWatcher(m_bus->asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, round = m_round] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (round == m_round)
            setDrawn(reply.isValid() && reply.value().variant().toBool());
    });
}

void StatusNotifierItem::watcherGone()
{
    ++m_round;
    m_isEnlisted = false;
    setDrawn(false);
}

void StatusNotifierItem::setDrawn(bool isDrawn)
{
    if (m_isDrawn == isDrawn)
        return;
    m_isDrawn = isDrawn;
    Q_EMIT isDrawnChanged();
}

} // namespace morvane
