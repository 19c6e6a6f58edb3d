#include "platform/linux/MicrophonePermission.h"

#include "platform/linux/MachineBuses.h"
#include "platform/linux/PortalCall.h"

#include <QCoreApplication>
#include <QFile>

namespace morvane {

using namespace Qt::StringLiterals;
using End = PortalCall::End;

namespace {

const QString deviceInterface = u"org.freedesktop.portal.Device"_s;
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
    const auto bus = m_places.bus ? m_places.bus : MachineBuses::session();
    PortalCall::Answer answer{.end = End::noPortal};
    if (bus) {
        const PortalCall::Question question{
            deviceInterface,
            u"AccessDevice"_s,
            {static_cast<uint>(QCoreApplication::applicationPid()), QStringList{u"microphone"_s}}};
        answer = co_await PortalCall::ask(*bus, question, nullptr, std::move(stop));
    }
    m_isGranted = answer.end != End::dismissed && answer.end != End::declined;
    co_return m_isGranted ? PermissionState::granted : PermissionState::denied;
}

QCoro::Task<PermissionState> MicrophonePermission::requestSpeechRecognition(std::stop_token)
{
    co_return PermissionState::granted;
}

} // namespace morvane
