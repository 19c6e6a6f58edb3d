#include "view_models/ChatFixture.h"

#include <QRegularExpression>
#include <QSignalSpy>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using ChatTurnTest = ChatFixture;

TEST_F(ChatTurnTest, SendsTheTrimmedDraftAndStoresTheStreamedReply)
{
    chat.setDraft(u" \n "_s);
    EXPECT_FALSE(chat.canSend());
    chat.send();
    EXPECT_EQ(chat.messages()->rowCount(), 0);
    const QSignalSpy finished(&chat, &ChatViewModel::replyFinished);

    chat.showError(errorOf(ProviderError::Plain::rateLimited));
    send(u"  hello \n"_s);
    EXPECT_FALSE(chat.hasBanner());
    EXPECT_TRUE(chat.isResponding());
    EXPECT_EQ(chat.draft(), QString());
    chat.setDraft(u"next"_s);
    EXPECT_FALSE(chat.canSend());
    EXPECT_EQ(chat.turnsInFlight(), 1);
    EXPECT_EQ(companion.state(), CompanionState::thinking);
    EXPECT_EQ(lastMessage()->status(), MessageStatus::streaming);
    EXPECT_TRUE(indicates<ReplyIndicator::Dots>());
    EXPECT_EQ(sentWords(), QStringList{u"hello"_s});

    replies.yield(Agent::Thinking{});
    EXPECT_TRUE(indicates<ReplyIndicator::Thinking>());
    replies.text({});
    EXPECT_TRUE(indicates<ReplyIndicator::Thinking>()) << "an empty piece is no text";
    replies.text(u"Hi"_s);
    EXPECT_TRUE(indicates<ReplyIndicator::Streaming>());
    EXPECT_EQ(companion.state(), CompanionState::speaking);
    replies.text(u" there"_s);
    EXPECT_TRUE(finished.isEmpty());
    replies.finish();
    EXPECT_EQ(transcript(), (Rows{{true, u"hello"_s}, {false, u"Hi there"_s}}));
    EXPECT_EQ(lastMessage()->status(), MessageStatus::delivered);
    EXPECT_FALSE(lastRow(MessageListModel::RunningRole).toBool());
    EXPECT_FALSE(chat.isResponding());
    EXPECT_EQ(chat.turnsInFlight(), 0);
    EXPECT_EQ(companion.state(), CompanionState::idle);
    EXPECT_EQ(chat.title(), u"hello"_s);
    EXPECT_EQ(chat.lastAnswer(), u"Hi there"_s);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.front().front(), u"Hi there"_s);
    EXPECT_EQ(heard, QStringList{u"hushed"_s});
    EXPECT_FALSE(repository.context().hasChanges());

    deliver(u"and?"_s, u"So"_s);
    EXPECT_EQ(sentWords(), (QStringList{u"hello"_s, u"Hi there"_s, u"and?"_s})) << "no placeholder";
    chat.conversation()->setRollingSummary(u"They greeted."_s);
    settings.setMaxContextMessages(4);
    send(u"more"_s);
    EXPECT_TRUE(sentWords().front().endsWith(u"They greeted."_s));
}

TEST_F(ChatTurnTest, StoresAtMostOncePer80MillisecondsAndLosesNoPiece)
{
    send(u"count"_s);
    const auto reply = lastMessage();
    const QSignalSpy told(chat.messages(), &MessageListModel::dataChanged);
    clock.advance(80ms);
    replies.text(u"a"_s);
    EXPECT_EQ(reply->content(), u"a"_s);
    EXPECT_EQ(told.back()[0].toModelIndex().row(), 1) << "the row that is drawn is told";
    clock.advance(10ms);
    replies.text(u"b"_s);
    clock.advance(40ms);
    replies.text(u"c"_s);
    clock.advance(29ms);
    EXPECT_EQ(reply->content(), u"a"_s) << "written again within the interval";
    clock.advance(1ms);
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
    EXPECT_EQ(chat.turnsInFlight(), 2);
    TestWait::settle();
    EXPECT_EQ(chat.turnsInFlight(), 1);
    EXPECT_EQ(stopped->status(), MessageStatus::cancelled);
    EXPECT_EQ(stopped->content(), u"partial"_s);
    EXPECT_EQ(stopped->errorMessage(), std::nullopt);
    EXPECT_TRUE(chat.isResponding()) << "the stopped turn's end must not end the next one";
    EXPECT_EQ(companion.state(), CompanionState::thinking);
    EXPECT_FALSE(chat.hasBanner());
    replies.yield(Agent::ToolStarted{{u"1"_s, u"search_web"_s, uR"({"query":"x"})"_s}});
    chat.stopResponding();
    TestWait::settle();
    EXPECT_TRUE(replies.isAbandoned());
    EXPECT_EQ(lastMessage()->toolSummary(), u"Searching the web…"_s);
    EXPECT_EQ(lastRow(MessageListModel::ToolStatesRole), QStringList(u"stopped"_s));
    EXPECT_TRUE(lastRow(MessageListModel::CancelledRole).toBool());
    EXPECT_FALSE(lastRow(MessageListModel::RunningRole).toBool());
    EXPECT_FALSE(repository.context().hasChanges());
}

