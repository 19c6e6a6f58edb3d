#include "async/Work.h"
#include "audio/AudioError.h"
#include "audio/AudioPlaying.h"
#include "audio/AudioQueue.h"
#include "audio/SpeechSentences.h"
#include "audio/SystemVoices.h"
#include "audio/TextToSpeechService.h"
#include "audio/engines/FliteSynthesizer.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/WipeSpy.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Says each piece as a tenth of a second of sound.
class ScriptedVoice final : public SpeechSynthesizing {
public:
    std::vector<Voice> voices() override { return {{u"one"_s, u"One"_s}}; }
    [[nodiscard]] double minimumRate() const override { return 1; }
    [[nodiscard]] double maximumRate() const override { return 5; }
    void synthesize(const Utterance &utterance, const Sink &sink) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_said.push_back(utterance);
        }
        if (said().size() == 1)
            sink(std::vector<std::int16_t>(1600, 5)); // its breath, which is left out
        sink(std::vector<std::int16_t>(1600, 1000));
    }
    [[nodiscard]] std::vector<Utterance> said() const
    {
        const std::lock_guard lock(m_mutex);
        return m_said;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Utterance> m_said;
};

// A service with one voice, which says a text until it is stopped.
class ScriptedSystemVoices final : public SystemVoices {
public:
    [[nodiscard]] bool owns(const QString &identifier) const override
    {
        return identifier.startsWith(u"sys:"_s);
    }
    std::vector<SpeechSynthesizing::Voice> voices() override { return {{u"sys:there"_s, u"There"_s}}; }
    bool speak(const SpeechSynthesizing::Utterance &utterance, const std::stop_token &stop) override
    {
        if (utterance.voice != u"sys:there"_s)
            return false;
        rate = utterance.rate;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] {}, Qt::QueuedConnection); // wakes the test
        while (!stop.stop_requested())
            std::this_thread::yield();
        return true;
    }

    std::atomic<double> rate = 9;
};

// Plays until the test ends it; false is a machine without a loudspeaker.
class ScriptedOutput final : public AudioPlaying {
public:
    QCoro::Task<> play(std::shared_ptr<AudioQueue> sound, std::stop_token stop) override
    {
        auto ends = AsyncStream<bool>::make();
        sounds.push_back(std::move(sound));
        m_ends.push_back(ends.second);
        const std::stop_token heeded = isSlow ? std::stop_token() : stop;
        const std::optional<bool> works = co_await ends.first.next(heeded);
        if (!*works)
            throw AudioError(AudioError::Case::playbackFailed);
    }
    // The newest, or one that many before it.
    void end(bool works, std::size_t before = 0)
    {
        m_ends[m_ends.size() - 1 - before].yield(works);
        TestWait::settle();
    }

    std::vector<std::shared_ptr<AudioQueue>> sounds;
    bool isSlow = false; // to fall silent

private:
    std::vector<AsyncStream<bool>::Producer> m_ends;
};

class TextToSpeechTest : public testing::Test {
protected:
    // Ends what a test left running, so that nothing outlives its services.
    void TearDown() override
    {
        stop.request_stop();
        service.stop();
        TestWait::settle();
        work.end();
        TestWait::settle();
    }
    void speak(const QString &text, double rate = 0.5, bool code = false, const QString &by = u"one"_s)
    {
        m_outcome = TestWait::begin(service.speak(text, by, rate, code, stop.get_token()));
        TestWait::until([this, before = output.sounds.size()] {
            return m_outcome->done || output.sounds.size() > before;
        });
    }
    [[nodiscard]] bool hasEnded() const { return m_outcome->done; }
    [[nodiscard]] bool hasFailed() const { return static_cast<bool>(m_outcome->error); }
    // All of them, once the worker is through.
    QStringList pieces()
    {
        std::array<std::int16_t, 1600> samples{};
        while (!output.sounds.back()->isAtEnd()) {
            const bool isMore = output.sounds.back()->readOrWait(samples, {}) > 0;
            EXPECT_TRUE(!isMore || samples.front() == 1000);
        }
        QStringList texts;
        for (const auto &utterance : voice.said())
            texts.append(utterance.text);
        return texts;
    }

