#include "view_models/ChatFixture.h"

#include "ai/contract/ProviderError.h"
#include "utils/text/Identifier.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Rows = std::vector<std::pair<bool, QString>>;

std::exception_ptr errorOf(ProviderError::Case reason)
{
    return std::make_exception_ptr(ProviderError(std::move(reason)));
}

class ChatTurnTest : public ChatFixture {
protected:
    void deliver(const QString &question, const QString &answer)
    {
        send(question);
        replies.text(answer);
        replies.finish();
    }
};

TEST_F(ChatTurnTest, SendsTheTrimmedDraftAndStoresTheStreamedReply)
{
    chat.setDraft(u" \n "_s);
    EXPECT_FALSE(chat.canSend());
    chat.send();
    EXPECT_EQ(chat.messages()->rowCount(), 0);

    send(u"  hello \n"_s);
    EXPECT_TRUE(chat.isResponding());
    EXPECT_FALSE(chat.canSend());
    EXPECT_EQ(chat.draft(), QString());
    EXPECT_EQ(chat.turnsInFlight(), 1);
    EXPECT_EQ(companion.state(), CompanionState::thinking);
    EXPECT_EQ(lastMessage()->status(), MessageStatus::streaming);
    EXPECT_EQ(replies.requests.back().messages.back(),
              (AIMessage{.role = AIMessage::Role::user, .content = u"hello"_s}));

    replies.text(u"Hi"_s);
    replies.text(u" there"_s);
    replies.finish();
    EXPECT_EQ(transcript(), (Rows{{true, u"hello"_s}, {false, u"Hi there"_s}}));
    EXPECT_EQ(lastMessage()->status(), MessageStatus::delivered);
    EXPECT_FALSE(chat.isResponding());
    EXPECT_EQ(chat.turnsInFlight(), 0);
    EXPECT_EQ(companion.state(), CompanionState::idle);
    EXPECT_EQ(chat.title(), u"hello"_s);
    EXPECT_TRUE(notifications.lines.isEmpty());
    EXPECT_FALSE(persistence->mainContext().hasChanges());
}

TEST_F(ChatTurnTest, StoresAtMostOncePer80MillisecondsAndLosesNoPiece)
{
    send(u"count"_s);
    const auto reply = lastMessage();
    clock.advance(80ms);
    replies.text(u"a"_s);
    EXPECT_EQ(reply->content(), u"a"_s);
    replies.text(u"b"_s);
    clock.advance(50ms);
    replies.text(u"c"_s);
    EXPECT_EQ(reply->content(), u"a"_s) << "written again within the interval";
    clock.advance(30ms);
    EXPECT_EQ(reply->content(), u"abc"_s) << "a piece held back waits no longer than the interval";
    replies.text(u"d"_s);
    replies.finish();
    EXPECT_EQ(reply->content(), u"abcd"_s);
}

TEST_F(ChatTurnTest, StopKeepsWhatArrivedAndLetsTheNextTurnRun)
{
    send(u"one"_s);
    const auto stopped = lastMessage();
    replies.text(u"partial"_s);
    chat.stopResponding();
    EXPECT_FALSE(chat.isResponding());
    EXPECT_EQ(companion.state(), CompanionState::idle);

    // The next turn begins before the stopped one has had a chance to end.
    chat.setDraft(u"two"_s);
    chat.send();
    TestWait::settle();
    EXPECT_EQ(stopped->status(), MessageStatus::cancelled);
    EXPECT_EQ(stopped->content(), u"partial"_s);
    EXPECT_TRUE(chat.isResponding()) << "the stopped turn's end must not end the next one";
    EXPECT_FALSE(chat.hasBanner());
    replies.text(u"second"_s);
    replies.finish();
    EXPECT_EQ(transcript(),
              (Rows{{true, u"one"_s}, {false, u"partial"_s}, {true, u"two"_s}, {false, u"second"_s}}));
}

TEST_F(ChatTurnTest, StopDropsTheReplysStream)
{
    send(u"one"_s);
    chat.stopResponding();
    TestWait::settle();
    EXPECT_TRUE(replies.isAbandoned());
    EXPECT_EQ(lastMessage()->status(), MessageStatus::cancelled);
    EXPECT_EQ(lastMessage()->errorMessage(), std::nullopt);
    EXPECT_TRUE(lastRow(MessageListModel::CancelledRole).toBool());
}