TEST_F(ChatTurnTest, AFailureIsStoredShownAndRetriedUnderTheFailedReply)
{
    deliver(u"before"_s, u"fine"_s);
    send(u"question"_s);
    replies.text(u"half"_s);
    replies.fail(errorOf(ProviderError::ServerError{500}));
    const auto failed = lastMessage();
    EXPECT_EQ(failed->status(), MessageStatus::failed);
    EXPECT_EQ(failed->content(), u"half"_s);
    EXPECT_EQ(failed->errorMessage(), u"The AI provider returned an error (HTTP 500)."_s);
    EXPECT_TRUE(chat.banner().retryable);
    EXPECT_EQ(companion.state(), CompanionState::error);
    clock.advance(1999ms);
    EXPECT_EQ(companion.state(), CompanionState::error);
    clock.advance(1ms);
    EXPECT_EQ(companion.state(), CompanionState::idle);

    chat.retryLastTurn();
    chat.retryLastTurn();
    TestWait::settle();
    ASSERT_EQ(replies.asked.size(), 3U) << "one retry at a time";
    EXPECT_FALSE(chat.hasBanner());
    EXPECT_EQ(failed->errorMessage(), std::nullopt);
    EXPECT_EQ(sentWords(), (QStringList{u"before"_s, u"fine"_s, u"question"_s})) << "not the failed half";
    replies.text(u"whole"_s);
    replies.finish();
    EXPECT_EQ(transcript().size(), 5U);
    EXPECT_EQ(transcript().back(), (std::pair{false, u"whole"_s}));

    chat.showError(errorOf(ProviderError::Plain::rateLimited));
    chat.retryLastTurn();
    TestWait::settle();
    EXPECT_FALSE(chat.hasBanner()) << "nothing failed, so only the banner goes";
    EXPECT_EQ(replies.asked.size(), 3U);
}

TEST_F(ChatTurnTest, EndingsWithoutAUsableReply)
{
    const struct {
        std::exception_ptr error; // null: the stream ends normally without text
        MessageStatus status;
        QString banner; // empty for none
        CompanionState companion;
    } rows[] = {
        {nullptr, MessageStatus::failed, u"The AI provider returned an empty response."_s,
         CompanionState::error},
        {errorOf(ProviderError::Plain::cancelled), MessageStatus::cancelled, {}, CompanionState::idle},
        {std::make_exception_ptr(CancelledError()), MessageStatus::cancelled, u"Something went wrong."_s,
         CompanionState::error},
        {std::make_exception_ptr(std::runtime_error("x")), MessageStatus::failed, u"Something went wrong."_s,
         CompanionState::error},
    };
    const QSignalSpy finished(&chat, &ChatViewModel::replyFinished);
    for (const auto &row : rows) {
        send(u"q"_s);
        EXPECT_FALSE(sentWords().contains(QString())) << "a reply without text is no part of the history";
        replies.yield(Agent::ToolStarted{{u"1"_s, u"remember"_s, u"{}"_s}});
        if (row.error)
            replies.fail(row.error);
        else
            replies.finish();
        EXPECT_EQ(lastMessage()->status(), row.status);
        EXPECT_TRUE(lastMessage()->errorMessage().has_value());
        EXPECT_EQ(chat.banner().message, row.banner);
        EXPECT_EQ(companion.state(), row.companion);
        EXPECT_FALSE(chat.isResponding());
        chat.dismissBanner();
        EXPECT_FALSE(chat.hasBanner());
        companion.reset();
    }
    EXPECT_TRUE(finished.isEmpty());

    settings.setBaseURLString(u"https://service.example/v1"_s);
    settings.setModel(QString());
    send(u"anyone?"_s);
    EXPECT_EQ(replies.asked.size(), std::size(rows)) << "it fails before anybody is asked";
    EXPECT_EQ(lastMessage()->status(), MessageStatus::failed);
    EXPECT_EQ(chat.banner().message, u"No AI provider is configured."_s);
    EXPECT_FALSE(chat.isResponding());
}

