// What is said instead of typed: where the words come to, when none do, and who falls silent for them.

#include "view_models/ChatFixture.h"

#include "async/SharedResult.h"
#include "audio/AudioError.h"
#include "audio/SpeechCapturing.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using enum VoiceEntry::Phase;

namespace {

// Hears what a test says it heard.
class Microphone final : public SpeechCapturing {
public:
    [[nodiscard]] bool isRecording() const override { return m_isOpen; }
    [[nodiscard]] const QString &partialTranscript() const override { return m_partial; }
    [[nodiscard]] double level() const override { return 0.5; }
    QCoro::Task<> startRecording() override
    {
        const int press = ++m_press;
        if (isSlow)
            co_await opened.wait(std::stop_token());
        if (press == m_press && startFails)
            throw AudioError(AudioError::Case::noMicrophone);
        if (press == m_press)
            setOpen(true);
    }
    QCoro::Task<QString> stopRecording() override
    {
        ++m_press;
        const bool wasOpen = m_isOpen;
        setOpen(false);
        if (!wasOpen)
            co_return QString();
        words.push_back({});
        const SharedResult<QString> mine = words.back();
        const QString said = co_await mine.wait(std::stop_token());
        if (said == u"fails"_s)
            throw AudioError(AudioError::Case::recognitionFailed);
        co_return said;
    }
    void cancelRecording() override
    {
        ++m_press;
        notes += u"cancelled"_s;
        setOpen(false);
    }
    void note(const QString &line) override { notes += line; }
    void hear(const QString &text)
    {
        words.back().resolve(text);
        TestWait::settle();
    }

    bool isSlow = false;
    bool startFails = false;
    SharedResult<bool> opened;
    std::vector<SharedResult<QString>> words; // of each press, once it was let go
    QStringList notes;

private:
    void setOpen(bool open)
    {
        if (std::exchange(m_isOpen, open) != open)
            Q_EMIT isRecordingChanged();
    }

    bool m_isOpen = false;
    int m_press = 0;
    QString m_partial;
};

class VoiceEntryTest : public ChatFixture {
protected:
    void SetUp() override { composer.openAtStart(); }
    void TearDown() override
    {
        composer.endTurns();
        ChatFixture::TearDown();
    }
    void say(const QString &words)
    {
        companion.clearBubble();
        composer.dismissBanner();
        voice.begin();
        EXPECT_EQ(companion.state(), CompanionState::listening);
        voice.end();
        microphone.hear(words);
        EXPECT_EQ(voice.phase(), Idle);
    }
    [[nodiscard]] QString banner() const { return composer.banner().message; }

