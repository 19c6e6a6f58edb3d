// Push to talk by scripted engines and injected time: who lets go when, and what the next press finds.

#include "async/Work.h"
#include "audio/AudioPermissionService.h"
#include "audio/SpeechRecognitionService.h"
#include "audio/VoiceDebugLog.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// What the desktop does, as the test says.
struct Script {
    AudioPermitting::States permissions{PermissionState::granted, PermissionState::granted};
    double sampleRate = 48'000;
    bool isChosenDevice = true;
    bool failsToBind = false;
    bool failsToStart = false;
    QString hangs;             // when it is to "start" or to "stop"
    SharedResult<bool> goesOn; // of what hangs
    bool isAvailable = true;
    QStringList events; // of engines, in order
    AudioCapturing::Tap tap;
    std::shared_ptr<SpeechRecognitionRequest> request;
    SpeechRecognizing::Handler handler;
    int engines = 0;
    int enginesHeld = 0;
};

class ScriptedEngine final : public AudioCapturing {
public:
    explicit ScriptedEngine(Script &script)
        : m_script(script)
        , m_name(QString::number(++script.engines))
    {
        ++script.enginesHeld;
    }
    ~ScriptedEngine() override { --m_script.enginesHeld; }
    QCoro::Task<Binding> bind(std::optional<QString> uid, std::stop_token) override
    {
        m_script.events += u"bind %1 %2"_s.arg(m_name, uid.value_or(u"default"_s));
        if (m_script.failsToBind)
            throw AudioError(AudioError::Case::noMicrophone);
        co_return Binding{m_script.isChosenDevice, m_script.sampleRate};
    }
    QCoro::Task<> start(Tap tap, std::stop_token stop) override
    {
        co_await begin(u"start"_s, stop);
        if (m_script.failsToStart)
            throw AudioError(AudioError::Case::captureFailed);
        m_script.tap = std::move(tap);
    }
    QCoro::Task<> stop(std::stop_token stop) override { return begin(u"stop"_s, stop); }

private:
    QCoro::Task<> begin(QString what, std::stop_token stop)
    {
        m_script.events += what + u' ' + m_name;
        if (m_script.hangs == what)
            co_await m_script.goesOn.wait(stop);
    }

    Script &m_script;
    const QString m_name;
};

class ScriptedRecognizer final : public SpeechRecognizing, public AudioPermitting {
public:
    explicit ScriptedRecognizer(Script &script)
        : m_script(script)
    {}
    [[nodiscard]] bool isAvailable() const override { return m_script.isAvailable; }
    [[nodiscard]] bool supportsOnDeviceRecognition(const QLocale &locale) const override
    {
        return locale.language() == QLocale::English;
    }
    std::unique_ptr<Task> recognitionTask(std::shared_ptr<SpeechRecognitionRequest> request,
                                          Handler handler) override
    {
        m_script.request = std::move(request);
        m_script.handler = std::move(handler);
        return std::make_unique<Task>();
    }
    [[nodiscard]] States states() const override { return m_script.permissions; }
    QCoro::Task<PermissionState> requestMicrophone(std::stop_token) override
    {
        co_return PermissionState::denied;
    }
    QCoro::Task<PermissionState> requestSpeechRecognition(std::stop_token) override
    {
        co_return PermissionState::granted;
    }

private:
    Script &m_script;
};

class PushToTalkTest : public testing::Test {
protected:
    // Ends what a test left running, so that nothing outlives its services.
    void TearDown() override
    {
        service.reset();
        TestWait::settle();
        work.end();
        TestWait::settle();
        EXPECT_EQ(script.enginesHeld, 0) << "something still waits for one that hangs";
    }
    void press()
    {
        started = TestWait::begin(service->startRecording());
        TestWait::settle();
    }
    // The outcome comes when the words are there.
    std::shared_ptr<TestWait::Outcome<QString>> release()
    {
        const auto outcome = TestWait::begin(service->stopRecording());
        TestWait::settle();
        return outcome;
    }
    void hear(const QString &words, bool isFinal = false) { script.handler.result(words, isFinal); }
    // The rest of a session with words, or all of one.
    void finish(const QString &words)
    {
        hear(words);
        const auto heard = release();
        hear(words, true);
        TestWait::settle();
        EXPECT_EQ(heard->value, words);
    }
    void say(const QString &words)
    {
        press();
        finish(words);
    }
    // The recogniser says no more, and what was heard is all.
    void wait(std::chrono::milliseconds time = SpeechRecognitionService::finalWait)
    {
        clock.advance(time);
        TestWait::settle();
    }
    QString logged()
    {
        service.reset();
        work.end();
        log.reset();
        return QString::fromUtf8(PrivateFile::read(path, 1 << 20).value_or(QByteArray()));
    }

