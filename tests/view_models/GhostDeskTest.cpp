#include "utils/text/Identifier.h"
#include "view_models/ChatFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// What the person answers: the buttons of the departure, then those of the save.
enum Button { escape = -1, drop, keep, cancel };
enum SaveButton { save, stay };

class GhostDeskTest : public ChatFixture {
protected:
    void answer(int button)
    {
        ghosts.answer(ghosts.questionId(), button);
        TestWait::settle();
    }
    [[nodiscard]] bool isAsking() const { return !ghosts.questionId().isEmpty(); }
    void beginGhost(const QString &question = {}, const QString &reply = {})
    {
        ghosts.newGhostChat();
        if (!question.isEmpty())
            deliver(question, reply);
    }
    [[nodiscard]] Rows savedRows(const QUuid &id)
    {
        Rows rows;
        if (const auto conversation = repository.find(id)) {
            for (const auto &message : conversation->transcript())
                rows.emplace_back(message->role() == MessageRole::user, message->content());
        }
        return rows;
    }

    GhostDesk &ghosts = *chat.ghosts();
};

TEST_F(GhostDeskTest, TheButtonSaysWhatItDoesAndAsksBeforeWordsBecomeANormalChat)
{
    for (int press = 0; press < 2; ++press)
        ghosts.toggleGhostMode();
    EXPECT_FALSE(ghosts.isOn() || isAsking()) << "an empty one ends without a question";
    ghosts.toggleGhostMode();
    send(u"boo"_s);
    ghosts.toggleGhostMode();
    answer(stay);
    for (const int button : {save, stay, save}) { // staying takes back what waits
        ghosts.toggleGhostMode();
        answer(button);
        EXPECT_EQ(ghosts.savesWhenTurnEnds(), button == save);
    }
    EXPECT_EQ(repository.count(), 1) << "not before";
    chat.setDraft(u"and then"_s);
    replies.text(u"hoo"_s);
    heard.clear();
    chat.setWindowInFront(false);
    replies.finish();
    EXPECT_FALSE(ghosts.isOn());
    EXPECT_EQ(heard, (QStringList{u"ghosts withdrawn"_s, u"ready boo"_s})) << "it can be opened";
    EXPECT_EQ(savedRows(chat.conversation()->id()), (Rows{{true, u"boo"_s}, {false, u"hoo"_s}}));
    EXPECT_EQ(lastMessage()->status(), MessageStatus::delivered);
    EXPECT_EQ(chat.draft(), u"and then"_s);
    clock.advance(2s);
    EXPECT_EQ(repository.find(chat.conversation()->id())->draft(), u"and then"_s);
    ghosts.toggleGhostMode(); // which explains itself instead
    EXPECT_FALSE(ghosts.isOn() || isAsking());
}

TEST_F(GhostDeskTest, ItNeitherReadsNorKeepsNotesAndIsInNoListSearchOrNotification)
{
    settings.setBaseURLString(u"http://localhost:1/v1"_s);
    deliver(u"open"_s, u"a"_s);
    EXPECT_TRUE(replies.asked.back().request.memoryAllowed);
    chat.newConversation();
    chat.setDraft(u"was to be asked"_s);
    clock.advance(2s);
    const auto normal = chat.conversation();
    beginGhost();
    EXPECT_EQ(chat.draft(), u"was to be asked"_s);
    EXPECT_FALSE(normal->columns().sealedDraft) << "it went along";
    clock.advance(2s);
    chat.setWindowInFront(false);
    heard.clear();
    deliver(u"secret"_s, u"reply"_s);
    send(u"once more"_s);
    replies.fail(errorOf(ProviderError::Plain::networkTimeout));
    EXPECT_FALSE(replies.asked.back().request.memoryAllowed);
    EXPECT_EQ(repository.count(), 2);
    EXPECT_EQ(repository.sealedTexts(100).size(), 2U);
    EXPECT_FALSE(context.hasChanges());
    EXPECT_EQ(heard.filter(u"ghost"_s).size(), 2);
    EXPECT_TRUE(heard.filter(u"secret"_s).isEmpty());
    heard.clear();
    ghosts.dropGhost();
    EXPECT_EQ(heard, (QStringList{u"ghosts withdrawn"_s, u"hushed"_s}));
    EXPECT_EQ(chat.messages()->rowCount(), 0);
    EXPECT_EQ(repository.count(), 2);

    beginGhost();
    chat.setDraft(u"only begun"_s);
    ghosts.toggleGhostMode();
    clock.advance(2s);
    EXPECT_EQ(chat.draft(), u"only begun"_s);
    EXPECT_FALSE(chat.conversation()->columns().sealedDraft) << "until the person goes on there";
}