TEST_F(ChatTurnTest, OnlyASilentRuntimeOfThisMachineIsOfferedToBeStartedAgain)
{
    const struct {
        QString server;
        ProviderError::Plain error;
        bool offers;
    } rows[] = {
        {localModel.baseURL(), ProviderError::Plain::networkTimeout, true},
        {localModel.baseURL(), ProviderError::Plain::networkUnavailable, true},
        {localModel.baseURL(), ProviderError::Plain::emptyResponse, false},
        {u"http://localhost:1234/v1"_s, ProviderError::Plain::networkTimeout, false},
        {u"https://service.example/v1"_s, ProviderError::Plain::networkTimeout, false},
    };
    for (const auto &row : rows) {
        settings.setBaseURLString(row.server);
        send(u"q"_s);
        replies.fail(errorOf(row.error));
        EXPECT_EQ(chat.banner().mayRestartLocalModel(), row.offers) << row.server.toStdString();
    }
    chat.restartLocalModel();
    EXPECT_FALSE(chat.hasBanner());
    Q_EMIT localModel.restarted(false);
    EXPECT_EQ(chat.banner().message, u"Local AI didn't start back up."_s);
}

TEST_F(ChatTurnTest, WhatCannotBeSavedIsSaidAndTheTurnGoesOn)
{
    deliver(u"q"_s, u"a"_s);
    deliver(u"long"_s, QString(1'000'000, u'w'));
    EXPECT_EQ(chat.banner().message, u"The conversation could not be saved."_s);
    EXPECT_EQ(lastMessage()->status(), MessageStatus::delivered);
    EXPECT_FALSE(chat.isResponding());
    const auto tooLong = lastMessage();
    send(u"more"_s);
    EXPECT_TRUE(chat.hasBanner()) << "neither could the question be";
    EXPECT_EQ(sentWords().back(), u"more"_s);

    ChatViewModel other(services); // with no chat to write to, and no room for a new one
    other.entries()->attachments()->hold(
        ImportedAttachment{.id = QUuid::createUuid(), .filename = u"kept.txt"_s});
    other.setDraft(u"keep me"_s);
    other.send();
    EXPECT_EQ(other.draft(), u"keep me"_s);
    chat.retry();
    EXPECT_TRUE(chat.hasBanner()) << "nothing has changed";
    tooLong->setContent(u"short"_s);
    chat.retry();
    EXPECT_FALSE(chat.hasBanner());
    EXPECT_FALSE(repository.context().hasChanges());
    other.send();
    EXPECT_EQ(other.messages()->messages().at(0)->attachmentName(), u"kept.txt"_s);
    other.endTurns();
}

TEST_F(ChatTurnTest, ContinueAppendsToTheSameReplyAndStoresNoPrompt)
{
    send(u"tell me all"_s);
    replies.text(u"First half,"_s);
    replies.yield(Agent::TruncatedByTokenLimit{});
    const auto cut = lastMessage();
    const QString id = lastRow(MessageListModel::MessageIdRole).toString();
    EXPECT_FALSE(lastRow(MessageListModel::CanContinueRole).toBool()) << "not while the turn runs";
    chat.continueReply(id);
    EXPECT_EQ(chat.turnsInFlight(), 1);
    replies.finish();
    ASSERT_TRUE(lastRow(MessageListModel::CanContinueRole).toBool());
    deliver(u"later"_s, u"words"_s);

    chat.continueReply(id);
    TestWait::settle();
    EXPECT_EQ(
        sentWords(),
        (QStringList{
            u"tell me all"_s, u"First half,"_s,
            u"Continue your previous answer exactly where it stopped. Do not repeat anything you already "
            "wrote, do not summarize it, just carry on."_s}))
        << "nothing that came later";
    EXPECT_EQ(replies.asked.back().request.configuration.maxOutputTokens, 8192);
    EXPECT_TRUE(replies.asked.back().userWords.startsWith(u"Continue your previous answer"_s));
    replies.text(u" second half."_s);
    replies.finish();
    EXPECT_EQ(cut->content(), u"First half, second half."_s);
    EXPECT_EQ(transcript().size(), 4U);
    EXPECT_FALSE(cut->hitTokenLimit());
    chat.continueReply(id);
    EXPECT_EQ(chat.turnsInFlight(), 0) << "the flag is spent";
}