    Script script;
    QTemporaryDir folder;
    const QString path = folder.filePath(u"ai/voice-debug.log"_s);
    ManualClock clock;
    Work work{clock};
    ScriptedRecognizer recognizer{script};
    AudioPermissionService permissions{recognizer};
    std::optional<VoiceDebugLog> log{std::in_place, path, clock, work};
    std::optional<QString> microphone;
    QLocale::Language language = QLocale::English;
    int pops = 0;
    std::optional<SpeechRecognitionService> service{SpeechRecognitionService::Services{
        .permissions = permissions,
        .recognizer = recognizer,
        .clock = clock,
        .log = *log,
        .makeEngine = [this] { return std::make_unique<ScriptedEngine>(script); },
        .preferredDeviceUID = [this] { return microphone; },
        .locale = [this] { return QLocale(language); },
        .playPop = [this] { ++pops; }}};
    std::shared_ptr<TestWait::Outcome<void>> started; // the latest press
};

TEST_F(PushToTalkTest, EachReasonNotToListenIsSaidAndNothingIsCaptured)
{
    using Case = AudioError::Case;
    using enum PermissionState;
    struct {
        std::function<void()> arrange;
        Case reason;
    } const cases[] = {
        {[this] { script.permissions.microphone = denied; }, Case::microphonePermissionDenied},
        {[this] { script.permissions.microphone = notDetermined; }, Case::microphonePermissionDenied},
        {[this] { script.permissions.speechRecognition = denied; }, Case::speechRecognitionPermissionDenied},
        {[this] { script.permissions.microphoneRestricted = true; }, Case::microphoneRestricted},
        {[this] { script.permissions.speechRecognitionRestricted = true; },
         Case::speechRecognitionRestricted},
        {[this] { script.isAvailable = false; }, Case::speechRecognizerUnavailable},
        {[this] { language = QLocale::German; }, Case::onDeviceRecognitionUnavailable},
        {[this] { script.failsToBind = true; }, Case::noMicrophone},
        {[this] { script.sampleRate = 0; }, Case::captureFailed},
        {[this] { script.failsToStart = true; }, Case::captureFailed},
    };
    for (const auto &each : cases) {
        const Script usual = script;
        each.arrange();
        press();
        EXPECT_TRUE(started->error);
        EXPECT_EQ(service->lastFailureMessage(), AudioError(each.reason).userMessage());
        EXPECT_FALSE(service->isRecording());
        script = usual;
        language = QLocale::English;
    }
    EXPECT_EQ(pops, 0);
    EXPECT_FALSE(script.request);
    say(u"well again"_s);
    const QString all = logged();
    for (const QString &line :
         {u": PERMISSIONS REFUSED mic=denied speech=granted"_s, u": RECOGNIZER UNAVAILABLE"_s,
          u": NO ON-DEVICE RECOGNITION, refused server recognition"_s})
        EXPECT_TRUE(all.contains(line)) << line.toStdString();
}

TEST_F(PushToTalkTest, TheNextPressFindsTheEngineWarmUnlessItMayBeDeaf)
{
    struct {
        std::function<void()> between;
        QStringList events;
    } const cases[] = {
        {[] {}, {u"start 1"_s}},
        {[this] { microphone = u"other"_s; }, {u"bind 2 other"_s, u"start 2"_s}},
        {[this] { // silent
             press();
             const auto nothing = release();
             wait();
             EXPECT_EQ(nothing->value, QString());
             script.events.clear();
         },
         {u"bind 3 other"_s, u"start 3"_s}},
        {[this] { script.tap.lost(); }, {u"start 3"_s}}, // of a session that is over
        {[this] {                                        // pulled out in the middle
             press();
             hear(u"half a"_s);
             script.tap.lost();
             const auto words = release();
             wait();
             EXPECT_EQ(words->value, u"half a"_s);
             script.events.clear();
         },
         {u"bind 4 other"_s, u"start 4"_s}},
    };
    say(u"the first"_s);
    for (const auto &each : cases) {
        script.events.clear();
        each.between();
        press();
        EXPECT_EQ(script.events, each.events);
        finish(u"words"_s);
    }
    EXPECT_EQ(pops, 8);
}

