#include "audio/SpeechRecognitionService.h"

#include "async/CancelledError.h"
#include "async/Clock.h"
#include "audio/AudioPermissionService.h"
#include "audio/SoundLevel.h"
#include "audio/VoiceDebugLog.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

// One press of the key. A late task holds its own, and so can't take a newer one for it.
struct SpeechRecognitionService::Session {
    int id = 0;
    int generation = 0;
    std::optional<QString> deviceUID;
    Engine engine;
    bool isReused = false;
    bool isBound = false;
    bool isDeaf = false; // its microphone went away
    bool isCancelled = false;
    std::chrono::milliseconds engineAsked{0};
    std::shared_ptr<SpeechRecognitionRequest> request;
    std::unique_ptr<SpeechRecognizing::Task> task;
    std::shared_ptr<std::atomic<float>> level = std::make_shared<std::atomic<float>>(0.0F);
    QString latestTranscript;
    SharedResult<bool> finalContinuation;
};

namespace {

constexpr std::chrono::seconds teardownLimit{2};

QString printed(bool flag)
{
    return flag ? u"true"_s : u"false"_s;
}

QString printed(PermissionState state)
{
    switch (state) {
    case PermissionState::notDetermined:
        return u"notDetermined"_s;
    case PermissionState::granted:
        return u"granted"_s;
    case PermissionState::denied:
        return u"denied"_s;
    }
    return {};
}

// No words of an error that a person reads, and none of theirs.
QString nameOf(const std::exception_ptr &error)
{
    return presentationOf(error).message;
}

} // namespace

SpeechRecognitionService::SpeechRecognitionService(Services services, QObject *parent)
    : SpeechCapturing(parent)
    , m_services(std::move(services))
{}

SpeechRecognitionService::~SpeechRecognitionService()
{
    cancelRecording();
    if (m_session) {
        m_session->finalContinuation.resolve(true);
        tearDown(*m_session);
    }
    m_ending.request_stop();
}

double SpeechRecognitionService::level() const
{
    return m_isEngineLive && m_session ? m_session->level->load() : 0;
}

QCoro::Task<> SpeechRecognitionService::startRecording()
{
    return start(QPointer(this));
}

QCoro::Task<QString> SpeechRecognitionService::stopRecording()
{
    return stop(QPointer(this), m_session);
}

// Start

QCoro::Task<> SpeechRecognitionService::start(QPointer<SpeechRecognitionService> self)
{
    self->note(u"start requested (isRecording=%1)"_s.arg(printed(self->m_isRecording)));
    if (self->m_isRecording)
        co_return;
    const std::shared_ptr<Session> session = self->beginSession();
    try {
        co_await prepare(self, session);
        if (self && self->isWanted(*session))
            co_await takeEngine(self, session);
    } catch (const AudioError &error) {
        session->engine.reset();
        if (!self || !self->isWanted(*session))
            co_return; // whoever let go wants to hear nothing of it
        self->setFailure(error.userMessage());
        throw;
    } catch (const CancelledError &) {
        co_return; // the program ends
    }
    if (!self)
        co_return;
    if (self->isWanted(*session))
        self->beginRecording(session);
    else
        self->discard(*session);
}

std::shared_ptr<SpeechRecognitionService::Session> SpeechRecognitionService::beginSession()
{
    if (m_session) { // it may be in its final wait: its words are its own, and its engine is free for this
                     // one
        m_session->finalContinuation.resolve(true);
        tearDown(*m_session);
    }
    m_session = std::make_shared<Session>();
    m_session->generation = ++m_startGeneration;
    m_session->id = ++m_sessionID;
    setPartialTranscript({});
    setFailure({});
    return m_session;
}

QCoro::Task<> SpeechRecognitionService::prepare(QPointer<SpeechRecognitionService> self,
                                                std::shared_ptr<Session> session)
{
    if (self->m_pendingTeardown) {
        const auto asked = self->m_services.clock.elapsed();
        const SharedResult<bool> closed = *self->m_pendingTeardown;
        const auto isClosed =
            co_await closed.wait(self->m_services.clock, teardownLimit, self->m_ending.get_token());
        if (!self)
            co_return;
        if (!isClosed)
            self->m_reusableEngine = nullptr; // it hangs; a new one takes its place
        const auto waited = self->m_services.clock.elapsed() - asked;
        self->note(u"prior teardown awaited %1ms"_s.arg(waited.count()));
    }
    self->note(*session, u": checking permissions"_s);
    AudioPermissionService &permissions = self->m_services.permissions;
    co_await permissions.settle(self->m_ending.get_token());
    if (!self)
        co_return;
    if (const auto refusal = permissions.refusal()) {
        self->note(*session,
                   u": PERMISSIONS REFUSED mic=%1 speech=%2"_s.arg(printed(permissions.microphone()),
                                                                   printed(permissions.speechRecognition())));
        throw *refusal;
    }
    self->checkRecognizer(*session);
    session->request = std::make_shared<SpeechRecognitionRequest>();
    session->request->locale = self->m_services.locale();
}

