#include "platform/linux/DesktopNotifications.h"

#include "platform/linux/WindowActivation.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;
const QString clicked = u"default"_s; // the action of a click on the notification itself
constexpr int asTheDesktopLikes = -1; // milliseconds

constexpr qsizetype largestNumbers = 1 << 16; // bytes

enum class Urgency : uchar { normal = 1, critical = 2 };

QDBusMessage callOf(const QString &method, const QVariantList &arguments = {})
{
    auto message = QDBusMessage::createMethodCall(service, path, service, method);
    message.setArguments(arguments);
    return message;
}

// By its own name: one that has taken its place may call something else so.
QDBusMessage closingOf(const QString &server, uint id)
{
    auto call = QDBusMessage::createMethodCall(server, path, service, u"CloseNotification"_s);
    call.setArguments({id});
    call.setAutoStartService(false);
    return call;
}

} // namespace

DesktopNotifications::DesktopNotifications(std::optional<QDBusConnection> bus, const QString &numbers,
                                           QObject *parent)
    : NotificationPosting(parent)
    , m_bus(std::move(bus))
    , m_numbers(numbers)
{
    if (m_bus && !m_bus->isConnected())
        m_bus.reset();
    if (!m_bus)
        return;
    m_owner.emplace(*m_bus, service);
    closeLeftOnes();
    // By no sender's name, which the library would wait for; keyOf() asks who it was.
    m_bus->connect({}, path, service, u"ActionInvoked"_s, this, SLOT(actionInvoked(uint, QString)));
    m_bus->connect({}, path, service, u"ActivationToken"_s, this, SLOT(activationToken(uint, QString)));
    m_bus->connect({}, path, service, u"NotificationClosed"_s, this, SLOT(notificationClosed(uint, uint)));
}

DesktopNotifications::~DesktopNotifications()
{
    for (const auto &[key, shown] : std::exchange(m_shown, {})) {
        if (shown.id != 0)
            close(shown);
    }
    noteNumbers();
}

void DesktopNotifications::post(const DesktopNotice &notice)
{
    if (!m_bus)
        return;
    Shown &shown = m_shown[notice.key];
    shown.notice = notice;
    shown.isWanted = true;
    shown.isNew = true;
    if (m_capabilities)
        send(shown);
    else if (!std::exchange(m_isAskingCapabilities, true))
        askCapabilities();
}

void DesktopNotifications::withdraw(const QString &key)
{
    const auto found = m_shown.find(key);
    if (found == m_shown.end())
        return;
    if (found->second.isAsking) {
        found->second.isWanted = false; // it is closed once the server has told its number
        return;
    }
    if (found->second.id != 0)
        close(found->second);
    m_shown.erase(found);
    noteNumbers();
}

void DesktopNotifications::askCapabilities()
{
    auto *watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(callOf(u"GetCapabilities"_s)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_isAskingCapabilities = false;
        const QDBusPendingReply<QStringList> reply = *watcher;
        if (!reply.isValid()) // nobody shows any
            return m_shown.clear();
        const QStringList told = reply.value();
        m_capabilities = QSet<QString>(told.begin(), told.end());
        m_server = m_owner->current();
        sendAll();
    });
}

void DesktopNotifications::sendAll()
{
    for (auto &[key, shown] : m_shown)
        send(shown);
}

void DesktopNotifications::send(Shown &shown)
{
    if (shown.isAsking || !shown.isNew)
        return;
    shown.isAsking = true;
    shown.isNew = false;
    auto *watcher =
        new QDBusPendingCallWatcher(m_bus->asyncCall(callOf(u"Notify"_s, arguments(shown))), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, key = shown.notice.key] {
        watcher->deleteLater();
        answered(key, *watcher);
    });
}