    ManualClock clock;
    Work work{clock};
    ScriptedVoice voice;
    ScriptedOutput output;
    ScriptedSystemVoices others;
    TextToSpeechService service{voice, output, work, &others};
    std::stop_source stop;

private:
    std::shared_ptr<TestWait::Outcome<void>> m_outcome;
};

TEST_F(TextToSpeechTest, WordsAreSpokenSentenceBySentenceAndMarksAreNot)
{
    struct {
        const char *text;
        bool code;
        QStringList spoken;
    } const cases[] = {
        {"**One** `two`. Three?\n\n- four", false, {u"One two."_s, u"Three?"_s, u"four"_s}},
        {"```cpp\nint x;\n```", false, {u"…there's a code example here…"_s}},
        {"```cpp\nint x;\n```", true, {u"int x;"_s}},
    };
    for (const auto &each : cases) {
        const auto before = voice.said().size();
        speak(QString::fromUtf8(each.text), 0.5, each.code);
        EXPECT_TRUE(service.isSpeaking());
        EXPECT_EQ(pieces().mid(static_cast<qsizetype>(before)), each.spoken);
        output.end(true);
        EXPECT_TRUE(hasEnded() && !service.isSpeaking());
    }
    for (const QString &nothing : {u""_s, u" \n "_s, u"****"_s}) {
        speak(nothing);
        EXPECT_TRUE(hasEnded() && !service.isSpeaking()) << nothing.toStdString();
    }
    EXPECT_EQ(output.sounds.size(), std::size(cases));
}

TEST_F(TextToSpeechTest, TheRateIsAPlaceOnTheVoicesScale)
{
    LogCapture log;
    for (const auto &[rate, used] : std::vector<std::pair<double, double>>{
             {0, 1}, {0.5, 3}, {1, 5}, {-7, 1}, {1e9, 5}, {std::nan(""), 3}}) {
        speak(u"word"_s, rate);
        pieces();
        EXPECT_EQ(voice.said().back().rate, used) << rate;
        EXPECT_EQ(voice.said().back().voice, u"one"_s);
    }
    EXPECT_EQ(log.lines(), QStringList(6, u"audio: Speaking response (4 characters)"_s));
}