// What would have to leave this machine is refused, whatever the settings say.
void SpeechRecognitionService::checkRecognizer(const Session &session)
{
    if (!m_services.recognizer.isAvailable()) {
        note(session, u": RECOGNIZER UNAVAILABLE"_s);
        throw AudioError(AudioError::Case::speechRecognizerUnavailable);
    }
    if (!m_services.recognizer.supportsOnDeviceRecognition(m_services.locale())) {
        note(session, u": NO ON-DEVICE RECOGNITION, refused server recognition"_s);
        throw AudioError(AudioError::Case::onDeviceRecognitionUnavailable);
    }
}

// The one at hand when it is bound to the right microphone and still opens, else a new one.
QCoro::Task<> SpeechRecognitionService::takeEngine(QPointer<SpeechRecognitionService> self,
                                                   std::shared_ptr<Session> session)
{
    session->engineAsked = self->m_services.clock.elapsed();
    if (self->m_services.preferredDeviceUID)
        session->deviceUID = self->m_services.preferredDeviceUID();
    session->engine = std::exchange(self->m_reusableEngine, nullptr);
    session->isReused = session->engine && self->m_reusableEngineDeviceUID == session->deviceUID;
    if (session->isReused) {
        try {
            co_await openEngine(self, session);
            co_return;
        } catch (const AudioError &) {
            session->isReused = false;
        }
    }
    if (!self || !self->isWanted(*session))
        co_return;
    session->engine = self->m_services.makeEngine();
    co_await bindEngine(session, self->m_ending.get_token());
    if (self && self->isWanted(*session))
        co_await openEngine(self, session);
}

QCoro::Task<> SpeechRecognitionService::bindEngine(std::shared_ptr<Session> session, std::stop_token ending)
{
    const Engine engine = session->engine;
    const AudioCapturing::Binding binding = co_await engine->bind(session->deviceUID, std::move(ending));
    if (!binding.isChosenDevice)
        Log::info(Log::Category::Audio, "Morvane: could not select the chosen microphone; using default"_L1);
    if (binding.sampleRate <= 0)
        throw AudioError(AudioError::Case::captureFailed);
}

QCoro::Task<> SpeechRecognitionService::openEngine(QPointer<SpeechRecognitionService> self,
                                                   std::shared_ptr<Session> session)
{
    AudioCapturing::Tap tap;
    tap.sound = [request = session->request, level = session->level](std::span<const std::int16_t> samples) {
        request->audio.offer(samples);
        level->store(SoundLevel::of(samples));
    };
    tap.lost = [self, late = std::weak_ptr(session)] {
        if (const auto lost = late.lock(); lost && self)
            self->takeLoss(*lost);
    };
    session->isBound = true;
    const Engine engine = session->engine;
    co_await engine->start(std::move(tap), self->m_ending.get_token());
}

void SpeechRecognitionService::beginRecording(const std::shared_ptr<Session> &session)
{
    const auto took = m_services.clock.elapsed() - session->engineAsked;
    note(*session, u": engine started in %1ms (%2)"_s.arg(took.count())
                       .arg(session->isReused ? "reused"_L1 : "cold"_L1));
    if (m_services.playPop)
        m_services.playPop();
    setRecording(true);
    Log::info(Log::Category::Audio, "Push-to-talk recording started (session %ld)"_L1, {session->id});
    const std::weak_ptr late = session;
    session->task = m_services.recognizer.recognitionTask(
        session->request, {.result =
                               [self = QPointer(this), late](const QString &text, bool isFinal) {
                                   if (const auto heard = late.lock(); heard && self)
                                       self->takeResult(*heard, text, isFinal);
                               },
                           .error =
                               [self = QPointer(this), late](const std::exception_ptr &error) {
                                   if (const auto failed = late.lock(); failed && self)
                                       self->takeError(*failed, error);
                               }});
}

// The person let go while it was warming up.
void SpeechRecognitionService::discard(Session &session)
{
    note(session, u": DISCARDED (released during warm-up)"_s);
    if (session.request)
        session.request->audio.finish();
    Log::info(Log::Category::Audio, "Push-to-talk released before engine start; discarded"_L1);
    tearDown(session);
}

bool SpeechRecognitionService::isWanted(const Session &session) const
{
    return session.generation == m_startGeneration;
}

// While the person speaks

void SpeechRecognitionService::takeResult(Session &session, const QString &text, bool isFinal)
{
    session.latestTranscript = text;
    if (m_session.get() == &session)
        setPartialTranscript(text);
    if (!isFinal)
        return;
    note(session, u": final result, chars=%1"_s.arg(Text::characterCount(text)));
    session.finalContinuation.resolve(true);
}

