#include "view_models/chat/VoiceEntry.h"

#include "async/CancelledError.h"
#include "async/Clock.h"
#include "audio/SpeechCapturing.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Text.h"
#include "view_models/chat/BannerDesk.h"
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
                    DesktopWords::here().devices),
            .recovery = ErrorBanner::Recovery::openVoiceSettings};
}

ErrorBanner failed(const QString &reason)
{
    return {
        .message = u"Speech recognition failed: "_s + reason,
        .suggestion =
            u"Check the microphone choice in Settings → Voice, and that both voice permissions are allowed."_s,
        .recovery = ErrorBanner::Recovery::openVoiceSettings};
}

} // namespace

VoiceEntry::VoiceEntry(Services services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{
    if (!m_services.speech)
        return;
    connect(m_services.speech, &SpeechCapturing::isRecordingChanged, this, &VoiceEntry::listen);
    connect(m_services.speech, &SpeechCapturing::partialTranscriptChanged, this, &VoiceEntry::wordsChanged);
    connect(m_services.speech, &SpeechCapturing::interrupted, this, &VoiceEntry::end);
    connect(&m_services.companion, &CompanionViewModel::stateChanged, this, [this] {
        if (m_isRecording && m_services.companion.state() == CompanionState::idle)
            m_services.companion.transition(CompanionState::listening);
    });
}

VoiceEntry::~VoiceEntry() = default;

VoiceEntry::Phase VoiceEntry::phase() const
{
    if (m_isRecording)
        return m_services.speech->isRecording() ? Phase::Listening : Phase::Starting;
    return m_awaited == 0 ? Phase::Idle : Phase::Finishing;
}

QString VoiceEntry::words() const
{
    return m_services.speech ? m_services.speech->partialTranscript() : QString();
}

double VoiceEntry::level() const
{
    return m_services.speech ? m_services.speech->level() : 0;
}

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
    const bool wasListening = m_services.speech->isRecording();
    ++m_awaited;
    setRecording(false);
    std::erase_if(m_finishing, [](const TaskHandle &task) { return !task.isRunning(); });
    m_finishing.push_back(TaskHandle::start([self = QPointer(this), wasListening](std::stop_token stop) {
        return finish(self, wasListening, std::move(stop));
    }));
}

void VoiceEntry::press()
{
    if (m_pressed)
        return;
    if (m_isRecording)
        return end();
    m_pressed = m_services.clock.elapsed();
    begin();
}

void VoiceEntry::release()
{
    const auto pressed = std::exchange(m_pressed, std::nullopt);
    if (pressed && m_services.clock.elapsed() - *pressed > click)
        end();
}

void VoiceEntry::toggle()
{
    if (m_isRecording)
        end();
    else
        begin();
}

void VoiceEntry::cancel()
{
    if (phase() == Phase::Idle)
        return;
    m_pressed.reset();
    m_finishing.clear();
    m_awaited = 0;
    m_starting = {};
    m_services.speech->cancelRecording();
    setRecording(false);
    Q_EMIT phaseChanged();
}

QCoro::Task<> VoiceEntry::start(QPointer<VoiceEntry> self, std::stop_token stop)
{
    try {
        co_await self->m_services.speech->startRecording();
    } catch (...) {
        if (!self || stop.stop_requested() || !self->m_isRecording)
            co_return;
        self->setRecording(false);
        self->fail(std::current_exception());
    }
}

QCoro::Task<> VoiceEntry::finish(QPointer<VoiceEntry> self, bool wasListening, std::stop_token stop)
{
    QString transcript;
    std::exception_ptr failure;
    try {
        const QString words = co_await self->m_services.speech->stopRecording();
        transcript = words;
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self || stop.stop_requested())
        co_return;
    --self->m_awaited;
    Q_EMIT self->phaseChanged();
    if (failure)
        self->fail(failure);
    else
        self->take(transcript, wasListening);
}

// Before it listened there was nothing to hear, and so nothing is missing.
void VoiceEntry::take(const QString &transcript, bool wasListening)
{
    const QString words = Text::trimmed(transcript);
    m_services.speech->note(u"UI: transcript %1 chars"_s.arg(Text::characterCount(words)));
    if (words.isEmpty() && wasListening)
        return noteSilence();
    if (words.isEmpty())
        return;
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
    Q_EMIT phaseChanged();
}

// How long it may last, from when the person may speak.
void VoiceEntry::listen()
{
    m_limit.reset();
    setSecondsLeft(0);
    if (m_services.speech->isRecording())
        m_limit = m_services.clock.after(longestPress - warned,
                                         [this] { countDown(static_cast<int>(warned.count())); });
    Q_EMIT phaseChanged();
}

void VoiceEntry::countDown(int secondsLeft)
{
    setSecondsLeft(secondsLeft);
    if (secondsLeft == 0)
        return end();
    m_limit = m_services.clock.after(1s, [this, secondsLeft] { countDown(secondsLeft - 1); });
}

void VoiceEntry::setSecondsLeft(int seconds)
{
    if (std::exchange(m_secondsLeft, seconds) != seconds)
        Q_EMIT secondsLeftChanged();
}

} // namespace morvane