TEST_F(TextToSpeechTest, ALongReplyIsHeldOnlyAFewSecondsAheadAndStopsAtOnce)
{
    speak(u"Ten letters. "_s.repeated(80'000));
    while (voice.said().size() < 201) // of a tenth of a second each; the last has no room
        std::this_thread::yield();
    EXPECT_EQ(voice.said().size(), 201U);
    stop.request_stop();
    TestWait::settle();
    EXPECT_TRUE(hasEnded() && !service.isSpeaking() && !hasFailed());

    stop = {};
    speak(u"The next."_s);
    auto former = std::exchange(stop, {});
    speak(u"And one in its place."_s); // stops the former
    TestWait::settle();
    EXPECT_TRUE(service.isSpeaking());
    service.stop();
    EXPECT_FALSE(service.isSpeaking());
    TestWait::settle();
    EXPECT_TRUE(hasEnded());

    output.isSlow = true;
    speak(u"It takes long to fall silent."_s);
    speak(u"And one that speaks by then."_s);
    output.end(true, 1);
    EXPECT_TRUE(service.isSpeaking()) << "the end of the former is none of this one";
    output.end(true);
    EXPECT_TRUE(hasEnded() && !service.isSpeaking());
    output.isSlow = false;

    speak(u"Nobody hears it."_s);
    output.end(false);
    EXPECT_TRUE(hasEnded() && hasFailed() && !service.isSpeaking());
}

TEST_F(TextToSpeechTest, AVoiceOfTheSystemSpeaksByItselfAndARemovedOneLeavesItToTheOthers)
{
    using Asking = TextToSpeechService::Asking;
    for (const auto &[chosen, asking, count] : std::vector<std::tuple<QString, Asking, std::size_t>>{
             {u"one"_s, Asking::Own, 1}, {u"one"_s, Asking::All, 2}, {u"sys:gone"_s, Asking::Own, 2}})
        EXPECT_EQ(TestWait::await(service.voices(chosen, asking, {})).size(), count) << chosen.toStdString();
    speak(u"Removed."_s, 0, false, u"sys:gone"_s);
    EXPECT_EQ(pieces(), QStringList{u"Removed."_s});
    output.end(true);
    EXPECT_TRUE(hasEnded() && others.rate == 9);

    const auto outcome = TestWait::begin(service.speak(u"There."_s, u"sys:there"_s, 0, false, {}));
    TestWait::until([this] { return others.rate != 9; });
    EXPECT_EQ(others.rate, -1);
    EXPECT_TRUE(service.isSpeaking() && output.sounds.size() == 1);
    service.stop();
    TestWait::until([&] { return outcome->done; });
    EXPECT_FALSE(service.isSpeaking() || outcome->error);
}

TEST(AudioQueueTest, SoundStaysInOrderAndIsWipedReadOrNot)
{
    const QString sound = u"what was said"_s;
    const std::span samples(reinterpret_cast<const std::int16_t *>(sound.utf16()),
                            static_cast<std::size_t>(sound.size()));
    std::array<std::int16_t, 32> heard{};
    WipeSpy spy(sound);
    {
        AudioQueue queue(20);
        EXPECT_EQ(queue.offer(samples), 13U);
        EXPECT_EQ(queue.offer(samples), 7U) << "no room for more";
        EXPECT_EQ(queue.read(std::span(heard).first(13)), 13U);
        EXPECT_TRUE(std::ranges::equal(std::span(heard).first(13), samples));
        EXPECT_EQ(spy.takeCount(), 1);
        EXPECT_EQ(queue.offer(samples), 13U); // around the end of the ring
        EXPECT_EQ(queue.read(heard), 20U);
        EXPECT_TRUE(std::ranges::equal(std::span(heard).subspan(7, 13), samples));
        queue.finish();
        EXPECT_TRUE(queue.isAtEnd());
        EXPECT_EQ(queue.offer(samples), 0U);
        std::ignore = spy.takeCount();
        AudioQueue unread(20);
        unread.offer(samples);
    }
    EXPECT_EQ(spy.takeCount(), 1);
}

TEST(SpeechSentencesTest, PiecesAreShortAndLoseNoWord)
{
    for (const QString &text : {u"word "_s.repeated(500), u"x"_s.repeated(5'000),
                                u"\U0001F468‍\U0001F469‍\U0001F467"_s.repeated(300),
                                u"One. Two! Three?\nFour"_s, u"a\u0301"_s.repeated(900) + u'.'}) {
        SpeechSentences sentences(text);
        QString joined;
        for (QStringView piece = sentences.next(); !piece.isEmpty(); piece = sentences.next()) {
            EXPECT_LE(piece.size(), SpeechSentences::longestPiece + 1);
            joined += piece;
        }
        QString words = text;
        EXPECT_EQ(joined.remove(u' '), words.remove(u' ').remove(u'\n'));
    }
}

// Seconds of sound.
double lengthOf(FliteSynthesizer &voice, const SpeechSynthesizing::Utterance &utterance)
{
    std::size_t samples = 0;
    voice.synthesize(utterance, [&](std::span<const std::int16_t> more) {
        samples += more.size();
        return true;
    });
    return static_cast<double>(samples) / AudioQueue::sampleRate;
}

TEST(FliteSynthesizerTest, ARemovedVoiceAndWhatHasNoWordsAreNoFailure)
{
    FliteSynthesizer voice;
    const QString sentence = u"The evening is warm and quiet."_s;
    const double usual = lengthOf(voice, {sentence, u"cmu_us_slt"_s, 0});
    EXPECT_GT(usual, 1);
    EXPECT_EQ(lengthOf(voice, {sentence, u"../../removed"_s, 0}), usual);
    EXPECT_NEAR(lengthOf(voice, {sentence, {}, 1}), usual / 2, usual / 8);
    EXPECT_NEAR(lengthOf(voice, {sentence, {}, -1}), usual * 2, usual / 2);
    EXPECT_GT(lengthOf(voice, {u"Ça coûte — “naïve”!"_s, {}, 0}), 0.5);
    for (const QString &mute :
         {u"😀🎉"_s, u"\u0001\u0007\u009f"_s, u"漢字"_s, u"… — !?"_s, QString(QChar(0xd800))})
        EXPECT_EQ(lengthOf(voice, {mute, {}, 0}), 0) << mute.toStdString();
    EXPECT_GT(lengthOf(voice, {u"9"_s.repeated(SpeechSentences::longestPiece), {}, 1}), 1);
    EXPECT_FALSE(voice.voices().empty());
}

} // namespace

} // namespace morvane
