#include "view_models/chat/VoiceEntry.h"

#include "async/CancelledError.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Text.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int silentCapturesOfADeadMicrophone = 2;

QString printed(bool flag)
{
    return flag ? u"true"_s : u"false"_s;
}

ErrorBanner deadMicrophone()
{
    return {.message = u"The microphone is sending no audio."_s,
            .suggestion =
                u"Pick a different microphone in Settings → Voice (on desktop %1 the default input is often "
                "not a real mic), or unplug/reconnect the one you're using, then try again."_s.arg(
                    DesktopWords::here().devices)};
}

ErrorBanner failed(const QString &reason)
{
    return {
        .message = u"Speech recognition failed: "_s + reason,
        .suggestion =
            u"Check the microphone choice in Settings → Voice, and that both voice permissions are allowed."_s};
}

} // namespace

VoiceEntry::VoiceEntry(Services services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{}

void VoiceEntry::begin()
{
    if (!m_services.speech)
        return;
    m_services.speech->note(u"UI: begin (already=%1)"_s.arg(printed(m_isRecording)));
    if (m_isRecording)
        return;
    setRecording(true);
    m_services.companion.transition(CompanionState::listening);
    m_starting = TaskHandle::start(
        [self = QPointer(this)](std::stop_token stop) { return start(self, std::move(stop)); });
}

void VoiceEntry::end()
{
    if (!m_services.speech)
        return;
    m_services.speech->note(u"UI: end (recording=%1)"_s.arg(printed(m_isRecording)));
    if (!m_isRecording)
        return;
    setRecording(false);
    std::erase_if(m_finishing, [](const TaskHandle &task) { return !task.isRunning(); });
    m_finishing.push_back(TaskHandle::start(
        [self = QPointer(this)](std::stop_token stop) { return finish(self, std::move(stop)); }));
}

void VoiceEntry::cancel()
{
    m_finishing.clear();
    if (!m_isRecording)
        return;
    m_starting = {};
    m_services.speech->cancelRecording();
    setRecording(false);
}

QCoro::Task<> VoiceEntry::start(QPointer<VoiceEntry> self, std::stop_token stop)
{
    try {
        co_await self->m_services.speech->startRecording(stop);
    } catch (...) {
        if (!self || stop.stop_requested() || !self->m_isRecording)
            co_return;
        self->setRecording(false);
        self->fail(std::current_exception());
    }
}

QCoro::Task<> VoiceEntry::finish(QPointer<VoiceEntry> self, std::stop_token stop)
{
    QString transcript;
    std::exception_ptr failure;
    try {
        const QString words = co_await self->m_services.speech->stopRecording(stop);
        transcript = words;
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self || stop.stop_requested())
        co_return;
    if (failure)
        self->fail(failure);
    else
        self->take(transcript);
}

void VoiceEntry::take(const QString &transcript)
{
    const QString words = Text::trimmed(transcript);
    m_services.speech->note(u"UI: transcript %1 chars"_s.arg(Text::characterCount(words)));
    if (words.isEmpty())
        return noteSilence();
    m_consecutiveSilentCaptures = 0;
    Q_EMIT heard(words);
}

void VoiceEntry::fail(const std::exception_ptr &error)
{
    const QString reason = presentationOf(error).message;
    if (reason.contains("no speech"_L1, Qt::CaseInsensitive))
        noteSilence();
    else
        m_services.banner.show(failed(reason));
}

void VoiceEntry::noteSilence()
{
    if (++m_consecutiveSilentCaptures >= silentCapturesOfADeadMicrophone)
        m_services.banner.show(deadMicrophone());
    else
        m_services.companion.say(u"I didn't hear anything. Start talking after the pop sound."_s, 6s);
}

void VoiceEntry::setRecording(bool recording)
{
    if (m_isRecording == recording)
        return;
    m_isRecording = recording;
    if (!recording && m_services.companion.state() == CompanionState::listening)
        m_services.companion.reset();
    Q_EMIT recordingChanged();
}

} // namespace morvane
