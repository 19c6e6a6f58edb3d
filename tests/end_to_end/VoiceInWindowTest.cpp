// A question that is spoken into a real microphone, answered, read aloud, and understood once more.

#include "audio/SoundServer.h"
#include "end_to_end/AppFixture.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/DesktopAudio.h"
#include "support/Await.h"
#include "support/SamplePage.h"
#include "support/SpokenMicrophone.h"
#include "view_models/chat/ChatViewModel.h"

#include <QDirIterator>
#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class VoiceInWindowTest : public AppFixture {
protected:
    void SetUp() override
    {
        if (!SoundServer::isThere())
            GTEST_SKIP() << "NO SOUND WAS TESTED: there is no pulseaudio on this machine.";
        sound.emplace();
        desktop.emplace();
        stop();
        voice = {.output = &desktop->output,
                 .microphones = &desktop->microphones,
                 .permission = &desktop->permission,
                 .makeEngine = [this] { return desktop->makeEngine(); }};
        start();
    }
    void TearDown() override { stop(); }

    [[nodiscard]] VoiceEntry &entry() const { return *chat().entries()->voice(); }

    // Holds the key while that is heard.
    void speak(const std::vector<std::int16_t> &samples)
    {
        QTest::keyPress(window(), Qt::Key_V, Qt::AltModifier);
        EXPECT_TRUE(chat().reader()->readingId().isEmpty()) << "the microphone would hear it";
        TestWait::until([this] { return entry().phase() == VoiceEntry::Phase::Listening; });
        sound->speakInto(samples);
        TestWait::until([this] { return !sound->isSpeaking(); });
        EXPECT_FALSE(entry().words().isEmpty());
        QTest::keyRelease(window(), Qt::Key_V, Qt::AltModifier);
        TestWait::until([this] { return entry().phase() == VoiceEntry::Phase::Idle; });
    }
    // A machine that is busy is late with the last words; how well words are understood is asked elsewhere.
    static void expectHalf(const QString &said, const QString &heard)
    {
        EXPECT_GE(SamplePage::shareRead(said.split(u' '), heard), 0.5) << heard.toStdString();
    }

    std::optional<SoundServer> sound;
    std::optional<DesktopAudio> desktop;
};

TEST_F(VoiceInWindowTest, AQuestionIsSpokenAnsweredReadAloudAndUnderstoodAgain)
{
    SettingsStore &settings = *state->storage().settings;
    settings.setVoiceOutputEnabled(true);
    settings.setAutoSendTranscription(true);
    const QString question =
        u"what is the weather going to be like in the mountains at the end of the week"_s;
    speak(spoken(question));
    ASSERT_TRUE(turnEnds());
    sound->beginRecording();
    const auto *messages = chat().messages();
    EXPECT_EQ(messages->rowCount(), 2);
    expectHalf(question, messages->index(0).data(MessageListModel::TextRole).toString());
    std::vector<std::int16_t> reply;
    TestWait::until([&] {
        const auto more = sound->recorded();
        reply.insert(reply.end(), more.begin(), more.end());
        return reply.size() > AudioQueue::samplesIn(8);
    });
    EXPECT_FALSE(chat().reader()->readingId().isEmpty());
    settings.setAutoSendTranscription(false);
    speak(reply);
    expectHalf(u"practice server which runs on this computer no model is"_s, chat().draft());
    stop();
    for (QDirIterator all(profile.path(), QDir::Files, QDirIterator::Subdirectories); all.hasNext();) {
        QFile file(all.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_FALSE(file.readAll().contains("mountains")) << file.fileName().toStdString();
    }
    // The remapped microphone's own, and the test's.
    EXPECT_TRUE(WindowDriver::eventually([this] {
        return sound->control({u"list"_s, u"short"_s, u"source-outputs"_s}).count(u'\n') == 2;
    }));
}

} // namespace

} // namespace morvane
