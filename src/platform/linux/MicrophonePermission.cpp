#include "platform/linux/MicrophonePermission.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QUuid>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString deviceInterface = u"org.freedesktop.portal.Device"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;

enum Response : uint { allowed = 0, notServed = 100 }; // the latter is ours: no answer will come
constexpr qint64 longestDescription = 0x10000;

enum class Reach { everything, soundServer, noSound };

// "sockets=x11;wayland;pulseaudio;"
Reach reachOf(const QString &description)
{
    QFile file(description);
    if (!file.exists())
        return Reach::everything;
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.read(longestDescription).split('\n'))
            if (line.startsWith("sockets=") && line.mid(8).split(';').contains("pulseaudio"))
                return Reach::soundServer;
    }
    return Reach::noSound;
}

std::optional<QDBusConnection> sessionBus()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return std::nullopt;
    const auto bus = QDBusConnection::sessionBus();
    return bus.isConnected() ? std::optional(bus) : std::nullopt;
}

// Where the answer will come from, which is listened to before the question is asked.
QString handleOf(const QDBusConnection &bus, const QString &token)
{
    return u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(
        bus.baseService().mid(1).replace(u'.', u'_'), token);
}

QCoro::Task<uint> answerOf(QDBusConnection bus, std::stop_token stop)
{
    auto ends = AsyncStream<uint>::make();
    const PortalAnswer answer(ends.second);
    const QString token = u"morvane"_s + QUuid::createUuid().toString(QUuid::Id128);
    bus.connect(service, handleOf(bus, token), requestInterface, u"Response"_s,
                const_cast<PortalAnswer *>(&answer), SLOT(take(uint, QVariantMap)));
    auto call = QDBusMessage::createMethodCall(service, path, deviceInterface, u"AccessDevice"_s);
    call.setArguments({static_cast<uint>(QCoreApplication::applicationPid()), QStringList{u"microphone"_s},
                       QVariantMap{{u"handle_token"_s, token}}});
    const QDBusPendingCallWatcher watcher(bus.asyncCall(call));
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &answer,
                     [producer = ends.second](QDBusPendingCallWatcher *asked) mutable {
                         if (QDBusPendingReply<QDBusObjectPath>(*asked).isError())
                             producer.yield(notServed);
                     });
    const std::optional<uint> response = co_await ends.first.next(stop);
    co_return response.value_or(notServed);
}

} // namespace

MicrophonePermission::MicrophonePermission(Places places)
    : m_places(std::move(places))
{}

AudioPermitting::States MicrophonePermission::states() const
{
    States states{.speechRecognition = PermissionState::granted};
    switch (reachOf(m_places.sandbox)) {
    case Reach::everything:
        states.microphone = PermissionState::granted;
        break;
    case Reach::soundServer:
        if (m_isGranted)
            states.microphone = PermissionState::granted;
        break;
    case Reach::noSound:
        states.microphone = PermissionState::denied;
    }
    return states;
}

// Most portals serve this question to the sound server and not to the sandbox itself, which has the sound
// server by the person's leave then.
QCoro::Task<PermissionState> MicrophonePermission::requestMicrophone(std::stop_token stop)
{
    const auto bus = m_places.bus ? m_places.bus : sessionBus();
    uint response = notServed;
    if (bus)
        response = co_await answerOf(*bus, std::move(stop));
    m_isGranted = response == allowed || response == notServed;
    co_return m_isGranted ? PermissionState::granted : PermissionState::denied;
}

QCoro::Task<PermissionState> MicrophonePermission::requestSpeechRecognition(std::stop_token)
{
    co_return PermissionState::granted;
}

} // namespace morvane
