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

TEST_F(ChatWindowTest, ItsButtonsAskAgainInPlaceOfAReplyWithoutAWordAndAddTheRestToOneThatHitItsLimit)
{
    const auto answerAndClick = [this](const QString &model, const QString &button) {
        chat().newConversation();
        useModel(model);
        say(u"Try me"_s);
        ASSERT_TRUE(turnEnds());
        const QString half = lastText();
        ASSERT_NE(item(button), nullptr) << model.toStdString();
        WindowDriver::click(item(button));
        ASSERT_TRUE(turnEnds());
        EXPECT_FALSE(chat().hasBanner());
        EXPECT_TRUE(lastText().startsWith(half));
        EXPECT_GT(lastText().size(), half.size()) << model.toStdString();
        EXPECT_EQ(chat().messages()->rowCount(), 2) << model.toStdString();
        EXPECT_FALSE(lastRow(MessageListModel::CanContinueRole).toBool());
    };
    answerAndClick(u"fail-once"_s, u"retry"_s);
    answerAndClick(u"length"_s, u"continueReply"_s);
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
