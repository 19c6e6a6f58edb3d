// Real sound both ways: a sound server of the test's own, a voice that speaks into its microphone, and ears
// on its loudspeaker.

#include "async/Work.h"
#include "audio/AudioPermissionService.h"
#include "audio/SoundServer.h"
#include "audio/SpeechRecognitionService.h"
#include "audio/VoiceDebugLog.h"
#include "audio/engines/PocketSphinxRecognizer.h"
#include "platform/linux/DesktopAudio.h"
#include "support/Await.h"
#include "support/SpokenMicrophone.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Twenty words.
const QString sentence =
    u"please remember to call my brother in the morning and ask him about the train that leaves for the city"_s;

// Gives the last words ten times their time: a busy machine recognises slower than people speak, and what is
// asked here is which words they are.
class PatientClock final : public Clock {
public:
    [[nodiscard]] QDateTime now() const override { return m_clock.now(); }
    [[nodiscard]] std::chrono::milliseconds elapsed() const override { return m_clock.elapsed(); }
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                               std::function<void()> fire) override
    {
        return m_clock.after(10 * delay, std::move(fire));
    }

private:
    SystemClock m_clock;
};

// How many of the words were heard; printed, too.
double shareHeard(const QString &said, const QString &heard)
{
    const QStringList words = said.split(u' ');
    const auto found = std::ranges::count_if(
        words, [all = heard.split(u' ')](const QString &word) { return all.contains(word); });
    const double share = static_cast<double>(found) / static_cast<double>(words.size());
    std::printf("%.0f %% of %lld words: %s\n", 100 * share, static_cast<long long>(words.size()),
                heard.toUtf8().constData());
    return share;
}

class SpokenAndHeardTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!SoundServer::isThere())
            GTEST_SKIP() << "NO SOUND WAS TESTED: there is no pulseaudio on this machine.";
        try {
            server.emplace();
        } catch (const std::runtime_error &error) {
            GTEST_SKIP() << "NO SOUND WAS TESTED: " << error.what() << '.';
        }
        desktop.emplace();
        service.emplace(
            SpeechRecognitionService::Services{.permissions = permissions,
                                               .recognizer = recognizer,
                                               .clock = clock,
                                               .log = log,
                                               .makeEngine = [this] { return desktop->makeEngine(); },
                                               .preferredDeviceUID = [this] { return microphone; },
                                               .locale = [] { return QLocale(QLocale::English); }});
    }

    // Ends what a test left running, so that nothing outlives its services.
    void TearDown() override
    {
        service.reset();
        TestWait::settle();
        work.end();
        TestWait::settle();
    }

    // From the press to the release, with the sound in between.
    QString hear(const std::vector<std::int16_t> &sound)
    {
        TestWait::await(service->startRecording());
        server->speakInto(sound);
        TestWait::until([this] { return !server->isSpeaking(); });
        return TestWait::await(service->stopRecording());
    }

    std::optional<SoundServer> server;
    QTemporaryDir folder;
    PatientClock clock;
    Work work{clock};
    MicrophonePermission permission;
    AudioPermissionService permissions{permission};
    PocketSphinxRecognizer recognizer{clock, work};
    VoiceDebugLog log{folder.filePath(u"voice-debug.log"_s), clock, work};
    std::optional<DesktopAudio> desktop;
    std::optional<QString> microphone;
    std::optional<SpeechRecognitionService> service;
};

TEST_F(SpokenAndHeardTest, OddMicrophonesAreHeardAndClosed)
{
    const auto tell = [this](const QString &words) { return server->control(words.split(u' ')); };
    const auto open = [&] { return tell(u"list short source-outputs"_s).count(u'\n'); };
    qsizetype before = 0; // streams of the remapped microphones themselves
    for (const auto &[name, kind] : {std::pair{u"narrow"_s, u"rate=8000 channels=1"_s},
                                     std::pair{u"wide"_s, u"rate=192000 channels=2"_s},
                                     std::pair{u"many"_s, u"rate=48000 channels=8"_s}}) {
        tell(u"load-module module-null-sink sink_name=%1 %2 norewinds=1"_s.arg(name, kind));
        tell(u"load-module module-remap-source source_name=mic_%1 master=%1.monitor"_s.arg(name));
        before = open();
        microphone = u"mic_"_s + name;
        server->setFeed(name);
        EXPECT_GE(shareHeard(sentence, hear(spoken(sentence))), 0.5) << name.toStdString();
    }
    microphone.reset();
    server->setFeed(u"mic_feed"_s);
    EXPECT_EQ(hear(std::vector<std::int16_t>(AudioQueue::sampleRate)), QString());
    microphone = u"gone"_s;
    EXPECT_GE(shareHeard(sentence, hear(spoken(sentence))), 0.75); // by the default
    EXPECT_EQ(open(), before) << "the microphone is closed";
}

TEST_F(SpokenAndHeardTest, AMicrophoneThatIsPulledOutLeavesWhatWasHeard)
{
    bool interrupted = false;
    QObject::connect(&*service, &SpeechRecognitionService::interrupted, [&] { interrupted = true; });
    TestWait::await(service->startRecording());
    server->speakInto(spoken(sentence));
    TestWait::until([this] { return service->partialTranscript().split(u' ').size() > 5; });
    server->stop(); // while one source is left, the server gives that one in its place
    TestWait::until([&] { return interrupted; });
    EXPECT_TRUE(TestWait::await(service->stopRecording()).startsWith(u"please remember"_s));
    EXPECT_THROW(TestWait::await(service->startRecording()), AudioError);
    EXPECT_FALSE(service->lastFailureMessage().isEmpty());
}

} // namespace

} // namespace morvane