void SpeechRecognitionService::takeError(Session &session, const std::exception_ptr &error)
{
    const QString name = nameOf(error);
    note(session,
         u": recognizer error while isRecording=%1, chars=%2 %3"_s.arg(
             printed(m_isRecording), QString::number(Text::characterCount(session.latestTranscript)), name));
    if (session.latestTranscript.isEmpty())
        Log::error(Log::Category::Audio, "Speech recognition failed: %{public}s"_L1, {name});
    session.finalContinuation.resolve(true);
    if (m_isRecording && m_session.get() == &session)
        Q_EMIT interrupted();
}

void SpeechRecognitionService::takeLoss(Session &session)
{
    note(session, u": microphone lost while isRecording=%1"_s.arg(printed(m_isRecording)));
    session.isDeaf = true;
    if (m_isRecording && m_session.get() == &session)
        Q_EMIT interrupted();
}

// Stop

QCoro::Task<QString> SpeechRecognitionService::stop(QPointer<SpeechRecognitionService> self,
                                                    std::shared_ptr<Session> session)
{
    if (!self->m_isRecording) {
        const QString words = session ? session->latestTranscript : QString();
        self->note(u"stop: not recording (early), returning %1 chars"_s.arg(Text::characterCount(words)));
        ++self->m_startGeneration; // what is still warming up is no longer wanted
        co_return words;
    }
    self->setRecording(false);
    Log::info(Log::Category::Audio, "Push-to-talk recording stopped (session %ld, %ld chars so far)"_L1,
              {session->id, Text::characterCount(session->latestTranscript)});
    session->request->audio.finish();
    const SharedResult<bool> final = session->finalContinuation;
    co_await final.wait(self->m_services.clock, finalWait, std::stop_token());
    const QString words = session->latestTranscript;
    if (!self || session->isCancelled)
        co_return words;
    const QString count = QString::number(Text::characterCount(words));
    if (session->id != self->m_sessionID) {
        self->note(u"stop: session %1 superseded; skipping teardown, returning %2 chars"_s.arg(
            QString::number(session->id), count));
        co_return words;
    }
    self->tearDown(*session);
    self->forgetWords(*session);
    if (words.isEmpty()) {
        self->m_reusableEngine = nullptr;
        self->m_reusableEngineDeviceUID.reset();
        self->note(
            u"stop: session %1 was silent — discarding reusable engine for a cold rebind"_s.arg(session->id));
    }
    self->note(u"stop: session %1 complete, returning %2 chars"_s.arg(QString::number(session->id), count));
    co_return words;
}

void SpeechRecognitionService::cancelRecording()
{
    ++m_startGeneration;
    if (!m_session || !m_session->request || !m_session->task)
        return; // what still warms up sees that it is no longer wanted
    if (m_isRecording)
        Log::info(Log::Category::Audio, "Push-to-talk recording cancelled"_L1);
    setRecording(false);
    forgetWords(*m_session);
    m_session->isCancelled = true;
    m_session->request->audio.finish();
    m_session->finalContinuation.resolve(true); // of the wait for the last words
    tearDown(*m_session);
}

// They have been handed over or are not wanted, and of a Ghost chat none stay behind.
void SpeechRecognitionService::forgetWords(Session &session)
{
    session.latestTranscript.clear();
    setPartialTranscript({});
}

// Once for a session; a microphone that was lost is not kept.
void SpeechRecognitionService::tearDown(Session &session)
{
    session.task.reset();
    session.request.reset();
    const Engine engine = std::exchange(session.engine, nullptr);
    if (!engine)
        return;
    if (session.isBound && !session.isDeaf) {
        m_reusableEngine = engine;
        m_reusableEngineDeviceUID = session.deviceUID;
    }
    m_pendingTeardown.emplace();
    close(engine, *m_pendingTeardown, m_ending.get_token());
}

QCoro::Task<> SpeechRecognitionService::close(Engine engine, SharedResult<bool> closed,
                                              std::stop_token ending)
{
    try {
        co_await engine->stop(std::move(ending));
    } catch (const std::exception &) {
        // It is closed all the same when the last holder drops it.
    }
    closed.resolve(true);
}

void SpeechRecognitionService::setRecording(bool recording)
{
    if (m_isRecording == recording)
        return;
    m_isRecording = recording;
    m_isEngineLive = recording;
    Q_EMIT isRecordingChanged();
}

void SpeechRecognitionService::setPartialTranscript(const QString &text)
{
    if (m_partialTranscript == text)
        return;
    m_partialTranscript = text;
    Q_EMIT partialTranscriptChanged();
}

void SpeechRecognitionService::setFailure(const QString &message)
{
    if (m_lastFailureMessage == message)
        return;
    m_lastFailureMessage = message;
    Q_EMIT lastFailureMessageChanged();
}

void SpeechRecognitionService::note(const QString &line)
{
    m_services.log.note(line);
}

void SpeechRecognitionService::note(const Session &session, const QString &line)
{
    note(u"session %1"_s.arg(session.id) + line);
}

} // namespace morvane