TEST_F(PushToTalkTest, LettingGoBeforeItListensLeavesNothing)
{
    script.hangs = u"start"_s;
    press();
    EXPECT_EQ(release()->value, QString());
    EXPECT_EQ(script.events, (QStringList{u"bind 1 default"_s, u"start 1"_s}));
    script.hangs.clear();
    press(); // while the first still hangs: it is stopped, and another takes its place or it
    EXPECT_TRUE(service->isRecording() && service->isEngineLive());
    EXPECT_EQ(pops, 1);
    hear(u"now"_s);
    service->cancelRecording();
    EXPECT_FALSE(service->isRecording());
    EXPECT_EQ(service->partialTranscript(), QString());
    EXPECT_EQ(release()->value, QString());

    script.hangs = u"start"_s;
    press();
    EXPECT_EQ(release()->value, QString());
    script.goesOn.resolve(true); // it opens when nobody holds the key any more
    TestWait::settle();
    EXPECT_FALSE(service->isRecording());
    EXPECT_EQ(pops, 1);
    EXPECT_TRUE(script.events.last().startsWith(u"stop"_s));
    EXPECT_TRUE(service->lastFailureMessage().isEmpty());
    EXPECT_TRUE(logged().contains(u"DISCARDED (released during warm-up)"_s));
}

TEST_F(PushToTalkTest, APressInTheFinalWaitLeavesTheFormerItsWords)
{
    press();
    hear(u"the first"_s);
    const auto first = release();
    EXPECT_FALSE(first->done);
    press();
    EXPECT_EQ(first->value, u"the first"_s);
    EXPECT_TRUE(service->isRecording());
    EXPECT_EQ(script.events.last(), u"start 1"_s);
    hear(u"the second"_s);
    const auto second = release();
    wait(SpeechRecognitionService::finalWait - 1ms);
    EXPECT_FALSE(second->done);
    wait(1ms); // a recogniser that hangs
    EXPECT_EQ(second->value, u"the second"_s);
    EXPECT_EQ(script.events.last(), u"stop 1"_s);
    const QString lines = logged();
    EXPECT_TRUE(lines.contains(u"stop: session 1 superseded; skipping teardown, returning 9 chars"_s));
    EXPECT_TRUE(lines.contains(u"engine started in 0ms (reused)"_s)) << lines.toStdString();
    EXPECT_FALSE(lines.contains(u"the first"_s) || lines.contains(u"the second"_s));
}

TEST_F(PushToTalkTest, WordsThatWereHandedOverOrCancelledStayNowhere)
{
    press();
    hear(u"not wanted"_s);
    const auto words = release();
    service->cancelRecording(); // in the final wait
    TestWait::settle();
    EXPECT_EQ(words->value, QString());
    EXPECT_EQ(script.events.last(), u"stop 1"_s) << "the microphone is closed at once";
    EXPECT_EQ(service->partialTranscript(), QString());
    say(u"wanted"_s);
    EXPECT_EQ(script.events.count(u"start 1"_s), 2) << "it was not deaf";
    EXPECT_EQ(service->partialTranscript(), QString());
    EXPECT_EQ(release()->value, QString()) << "they come once";
}

TEST_F(PushToTalkTest, ADeadRecogniserAndAHangingEngineAreReplaced)
{
    LogCapture captured;
    bool interrupted = false;
    QObject::connect(&*service, &SpeechRecognitionService::interrupted, [&] { interrupted = true; });
    press();
    hear(u"so far"_s);
    script.handler.error(std::make_exception_ptr(AudioError(AudioError::Case::recognitionFailed)));
    EXPECT_TRUE(interrupted);
    script.hangs = u"stop"_s;
    EXPECT_EQ(release()->value, u"so far"_s);
    EXPECT_FALSE(captured.lines().join(u'\n').contains(u"failed"_s)) << "something was heard";
    press();
    EXPECT_FALSE(service->isRecording()) << "it waits for the former engine";
    wait(2s);
    EXPECT_TRUE(service->isRecording());
    EXPECT_EQ(script.events.mid(3), (QStringList{u"bind 2 default"_s, u"start 2"_s}));
    script.handler.error(std::make_exception_ptr(AudioError(AudioError::Case::recognitionFailed)));
    EXPECT_TRUE(captured.lines().contains(
        u"audio: Speech recognition failed: Your speech could not be transcribed."_s));
    const auto handler = script.handler;
    const auto tap = script.tap;
    const auto last = release();
    service.reset(); // the quit
    handler.result(u"late"_s, true);
    tap.lost();
    tap.sound(std::vector<std::int16_t>(100));
    TestWait::settle();
}

TEST_F(PushToTalkTest, OfAnHourOfSpeechTheRecogniserIsKeptMinutes)
{
    press();
    const std::vector<std::int16_t> second(AudioQueue::sampleRate, 1000);
    for (int i = 0; i < 3600; ++i)
        script.tap.sound(second);
    std::vector<std::int16_t> kept(AudioQueue::samplesIn(3600));
    EXPECT_EQ(script.request->audio.read(kept), AudioQueue::samplesIn(SpeechRecognitionRequest::mostSeconds));
    EXPECT_EQ(script.request->locale.language(), QLocale::English);
    script.tap.sound(second); // and on, once there is room
    EXPECT_EQ(script.request->audio.read(kept), second.size());
}

} // namespace

} // namespace morvane