TEST_F(ChatTurnTest, AStopDuringAToolCallLeavesTheRunningLabel)
{
    send(u"look it up"_s);
    replies.yield(Agent::ToolStarted{{u"1"_s, u"search_web"_s, uR"({"query":"x"})"_s}});
    chat.stopResponding();
    TestWait::settle();
    EXPECT_EQ(lastMessage()->status(), MessageStatus::cancelled);
    EXPECT_EQ(lastMessage()->toolSummary(), u"Searching the web…"_s);
}

TEST_F(ChatTurnTest, AFailureIsStoredShownAndRetriedUnderTheFailedReply)
{
    send(u"question"_s);
    replies.text(u"half"_s);
    replies.fail(errorOf(ProviderError::ServerError{500}));
    EXPECT_EQ(lastMessage()->status(), MessageStatus::failed);
    EXPECT_EQ(lastMessage()->content(), u"half"_s);
    EXPECT_EQ(lastMessage()->errorMessage(), u"The AI provider returned an error (HTTP 500)."_s);
    EXPECT_TRUE(chat.banner().retryable);
    EXPECT_EQ(companion.state(), CompanionState::error);
    clock.advance(2s);
    EXPECT_EQ(companion.state(), CompanionState::idle);

    const auto failed = lastMessage();
    chat.retryLastTurn();
    TestWait::settle();
    EXPECT_FALSE(chat.hasBanner());
    EXPECT_EQ(failed->errorMessage(), std::nullopt);
    EXPECT_EQ(replies.requests.back().messages.size(), 2U)
        << "system prompt and question; not the failed half";
    replies.text(u"whole"_s);
    replies.finish();
    EXPECT_EQ(transcript(), (Rows{{true, u"question"_s}, {false, u"half"_s}, {false, u"whole"_s}}));
}

TEST_F(ChatTurnTest, RetryWithoutAFailedReplyOnlyClearsTheBanner)
{
    deliver(u"q"_s, u"a"_s);
    chat.showError(errorOf(ProviderError::Plain::rateLimited));
    chat.retryLastTurn();
    TestWait::settle();
    EXPECT_FALSE(chat.hasBanner());
    EXPECT_EQ(replies.requests.size(), 1U);
}

TEST_F(ChatTurnTest, EndingsWithoutAUsableReply)
{
    const struct {
        std::exception_ptr error; // null: the stream ends normally without text
        MessageStatus status;
        QString banner; // empty for none
    } rows[] = {
        {nullptr, MessageStatus::failed, u"The AI provider returned an empty response."_s},
        {errorOf(ProviderError::Plain::cancelled), MessageStatus::cancelled, {}},
        {std::make_exception_ptr(CancelledError()), MessageStatus::cancelled, u"Something went wrong."_s},
        {std::make_exception_ptr(std::runtime_error("x")), MessageStatus::failed, u"Something went wrong."_s},
    };
    for (const auto &row : rows) {
        send(u"q"_s);
        replies.yield(Agent::ToolStarted{{u"1"_s, u"remember"_s, u"{}"_s}});
        if (row.error)
            replies.fail(row.error);
        else
            replies.finish();
        EXPECT_EQ(lastMessage()->status(), row.status);
        EXPECT_EQ(chat.banner().message, row.banner);
        EXPECT_FALSE(chat.isResponding());
        chat.dismissBanner();
    }
}

TEST_F(ChatTurnTest, AnErrorWhilePreparingFailsTheTurnAndKeepsTheMessage)
{
    settings.setBaseURLString(u"https://service.example/v1"_s);
    settings.setModel(QString());
    send(u"anyone?"_s);
    EXPECT_TRUE(replies.requests.empty());
    EXPECT_EQ(lastMessage()->status(), MessageStatus::failed);
    EXPECT_EQ(chat.banner().message, u"No AI provider is configured."_s);
    EXPECT_EQ(transcript().front(), (std::pair{true, u"anyone?"_s}));
    EXPECT_FALSE(chat.isResponding());
}

