#include "WindowFixture.h"

#include "app/OutsideRequests.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "utils/files/PrivateFile.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/AppLockViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Chat = AppRequest::Chat;

class OutsideRequestsTest : public WindowFixture {
protected:
    void SetUp() override
    {
        WindowFixture::SetUp();
        m_app->presentation().settings.setOnboardingComplete(true);
        requests.serve(*m_app);
    }
    [[nodiscard]] ChatViewModel &chat() { return *m_app->presentation().chat; }
    [[nodiscard]] std::size_t chatsKept() { return m_app->storage().repository->all().size(); }

    OutsideRequests requests;
    const AppRequest asked{.chat = Chat::fresh, .words = u"why?"_s, .sends = true};
};

TEST_F(OutsideRequestsTest, OnlyACommandLineSendsAndOnlyItsOwnWords)
{
    struct Case {
        const char *name;
        AppRequest request;
        QString draft; // that stands in the chat that is open
        bool isWelcomed = true;
        QStringList sent;
        QString left;
    };
    const Case cases[] = {
        {"a command line", asked, {}, true, {u"why?"_s}, {}},
        {"where the person writes already", asked, u"mine"_s, true, {}, u"mine why?"_s},
        {"in a Ghost chat",
         {.chat = Chat::ghost, .words = u"why?"_s, .sends = true},
         {},
         true,
         {u"why?"_s},
         {}},
        {"a Ghost chat takes the draft along",
         {.chat = Chat::ghost, .words = u"why?"_s, .sends = true},
         u"mine"_s,
         true,
         {},
         u"mine why?"_s},
        {"another program", {.chat = Chat::fresh, .words = u"why?"_s}, {}, true, {}, u"why?"_s},
        {"before the welcome was left", asked, {}, false, {}, u"why?"_s},
        {"a lost file",
         {.chat = Chat::fresh, .files = {u"/nowhere"_s}, .words = u"w"_s, .sends = true},
         {},
         true,
         {},
         u"w"_s},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.name);
        chat().newConversation();
        chat().setDraft(each.draft);
        m_app->presentation().settings.setOnboardingComplete(each.isWelcomed);
        requests.take(each.request);
        settle();
        EXPECT_TRUE(eventually([this] { return !chat().entries()->attachments()->isReading(); }));
        EXPECT_EQ(transcript().mid(0, 1), each.sent);
        EXPECT_EQ(chat().draft(), each.left);
        EXPECT_EQ(chat().ghosts()->isOn(), each.request.chat == Chat::ghost);
        if (chat().isResponding())
            endReply();
        if (chat().ghosts()->isOn())
            chat().ghosts()->dropGhost();
    }
}

TEST_F(OutsideRequestsTest, AQuestionGoesWithItsFileUnlessThePersonTookItOver)
{
    const QString path = m_profile.filePath(u"a.txt"_s);
    PrivateFile::write(path, "ferns");
    for (const bool isTakenOver : {true, false}) {
        chat().setDraft({});
        requests.take({.chat = Chat::fresh, .files = {path}, .words = u"what?"_s, .sends = true});
        if (isTakenOver)
            chat().addToDraft(u"else"_s);
        ASSERT_TRUE(eventually([&] { return chat().isResponding() || (isTakenOver && chat().canSend()); }));
        settle();
        EXPECT_EQ(chat().isResponding(), !isTakenOver);
    }
    EXPECT_TRUE(transcript().value(0).contains(u"what?"_s));
    EXPECT_FALSE(chat().entries()->attachments()->pending()) << "it went along";
    endReply();
}

TEST_F(OutsideRequestsTest, WhileLockedNothingIsBegunAndTheUnlockBringsIt)
{
    const QString kept = addChat(u"kept"_s, {u"a"_s, u"b"_s});
    (void)m_app->storage().vault->key();
    m_app->storage().vault->moveKey(UserPresence::Required);
    m_app->storage().settings->setAppLockEnabled(true);
    m_app->appLock().lock();
    const auto before = chatsKept();
    requests.take({.chatID = kept});
    requests.take({.words = u"first"_s});
    for (std::size_t i = 2; i <= OutsideRequests::most; ++i)
        requests.take({.words = u"+"_s});
    settle();
    EXPECT_EQ(chatsKept(), before);
    EXPECT_FALSE(chat().draft().contains(u"first"_s));
    m_app->appLock().unlock();
    ASSERT_TRUE(eventually([this] { return chat().draft().startsWith(u"first"_s); }));
    EXPECT_EQ(chat().conversationId(), kept);
    EXPECT_EQ(chat().draft().count(u'+'), qsizetype(OutsideRequests::most) - 2) << "no more than can wait";
}

TEST_F(OutsideRequestsTest, AGhostChatThatHoldsMessagesIsAskedAboutFirst)
{
    for (const int button : {0, 1}) {
        chat().ghosts()->newGhostChat();
        send(u"secret"_s);
        endReply();
        requests.take(asked);
        EXPECT_TRUE(transcript().contains(u"secret"_s)) << "the person answers first";
        const bool stays = chat().ghosts()->questionButtons().value(button) != u"Drop"_s;
        chat().ghosts()->answer(chat().ghosts()->questionId(), stays ? -1 : button);
        settle();
        EXPECT_EQ(transcript().contains(u"secret"_s), stays);
        EXPECT_EQ(transcript().contains(u"why?"_s), !stays);
        if (stays)
            chat().ghosts()->dropGhost();
        else
            endReply();
    }
}

} // namespace

} // namespace morvane