void DesktopNotifications::answered(const QString &key, QDBusPendingCallWatcher &watcher)
{
    const QDBusPendingReply<uint> reply = watcher;
    const auto found = m_shown.find(key);
    if (found == m_shown.end())
        return;
    Shown &shown = found->second;
    shown.isAsking = false;
    shown.id = reply.isValid() ? reply.value() : 0;
    shown.server = m_owner->current();
    noteNumbers();
    if (!shown.isWanted)
        return withdraw(key);
    if (reply.isValid() && shown.server != m_server) { // another one has come, which may show less
        m_capabilities.reset();
        if (!std::exchange(m_isAskingCapabilities, true))
            askCapabilities();
    }
    if (shown.isNew && m_capabilities)
        send(shown);
    else if (!reply.isValid())
        m_shown.erase(found);
}

QVariantList DesktopNotifications::arguments(const Shown &shown) const
{
    const DesktopNotice &notice = shown.notice;
    const auto urgency = notice.isWaitedFor ? Urgency::critical : Urgency::normal;
    QVariantMap hints{{u"desktop-entry"_s, QString(Product::desktopId)},
                      {u"category"_s, u"im.received"_s},
                      {u"urgency"_s, QVariant::fromValue(static_cast<uchar>(urgency))}};
    if (notice.isPassing)
        hints.insert(u"transient"_s, true);
    QString title = notice.title;
    QString body = notice.body;
    if (!m_capabilities->contains(u"body"_s) && !body.isEmpty())
        title += u": "_s + std::exchange(body, {});
    if (m_capabilities->contains(u"body-markup"_s))
        body = body.toHtmlEscaped();
    QStringList actions;
    if (m_capabilities->contains(u"actions"_s))
        actions = {clicked, u"Open"_s};
    return {QString(Product::name), shown.id, QString(Product::desktopId), title, body, actions, hints,
            asTheDesktopLikes};
}

void DesktopNotifications::close(const Shown &shown)
{
    m_bus->asyncCall(closingOf(shown.server, shown.id));
}

// A line each: the server's name on the bus, which it alone ever has there, and the number.
void DesktopNotifications::closeLeftOnes()
{
    if (m_numbers.isEmpty())
        return;
    try {
        const auto left = PrivateFile::read(m_numbers, largestNumbers).value_or(QByteArray());
        for (const QByteArray &line : left.split('\n')) {
            const QByteArrayList words = line.split(' ');
            if (words.size() == 2 && words.front().startsWith(':'))
                m_bus->asyncCall(closingOf(QString::fromLatin1(words.front()), words.back().toUInt()));
        }
    } catch (const FileError &) {
        // They stay.
    }
    noteNumbers();
}

void DesktopNotifications::noteNumbers() const
{
    if (m_numbers.isEmpty())
        return;
    QByteArray lines;
    for (const auto &[key, shown] : m_shown) {
        if (shown.id != 0)
            lines += shown.server.toLatin1() + ' ' + QByteArray::number(shown.id) + '\n';
    }
    try {
        if (lines.isEmpty())
            QFile::remove(m_numbers);
        else
            PrivateFile::write(m_numbers, lines);
    } catch (const FileError &) {
        // The next run doesn't know them.
    }
}

std::optional<QString> DesktopNotifications::keyOf(uint id) const
{
    for (const auto &[key, shown] : m_shown) {
        if (shown.id == id && shown.server == message().service())
            return key;
    }
    return std::nullopt;
}

void DesktopNotifications::actionInvoked(uint id, const QString &action)
{
    if (const auto key = keyOf(id); key && action == clicked)
        Q_EMIT chosen(*key);
}

// Comes just before the action.
void DesktopNotifications::activationToken(uint id, const QString &token)
{
    if (keyOf(id))
        WindowActivation::offer(token);
}

void DesktopNotifications::notificationClosed(uint id, uint)
{
    const auto key = keyOf(id);
    if (!key)
        return;
    if (const auto found = m_shown.find(*key); found->second.isAsking)
        found->second.id = 0; // what takes its place is on its way
    else
        m_shown.erase(found);
    noteNumbers();
    Q_EMIT dismissed(*key);
}

} // namespace morvane