TEST_F(ChatTurnTest, ContinueAppendsToTheSameReplyAndStoresNoPrompt)
{
    send(u"tell me all"_s);
    replies.text(u"First half,"_s);
    replies.yield(Agent::TruncatedByTokenLimit{});
    EXPECT_FALSE(lastRow(MessageListModel::CanContinueRole).toBool()) << "not while the turn runs";
    replies.finish();
    ASSERT_TRUE(lastRow(MessageListModel::CanContinueRole).toBool());

    const QString id = lastRow(MessageListModel::MessageIdRole).toString();
    chat.continueReply(id);
    TestWait::settle();
    EXPECT_EQ(
        replies.requests.back().messages.back().content,
        u"Continue your previous answer exactly where it stopped. Do not repeat anything you already wrote, "
        "do not summarize it, just carry on."_s);
    EXPECT_EQ(replies.requests.back().configuration.maxOutputTokens, 8192);
    replies.text(u" second half."_s);
    replies.finish();
    EXPECT_EQ(transcript(), (Rows{{true, u"tell me all"_s}, {false, u"First half, second half."_s}}));
    EXPECT_FALSE(lastRow(MessageListModel::CanContinueRole).toBool());
    chat.continueReply(id);
    EXPECT_EQ(replies.requests.size(), 2U) << "the flag is spent";
}

// An address in a document is none that the person typed, so its text must not pass for their words.
TEST_F(ChatTurnTest, ATurnsScopeIsItsChatAndThePersonsOwnWords)
{
    chat.setPendingAttachment(ImportedAttachment{.id = QUuid::createUuid(),
                                                 .filename = u"notes.txt"_s,
                                                 .fileExtension = u"txt"_s,
                                                 .text = u"See https://evil.example/"_s});
    send(u"Read https://typed.example/ too"_s);
    const auto expectScope = [this] {
        EXPECT_EQ(replies.scopes.back().key, u"chat:"_s + Identifier::text(chat.conversation()->id()));
        EXPECT_EQ(replies.scopes.back().userWords, u"Read https://typed.example/ too"_s);
    };
    expectScope();
    replies.fail(errorOf(ProviderError::ServerError{500}));
    chat.retryLastTurn();
    TestWait::settle();
    expectScope();
    replies.text(u"Half"_s);
    replies.yield(Agent::TruncatedByTokenLimit{});
    replies.finish();
    chat.continueReply(lastRow(MessageListModel::MessageIdRole).toString());
    TestWait::settle();
    ASSERT_EQ(replies.scopes.size(), 3U);
    EXPECT_TRUE(replies.scopes.back().userWords.startsWith(u"Continue your previous answer"_s));
}

TEST_F(ChatTurnTest, RetractionReachesTheRecordAtOnceAndBringsTheDotsBack)
{
    send(u"q"_s);
    replies.text(u"I can't 👩‍👧"_s);
    replies.yield(Agent::RetractText{1});
    EXPECT_EQ(lastMessage()->content(), u"I can't "_s);
    const auto *indicator = chat.messages()->indicator(lastMessage()->id());
    EXPECT_TRUE(std::holds_alternative<ReplyIndicator::Streaming>(indicator->state()));
    replies.yield(Agent::RetractText{500});
    EXPECT_EQ(lastMessage()->content(), QString());
    EXPECT_TRUE(std::holds_alternative<ReplyIndicator::Dots>(indicator->state()));
}