TEST_F(GhostDeskTest, EveryWayToAnotherChatAsksFirst)
{
    deliver(u"open"_s, u"a"_s);
    const QString other = chat.conversationId();
    const std::vector<std::pair<std::function<void()>, std::function<bool()>>> ways{
        {[&] { chat.newConversation(); }, [&] { return chat.conversation()->isEmpty() && !ghosts.isOn(); }},
        {[&] { chat.open(other); }, [&] { return chat.conversationId() == other; }},
        {[&] { ghosts.newGhostChat(); }, [&] { return ghosts.isOn() && !ghosts.holdsMessages(); }}};
    for (const auto &[leave, hasArrived] : ways) {
        for (const int button : {escape, cancel, drop, keep}) {
            if (!ghosts.holdsMessages())
                beginGhost(u"q"_s, u"a"_s);
            const QUuid ghost = chat.conversation()->id();
            leave();
            EXPECT_EQ(ghosts.questionTitle(), u"Drop this Ghost chat?"_s);
            EXPECT_EQ(chat.conversation()->id(), ghost);
            ghosts.answer(Identifier::text(QUuid::createUuid()), drop); // was given to a former question
            answer(button);
            const bool isLeaving = button == drop || button == keep;
            EXPECT_EQ(hasArrived(), isLeaving);
            EXPECT_EQ(repository.find(ghost) != nullptr, button == keep);
            EXPECT_FALSE(isAsking());
        }
    }
    beginGhost(u"q"_s, u"a"_s);
    chat.open(u"gone"_s);
    chat.remove(other);
    EXPECT_TRUE(ghosts.isOn() && !isAsking()) << "the Ghost chat itself isn't left";
    chat.newConversation();
    chat.open(other); // was deleted meanwhile
    answer(drop);
    EXPECT_TRUE(chat.conversation()->isEmpty());
}

TEST_F(GhostDeskTest, NothingIsLostWhenItCannotBeSaved)
{
    beginGhost(QString(1'000'000, u'x'), u"a"_s);
    const auto rows = transcript();
    chat.newConversation();
    answer(keep);
    EXPECT_EQ(chat.banner().message, u"The conversation could not be saved."_s);
    EXPECT_TRUE(ghosts.holdsMessages());
    EXPECT_EQ(transcript(), rows);
    EXPECT_FALSE(context.hasChanges());
    chat.retry();
    EXPECT_TRUE(chat.hasBanner() && ghosts.isOn());
    chat.deleteMessage(Identifier::text(chat.messages()->messages().front()->id()));
    beginGhost();
    answer(drop);
    deliver(u"short"_s, u"a"_s);
    isLocked = true;
    EXPECT_FALSE(ghosts.keepGhost());
    chat.newConversation();
    EXPECT_EQ(ghosts.questionButtons(), (QStringList{u"Drop"_s, u"Cancel"_s}));
    answer(1);
    isLocked = false;
    chat.retry();
    EXPECT_FALSE(chat.hasBanner() || ghosts.isOn());
    EXPECT_EQ(savedRows(chat.conversation()->id()).size(), 2U);

    deliver(u"long"_s, QString(1'000'000, u'w')); // nothing more can be saved, and so no chat be opened
    beginGhost(u"q"_s, u"a"_s);
    ghosts.dropGhost();
    EXPECT_EQ(chat.conversation(), nullptr) << "but this one is gone";
    EXPECT_TRUE(transcript().empty());
    EXPECT_EQ(chat.draft(), QString());
}

// Each stage of a running turn, and each end that a Ghost chat can come to while it is there.
enum class Stage { preparing, waiting, streaming, approval };
enum class End { dropped, kept, leftAndDropped, leftAndKept, savedWhenDone, savedWhenStopped, quit };