    Microphone microphone;
    ChatViewModel composer{[this] {
        auto all = services;
        all.capture = &microphone;
        return all;
    }()};
    VoiceEntry &voice = *composer.entries()->voice();
    const QString unheard = u"I didn't hear anything. Start talking after the pop sound."_s;
};

TEST_F(VoiceEntryTest, WhatIsSaidJoinsTheDraftAndSilenceIsCounted)
{
    composer.setDraft(u"So:"_s);
    say(u" one two\n"_s);
    EXPECT_EQ(composer.draft(), u"So: one two"_s);
    for (const bool isCounted : {false, true}) {
        say(u" "_s);
        EXPECT_EQ(companion.bubbleText(), isCounted ? QString() : unheard);
        EXPECT_EQ(banner(), isCounted ? u"The microphone is sending no audio."_s : QString());
        EXPECT_EQ(composer.banner().mayOpenVoiceSettings(), isCounted);
    }
    say(u"three"_s);
    say({});
    EXPECT_EQ(companion.bubbleText(), unheard) << "counted anew";
    say(u"fails"_s);
    EXPECT_TRUE(banner().startsWith(u"Speech recognition failed: "_s)) << banner().toStdString();
    EXPECT_TRUE(composer.banner().mayOpenVoiceSettings());

    settings.setAutoSendTranscription(true);
    say(u"four"_s);
    TestWait::settle();
    EXPECT_EQ(sentWords().back(), u"So: one two three four"_s);
    EXPECT_EQ(companion.state(), CompanionState::thinking);
    voice.begin();
    EXPECT_EQ(voice.phase(), Listening);
    composer.stopResponding();
    EXPECT_EQ(companion.state(), CompanionState::listening)
        << "it thinks no more, and the person still speaks";
}

TEST_F(VoiceEntryTest, OfAKeyThatIsLetGoBeforeItListensNothingIsSaid)
{
    microphone.isSlow = true;
    for (const bool fails : {false, true, false}) {
        microphone.startFails = fails;
        voice.begin();
        EXPECT_EQ(voice.phase(), Starting);
        voice.end();
        EXPECT_EQ(voice.phase(), Idle);
        std::exchange(microphone.opened, {}).resolve(true);
        TestWait::settle();
        EXPECT_FALSE(microphone.isRecording());
    }
    EXPECT_EQ(companion.bubbleText() + banner() + composer.draft(), QString());
    EXPECT_EQ(companion.state(), CompanionState::idle);
    microphone.isSlow = false;
    microphone.startFails = true;
    voice.begin();
    EXPECT_EQ(banner(),
              u"Speech recognition failed: "_s + AudioError(AudioError::Case::noMicrophone).userMessage());
    EXPECT_EQ(voice.phase(), Idle);
}

TEST_F(VoiceEntryTest, AfterFiveMinutesWhatWasSaidIsTaken)
{
    voice.toggle();
    clock.advance(270s - 1ms);
    EXPECT_EQ(voice.secondsLeft(), 0);
    clock.advance(1ms);
    EXPECT_EQ(voice.secondsLeft(), 30);
    clock.advance(29s);
    EXPECT_EQ(voice.secondsLeft(), 1);
    EXPECT_EQ(voice.phase(), Listening);
    clock.advance(1s);
    EXPECT_EQ(voice.phase(), Finishing);
    EXPECT_EQ(voice.secondsLeft(), 0);
    microphone.hear(u"a speech"_s);
    EXPECT_EQ(composer.draft(), u"a speech"_s);
}

TEST_F(VoiceEntryTest, WhatIsDroppedReachesNoChat)
{
    const std::function<void()> ways[] = {[this] { voice.cancel(); }, [this] { composer.newConversation(); },
                                          [this] { composer.stopVoice(); },
                                          [this] { // out of a Ghost chat without words
                                              composer.ghosts()->toggleGhostMode();
                                              composer.ghosts()->toggleGhostMode();
                                          },
                                          [this] { composer.endTurns(); }};
    composer.newConversation();
    for (const auto &drop : ways) {
        for (const bool isLetGo : {false, true}) {
            voice.begin();
            if (isLetGo)
                voice.end();
            drop();
            EXPECT_EQ(voice.phase(), Idle);
            EXPECT_EQ(microphone.notes.last(), u"cancelled"_s);
            EXPECT_FALSE(microphone.isRecording());
            if (isLetGo)
                microphone.hear(u"dropped"_s);
            EXPECT_EQ(composer.draft() + companion.bubbleText() + banner(), QString());
        }
    }
    EXPECT_NE(companion.state(), CompanionState::listening);
}

TEST_F(VoiceEntryTest, WhileThePersonSpeaksNothingIsReadAloud)
{
    settings.setVoiceOutputEnabled(true);
    composer.sendMessage(u"q"_s, std::nullopt);
    TestWait::settle();
    heard.clear();
    voice.begin();
    EXPECT_EQ(heard, QStringList{u"hushed"_s});
    replies.text(u"a"_s);
    replies.finish();
    EXPECT_EQ(heard, QStringList{u"hushed"_s});
    EXPECT_EQ(companion.state(), CompanionState::listening);
}

} // namespace

} // namespace morvane
