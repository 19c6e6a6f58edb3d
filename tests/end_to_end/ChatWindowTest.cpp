#include "attestation/ProofLedger.h"
#include "end_to_end/AppFixture.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "support/TextForms.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/SourceMenuViewModel.h"
#include "view_models/settings/NetworkLedgerViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"

#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ChatWindowTest = AppFixture;

TEST_F(ChatWindowTest, ATypedMessageBringsAStreamedReplyThatIsThereAfterARestart)
{
    say(u"Hello there"_s);
    ASSERT_TRUE(turnEnds());
    const QString reply = lastText();
    EXPECT_TRUE(reply.contains(u"practice server"_s)) << reply.toStdString();
    EXPECT_EQ(chat().title(), u"Hello there"_s);
    ASSERT_EQ(server.chats().size(), 1U);
    const QJsonObject body = server.chats().front().json();
    EXPECT_TRUE(body.value("stream"_L1).toBool());
    EXPECT_EQ(body.value("messages"_L1).toArray().last().toObject().value("content"_L1), u"Hello there"_s);
    EXPECT_EQ(body.value("purpose"_L1), u"chat"_s);

    auto &ledger = *state->presentation().networkLedger;
    ledger.setWatching(true);
    ASSERT_EQ(ledger.rowCount(), static_cast<int>(server.requests().size())) << "questions about the server";
    EXPECT_EQ(ledger.index(0).data(NetworkLedgerViewModel::OutcomeRole), u"HTTP 200"_s);
    EXPECT_EQ(ledger.index(0).data(NetworkLedgerViewModel::PlaceRole), u"This computer"_s);

    stop();
    start();
    EXPECT_EQ(state->presentation().conversations->rowCount(), 1);
    EXPECT_EQ(chat().title(), u"Hello there"_s) << "a start opens what was open";
    EXPECT_EQ(lastText(), reply);
    EXPECT_EQ(lastRow(MessageListModel::PlaceRole), u"This computer"_s);
}

// On the notice and the label before a word is sent, on the answer and in the ledger after.
TEST_F(ChatWindowTest, AModelThatAServerNearbyPassesOnIsACloudModelForEveryone)
{
    ModelServer passing(ModelServer::Interface::ollama,
                        {{.name = u"alias"_s, .remoteHost = u"https://elsewhere.invalid"_s}});
    state->storage().settings->setBaseURLString(passing.baseUrl());
    useModel(u"alias"_s);
    WindowDriver::type(window(), u"H"_s);
    const SourceMenuViewModel &source = *state->presentation().sources;
    ASSERT_TRUE(WindowDriver::eventually(
        [&] { return source.warning() == u"ollama.com can read what you send."_s; }));
    EXPECT_EQ(source.name(), u"alias · Ollama's cloud"_s);
    EXPECT_EQ(passing.requests().size(), 1U) << "for its list, and for nothing else";
    WindowDriver::press(window(), Qt::Key_Return);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(lastRow(MessageListModel::PlaceRole), u"Ollama's cloud"_s);
    EXPECT_EQ(state->assistant().proofs->snapshot().entries.back().place,
              (ProofLedger::Place{ProofLedger::Place::Kind::ollamaCloud, u"alias"_s, {}}));
}

TEST_F(ChatWindowTest, EscapeStopsAtEachStage)
{
    for (const auto &model : {u"stall-before-headers"_s, u"stall-mid-stream"_s}) {
        useModel(model);
        const auto before = server.chats().size();
        say(u"Take your time"_s);
        ASSERT_TRUE(WindowDriver::eventually([&] { return server.chats().size() > before; }));
        const bool sendsFirst = model == "stall-mid-stream"_L1;
        ASSERT_TRUE(WindowDriver::eventually([&] { return !sendsFirst || !lastText().isEmpty(); }));
        const QString arrived = lastText();

        QTest::keyClick(window(), Qt::Key_Escape);
        ASSERT_TRUE(turnEnds()) << model.toStdString();
        EXPECT_TRUE(lastRow(MessageListModel::CancelledRole).toBool());
        EXPECT_TRUE(lastText().startsWith(arrived)) << "what had arrived stays, and more may have by then";
        EXPECT_FALSE(chat().hasBanner());
        server.awaitEnded(server.requests().size());
        EXPECT_TRUE(server.chats().back().clientLeft);
    }
}

TEST_F(ChatWindowTest, RetryOnTheBannerAsksAgainInPlaceOfAReplyWithoutAWord)
{
    useModel(u"fail-once"_s);
    say(u"Try me"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(lastRow(MessageListModel::FailedRole).toBool());
    auto *retry = item(u"retry"_s);
    ASSERT_NE(retry, nullptr);
    WindowDriver::click(retry);
    ASSERT_TRUE(turnEnds());
    EXPECT_FALSE(chat().hasBanner());
    EXPECT_FALSE(lastText().isEmpty());
    EXPECT_EQ(chat().messages()->rowCount(), 2);
}

TEST_F(ChatWindowTest, ContinueAddsTheRestToAReplyThatHitItsLimit)
{
    useModel(u"length"_s);
    say(u"A long one"_s);
    ASSERT_TRUE(turnEnds());
    const QString half = lastText();
    auto *more = item(u"continueReply"_s);
    ASSERT_NE(more, nullptr);
    WindowDriver::click(more);
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(lastText().startsWith(half));
    EXPECT_GT(lastText().size(), half.size());
    EXPECT_EQ(chat().messages()->rowCount(), 2);
    EXPECT_FALSE(lastRow(MessageListModel::CanContinueRole).toBool());
}

TEST_F(ChatWindowTest, NoWordOfASessionLiesReadableInAnyFile)
{
    const QStringList marked{u"MARKEDquestionWORDS"_s, u"MARKEDretitledCHAT"_s, u"MARKEDsecondQUESTION"_s};
    say(marked[0]);
    ASSERT_TRUE(turnEnds());
    chat().rename(chat().conversationId(), marked[1]);
    useModel(u"status-500"_s);
    say(marked[2]);
    ASSERT_TRUE(turnEnds());
    const QString reply = chat().messages()->index(1).data(MessageListModel::TextRole).toString();
    const QString error = chat().banner().message;

    int filesRead = 0;
    const auto search = [&] {
        for (QDirIterator files(profile.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
             files.hasNext();) {
            QFile file(files.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray contents = file.readAll();
            ++filesRead;
            for (const QString &text : marked + QStringList{reply.first(40), error}) {
                for (const QByteArray &form : formsOf(text))
                    EXPECT_FALSE(contents.contains(form))
                        << file.fileName().toStdString() << ": " << text.toStdString();
            }
        }
    };
    search(); // with the store open and its companions beside it
    stop();
    search();
    EXPECT_GE(filesRead, 4);
}

} // namespace

} // namespace morvane