class GhostRaceTest : public GhostDeskTest, public testing::WithParamInterface<std::tuple<Stage, End>> {
protected:
    void reach(Stage stage)
    {
        if (stage == Stage::preparing) {
            settings.setBaseURLString(u"http://nas.local:1/v1"_s);
            router.setHostLookup([this](QString, std::stop_token stop) { return lookUpSlowly(clock, stop); });
        }
        send(u"question"_s);
        if (stage == Stage::streaming || stage == Stage::approval) {
            replies.text(u"one "_s);
            replies.text(u"two"_s); // not in the record yet
        }
        if (stage == Stage::approval)
            TestWait::collect<ApprovalAnswer>(chat.requestApproval(u"Search"_s, {}, false), approval);
        ASSERT_EQ(replies.asked.size(), stage == Stage::preparing ? 0U : 1U);
    }
    static QCoro::Task<QStringList> lookUpSlowly(Clock &clock, std::stop_token stop)
    {
        co_await pause(clock, 1h, stop);
        co_return QStringList{u"192.168.1.5"_s};
    }
    void finish(Stage stage)
    {
        if (stage == Stage::preparing)
            clock.advance(1h);
        TestWait::settle();
        replies.text(u"!"_s);
        replies.finish();
    }
    void end(Stage stage, End end)
    {
        switch (end) {
        case End::dropped:
            return ghosts.dropGhost();
        case End::kept:
            ghosts.keepGhost();
            return;
        case End::leftAndDropped:
        case End::leftAndKept:
            chat.newConversation();
            return ghosts.answer(ghosts.questionId(), end == End::leftAndKept ? keep : drop);
        case End::savedWhenDone:
        case End::savedWhenStopped:
            ghosts.toggleGhostMode();
            answer(save);
            EXPECT_TRUE(ghosts.isOn());
            chat.newConversation(); // what is asked is settled by the turn's end
            return end == End::savedWhenDone ? finish(stage) : chat.stopResponding();
        case End::quit:
            ghosts.keepGhost();
            chat.endTurns();
        }
    }

    std::shared_ptr<TestWait::Outcome<ApprovalAnswer>> approval =
        std::make_shared<TestWait::Outcome<ApprovalAnswer>>();
};

TEST_P(GhostRaceTest, SavedWordsAreWholeAndNoStoreOutlivesItsTurn)
{
    const auto [stage, how] = GetParam();
    beginGhost();
    const QUuid ghost = chat.conversation()->id();
    reach(stage);
    const auto reply = lastMessage();
    const bool isDropped = how == End::dropped || how == End::leftAndDropped;
    end(stage, how);
    EXPECT_EQ(chat.stores().retiredCount(), isDropped ? 1U : 0U) << "while its turn ends";
    TestWait::settle();
    clock.advance(2h);
    EXPECT_EQ(chat.stores().retiredCount(), 0U);
    EXPECT_EQ(chat.turnsInFlight(), 0);
    EXPECT_FALSE(ghosts.isOn() || isAsking() || chat.isResponding() || chat.hasApproval() ||
                 chat.hasBanner());
    EXPECT_EQ(approval->done, stage == Stage::approval);

    const bool isDone = how == End::savedWhenDone;
    const QString words = stage == Stage::streaming || stage == Stage::approval ? u"one two"_s : QString();
    EXPECT_EQ(reply->status(), isDone ? MessageStatus::delivered : MessageStatus::cancelled);
    const Rows rows{{true, u"question"_s}, {false, words + (isDone ? u"!"_s : QString())}};
    EXPECT_EQ(savedRows(ghost), isDropped ? Rows{} : rows);
    if (!isDropped) {
        EXPECT_EQ(repository.find(ghost)->messages().back()->status(), reply->status());
    }
    EXPECT_FALSE(context.hasChanges());
    if (how == End::kept)
        chat.newConversation();
    settings.setBaseURLString(u"http://localhost:1/v1"_s);
    deliver(u"next"_s, u"fine"_s);
    EXPECT_EQ(transcript().size(), how == End::quit ? 4U : 2U);
}

INSTANTIATE_TEST_SUITE_P(
    Stages, GhostRaceTest,
    testing::Combine(testing::Values(Stage::preparing, Stage::waiting, Stage::streaming, Stage::approval),
                     testing::Values(End::dropped, End::kept, End::leftAndDropped, End::leftAndKept,
                                     End::savedWhenDone, End::savedWhenStopped, End::quit)));

} // namespace

} // namespace morvane