TEST_F(ChatTurnTest, ToolResultsLeaveLabelsAndTheFirstFiveSources)
{
    send(u"news"_s);
    const AIToolCall call{u"1"_s, u"search_web"_s, uR"({"query":"rain"})"_s};
    replies.yield(Agent::ToolStarted{call});
    replies.yield(Agent::ToolFinished{
        call,
        {.callID = u"1"_s,
         .name = u"search_web"_s,
         .content = u"https://a.example/1 https://b.example https://a.example/2 http://c.example "
                    "https://d.example https://e.example https://f.example"_s}});
    replies.yield(Agent::ToolStarted{{u"2"_s, u"read_web_page"_s, uR"({"url":"https://g.example/p"})"_s}});
    replies.yield(Agent::ToolFinished{{u"2"_s, u"read_web_page"_s, uR"({"url":"https://g.example/p"})"_s},
                                      {.content = u"Error: no"_s, .isError = true}});
    replies.text(u"Rain."_s);
    replies.finish();
    EXPECT_EQ(lastRow(MessageListModel::ToolLinesRole).toStringList(),
              (QStringList{u"Searched the web for “rain”"_s, u"Couldn't read g.example"_s}));
    EXPECT_EQ(lastRow(MessageListModel::SourceDomainsRole).toStringList(),
              (QStringList{u"a.example"_s, u"b.example"_s, u"c.example"_s, u"d.example"_s, u"e.example"_s}));
}

TEST_F(ChatTurnTest, AWindowInTheBackIsToldOfTheEndWithoutTheReplysText)
{
    chat.setWindowInFront(false);
    deliver(u"long question"_s, u"secret answer"_s);
    EXPECT_EQ(companion.state(), CompanionState::notification);
    clock.advance(2s);
    EXPECT_EQ(companion.state(), CompanionState::idle);
    send(u"again"_s);
    replies.fail(errorOf(ProviderError::Plain::rateLimited));
    EXPECT_EQ(
        notifications.lines,
        (QStringList{u"ready long question"_s,
                     u"failed The AI provider is rate-limiting requests.|Wait a moment and try again."_s}));
}

TEST_F(ChatTurnTest, AStoredUnfinishedReplyIsNeverDrawnAsRunning)
{
    send(u"q"_s);
    EXPECT_TRUE(lastRow(MessageListModel::RunningRole).toBool());
    EXPECT_FALSE(lastRow(MessageListModel::InterruptedRole).toBool());

    // The same store as a new process would find it: the row says streaming, no turn is at work.
    MessageListModel fresh(clock);
    fresh.setMessages(chat.messages()->messages());
    const auto row = fresh.index(fresh.rowCount() - 1);
    EXPECT_FALSE(row.data(MessageListModel::RunningRole).toBool());
    EXPECT_TRUE(row.data(MessageListModel::InterruptedRole).toBool());
}

TEST_F(ChatTurnTest, SwitchingChatsStopsTheTurnAndNeverTouchesTheOtherChat)
{
    send(u"first chat"_s);
    const auto reply = lastMessage();
    const QString firstId = chat.conversationId();
    chat.newConversation();
    TestWait::settle();
    EXPECT_EQ(reply->status(), MessageStatus::cancelled);
    EXPECT_EQ(chat.messages()->rowCount(), 0);
    EXPECT_NE(chat.conversationId(), firstId);
    chat.newConversation();
    EXPECT_EQ(repository.count(), 2) << "an empty chat is used again";
    chat.open(firstId);
    EXPECT_EQ(chat.messages()->rowCount(), 2);
    chat.remove(firstId);
    EXPECT_NE(chat.conversationId(), firstId);
    EXPECT_EQ(repository.count(), 1);
}

TEST_F(ChatTurnTest, TheControllerMayDieMidway)
{
    auto other = std::make_unique<ChatViewModel>(ChatViewModel::Services{.repository = repository,
                                                                         .router = router,
                                                                         .replies = replies,
                                                                         .settings = settings,
                                                                         .proofs = proofs,
                                                                         .companion = companion,
                                                                         .clock = clock});
    other->openAtStart();
    other->sendMessage(u"q"_s, std::nullopt);
    TestWait::settle();
    replies.yield(Agent::Text{u"piece"_s});
    other.reset();
    replies.yield(Agent::Text{u"late"_s});
    clock.advance(1s);
    EXPECT_TRUE(replies.isAbandoned());
}

TEST_F(ChatTurnTest, ALockedVaultLosesNoTurn)
{
    sealing->setLocked(true);
    send(u"hidden"_s);
    replies.text(u"reply"_s);
    replies.finish();
    sealing->setLocked(false);
    EXPECT_EQ(transcript(), (Rows{{true, QString()}, {false, QString()}}))
        << "dropped, never stored readable";
    EXPECT_FALSE(chat.isResponding());
}

TEST_F(ChatTurnTest, TheAnswersPlaceComesFromTheTurnsOwnProofRow)
{
    proofs.append(
        {.id = QUuid::createUuid(), .place = {ProofLedger::Place::Kind::ollamaCloud, u"old"_s, {}}});
    send(u"q"_s);
    proofs.append({.id = QUuid::createUuid(), .place = {ProofLedger::Place::Kind::thisMac, u"m"_s, {}}});
    replies.text(u"a"_s);
    replies.finish();
    EXPECT_EQ(lastRow(MessageListModel::PlaceRole), u"This Mac"_s);
    EXPECT_EQ(lastMessage()->placeRaw(), u"this-mac"_s);
}

} // namespace

} // namespace morvane