TEST_F(ChatTurnTest, ThePersonHearsOfTheEnd)
{
    settings.setVoiceOutputEnabled(true);
    deliver(u"q"_s, u"read me"_s);
    EXPECT_EQ(heard, (QStringList{u"hushed"_s, u"aloud read me"_s}));
    EXPECT_EQ(companion.state(), CompanionState::speaking);
    clock.advance(3s);
    TestWait::settle();
    EXPECT_EQ(companion.state(), CompanionState::idle);
    deliver(u"again"_s, u"read me too"_s);
    send(u"quick"_s);
    clock.advance(3s);
    TestWait::settle();
    EXPECT_EQ(companion.state(), CompanionState::thinking) << "speech that was cut short ends nothing";
    chat.stopResponding();

    settings.setVoiceOutputEnabled(false);
    chat.setWindowInFront(false);
    deliver(u"long question"_s, u"secret answer"_s);
    EXPECT_EQ(companion.state(), CompanionState::notification);
    clock.advance(2s);
    EXPECT_EQ(companion.state(), CompanionState::idle);
    send(u"again"_s);
    replies.fail(errorOf(ProviderError::Plain::rateLimited));
    EXPECT_EQ(
        heard.filter(QRegularExpression(u"^(ready|failed)"_s)),
        (QStringList{u"ready q"_s,
                     u"failed The AI provider is rate-limiting requests.|Wait a moment and try again."_s}));
    const QUuid first = chat.conversation()->id();
    const QString firstId = chat.conversationId();
    desktop.read = {};
    chat.newConversation();
    EXPECT_TRUE(desktop.read.isNull()) << "nobody looks";
    chat.setWindowInFront(true);
    EXPECT_EQ(desktop.read, chat.conversation()->id());
    chat.open(firstId);
    EXPECT_EQ(desktop.read, first);
}

TEST_F(ChatTurnTest, ChatsAreOpenedRenamedAndRemovedAndATurnStaysInItsOwn)
{
    const QSignalSpy opened(&chat, &ChatViewModel::conversationChanged);
    const QSignalSpy listed(&chat, &ChatViewModel::conversationsChanged);
    send(u"first chat"_s);
    const auto reply = lastMessage();
    const QString firstId = chat.conversationId();
    chat.open(firstId);
    chat.open(u"no chat's id"_s);
    EXPECT_TRUE(chat.isResponding()) << "it is open already, and the other is not there";
    chat.showError(errorOf(ProviderError::Plain::rateLimited));
    chat.newConversation();
    TestWait::settle();
    EXPECT_EQ(reply->status(), MessageStatus::cancelled);
    EXPECT_EQ(chat.messages()->rowCount(), 0);
    EXPECT_FALSE(chat.hasBanner());
    EXPECT_NE(chat.conversationId(), firstId);
    chat.newConversation();
    EXPECT_EQ(repository.count(), 2) << "an empty chat is used again";

    const auto openedBefore = opened.count();
    const auto listedBefore = listed.count();
    chat.rename(firstId, u"Another"_s);
    EXPECT_EQ(opened.count(), openedBefore) << "it is not open";
    EXPECT_EQ(listed.count(), listedBefore + 1);
    chat.open(firstId);
    EXPECT_EQ(chat.messages()->rowCount(), 2);
    EXPECT_EQ(chat.title(), u"Another"_s);
    chat.rename(firstId, u"Third"_s);
    EXPECT_EQ(opened.count(), openedBefore + 2);
    chat.entries()->attachments()->hold(ImportedAttachment{.id = QUuid::createUuid()});
    chat.setWindowInFront(false);
    desktop.read = {};
    chat.remove(firstId);
    EXPECT_FALSE(chat.canSend()) << "what was attached there";
    EXPECT_EQ(desktop.read, QUuid(firstId)) << "what the desktop shows of it goes as well";
    EXPECT_NE(chat.conversationId(), firstId);
    EXPECT_EQ(repository.count(), 1);
}

TEST_F(ChatTurnTest, TheControllerMayDieMidway)
{
    auto other = std::make_unique<ChatViewModel>(services);
    other->openAtStart();
    other->sendMessage(u"q"_s, std::nullopt);
    TestWait::settle();
    replies.text(u"piece"_s);
    other.reset();
    replies.text(u"late"_s);
    clock.advance(1s);
    EXPECT_TRUE(replies.isAbandoned());
}

TEST_F(ChatTurnTest, ALockedVaultLosesNoTurn)
{
    sealing->setLocked(true);
    deliver(u"hidden"_s, u"reply"_s);
    sealing->setLocked(false);
    EXPECT_EQ(transcript(), (Rows{{true, QString()}, {false, QString()}}))
        << "dropped, never stored readable";
    EXPECT_FALSE(chat.isResponding());
}

} // namespace

} // namespace morvane
