// A person's hour with Ghost chats in the real window, for a test that watches this process from outside. It
// says on its output how far it has come, and goes on with each line that it is given.

#include "attestation/ProofLedger.h"
#include "end_to_end/AppFixture.h"
#include "models/Conversation.h"
#include "network/NetworkLedger.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "support/Await.h"
#include "support/SpokenMicrophone.h"
#include "view_models/chat/ChatViewModel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <cstring>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class GhostSession : public AppFixture {
protected:
    [[nodiscard]] std::size_t savedTexts() const
    {
        return state->storage().repository->sealedTexts(100).size();
    }
    void answer(int button) const
    {
        chat().ghosts()->answer(chat().ghosts()->questionId(), button);
        WindowDriver::settle();
    }

    void attach(const QString &path) const
    {
        AttachmentDesk &desk = *chat().entries()->attachments();
        desk.attach({QUrl::fromLocalFile(path)});
        EXPECT_TRUE(
            WindowDriver::eventually([&desk] { return desk.state() == AttachmentDesk::State::Ready; }));
    }

    // A question about a file and its reply, one that fails, and one that is only begun.
    void useGhostChat(const QString &mark)
    {
        ASSERT_TRUE(WindowDriver::eventually([this] { // a question that fades still has the keys
            WindowDriver::press(window(), Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
            return chat().ghosts()->isOn();
        }));
        useModel(u"practice-fast"_s);
        attach(qEnvironmentVariable("MORVANE_GHOST_FILE"));
        say(mark + u"question"_s);
        ASSERT_TRUE(turnEnds());
        EXPECT_TRUE(lastText().contains(mark)) << "the server repeats it";
        WindowDriver::press(window(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        expectSecret(mark);
        WindowDriver::type(window(), mark + u"taken back"_s);
        WindowDriver::press(window(), Qt::Key_A, Qt::ControlModifier);
        WindowDriver::press(window(), Qt::Key_X, Qt::ControlModifier);
        expectSecret(mark + u"taken back"_s);
        useModel(u"status-500"_s);
        say(mark + u"failing"_s);
        ASSERT_TRUE(turnEnds());
        EXPECT_TRUE(chat().hasBanner());
        WindowDriver::type(window(), mark + u"draft"_s);
        EXPECT_TRUE(WindowDriver::eventually([&] { return chat().conversation()->draft().contains(mark); }));
        EXPECT_EQ(window()->title().count(mark), 0);
    }

    // Clipboard managers keep no history of it.
    static void expectSecret(const QString &words)
    {
        const QMimeData *copied = QGuiApplication::clipboard()->mimeData();
        EXPECT_TRUE(copied->text().contains(words));
        EXPECT_EQ(copied->data(u"x-kde-passwordManagerHint"_s), "secret");
    }

    void expectRowsWithoutWords(const QString &mark) const
    {
        const auto requests = state->assistant().networkLedger->snapshot();
        EXPECT_FALSE(requests.entries.empty());
        for (const auto &row : requests.entries)
            EXPECT_FALSE(row.host.contains(mark));
        const auto proofs = state->assistant().proofs->snapshot();
        EXPECT_FALSE(proofs.entries.empty());
        for (const auto &row : proofs.entries)
            EXPECT_FALSE((row.purpose + row.place.model).contains(mark));
    }
};

TEST_F(GhostSession, IsDroppedAndKept)
{
    const QString dropped = u"DroppedMARK"_s;
    const QString kept = u"KeptMARK"_s;
    come("begun");
    useGhostChat(dropped);
    EXPECT_EQ(savedTexts(), 0U);
    come("held");
    expectRowsWithoutWords(dropped);
    chat().newConversation();
    answer(0);
    EXPECT_FALSE(chat().ghosts()->isOn());
    EXPECT_EQ(savedTexts(), 0U);
    come("dropped");
    useGhostChat(kept);
    come("held again");
    EXPECT_EQ(savedTexts(), 0U);
    chat().newConversation();
    answer(1);
    EXPECT_EQ(savedTexts(), 4U);
    QGuiApplication::clipboard()->setText(u"open"_s);
    EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasFormat(u"x-kde-passwordManagerHint"_s));
    come("kept");
}

// Each press ends another way. The sound bears a mark, too.
TEST_F(GhostSession, IsSpokenTo)
{
    SpokenMicrophone microphone;
    stop();
    voice = {.permission = &microphone, .makeEngine = [&] { return microphone.makeEngine(); }};
    start();
    state->storage().settings->setAutoSendTranscription(true);
    useModel(u"practice-fast"_s);
    chat().ghosts()->newGhostChat();
    auto sound = spoken(u"please remember to call my brother in the morning and ask him about the train"_s);
    std::memcpy(sound.data(), "SoundMARKSoundMARK", 18);
    VoiceEntry &entry = *chat().entries()->voice();
    const auto speak = [&] {
        entry.begin();
        ASSERT_TRUE(WindowDriver::eventually([&] { return microphone.isOpen(); }));
        microphone.hear(sound);
        EXPECT_TRUE(WindowDriver::eventually([&] {
            return entry.words().contains(u"brother in the morning"_s);
        })) << entry.words().toStdString();
    };
    come("begun");
    const auto isAtRest = [&] { return entry.phase() == VoiceEntry::Phase::Idle; };
    speak();
    entry.end();
    ASSERT_TRUE(WindowDriver::eventually(isAtRest));
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(lastText().contains(u"brother in the morning"_s)) << "the server repeats it";
    come("taken down");
    speak();
    WindowDriver::press(window(), Qt::Key_Escape);
    EXPECT_TRUE(isAtRest());
    EXPECT_EQ(entry.words(), QString());
    come("dropped");
    state->storage().settings->setAutoSendTranscription(false);
    speak();
    entry.end();
    chat().newConversation();
    answer(0);
    EXPECT_TRUE(isAtRest());
    EXPECT_EQ(chat().draft(), QString()) << "it was said to another chat";
    come("let go and left");
    chat().ghosts()->newGhostChat();
    speak();
    entry.end();
    ASSERT_TRUE(WindowDriver::eventually([&] { return !chat().draft().isEmpty(); }));
    chat().send();
    ASSERT_TRUE(turnEnds());
    come("sent");
    speak();
    come("still speaking"); // and is, when the program ends
    stop();
}

} // namespace

} // namespace morvane
