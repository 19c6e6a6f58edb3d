// What the person does to messages that stand in the chat: one that is said anew, another version, a
// deletion.

#include "view_models/ChatFixture.h"

#include "persistence/StoreFiles.h"
#include "support/FileSpy.h"

#include <QSignalSpy>
#include <QTemporaryDir>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Profile {
    QTemporaryDir home;
};

class MessageDeskTest : protected Profile, public ChatFixture {
protected:
    MessageDeskTest()
        : ChatFixture(StoreFiles::open(home.filePath(u"Morvane.store"_s)))
    {}

    [[nodiscard]] QString idAt(int row)
    {
        return chat.messages()->index(row).data(MessageListModel::MessageIdRole).toString();
    }
    [[nodiscard]] QString lastId() { return idAt(chat.messages()->rowCount() - 1); }
    [[nodiscard]] QString shown()
    {
        QStringList texts;
        for (const auto &[isUser, text] : transcript())
            texts += text;
        return texts.join(u' ');
    }
    // "2/3"
    [[nodiscard]] QString version()
    {
        return u"%1/%2"_s.arg(lastRow(MessageListModel::VersionRole).toInt())
            .arg(lastRow(MessageListModel::VersionCountRole).toInt());
    }
    // A process that is killed during the action leaves all of it or nothing, since it is one write.
    void atOnce(const std::function<void()> &action)
    {
        FileSpy spy(home.path());
        action();
        EXPECT_EQ(spy.steps(), QStringList({u"write Morvane.store-wal"_s, u"sync Morvane.store-wal"_s}));
        TestWait::settle();
    }
    void regenerate(const QString &answer)
    {
        atOnce([this] { chat.regenerate(); });
        replies.text(answer);
        replies.finish();
    }
    void edit(const QString &words)
    {
        chat.beginEdit(idAt(chat.messages()->lastQuestion()));
        chat.setDraft(words);
        atOnce([this] { chat.send(); });
    }
    void fail() { replies.fail(errorOf(ProviderError::ServerError{500})); }
    [[nodiscard]] std::int64_t stored() { return context.count<ChatMessage>(); }
};

TEST_F(MessageDeskTest, AReplyIsMadeAgainAndTheFormerOneKeptAndOnlyTheChosenOneIsSent)
{
    chat.setDraft(u"q"_s);
    {
        FileSpy spy(home.path());
        chat.send();
        EXPECT_TRUE(spy.steps().contains(u"sync Morvane.store-wal"_s)) << "before an answer is asked for";
    }
    TestWait::settle();
    replies.text(u"first"_s);
    replies.finish();
    const auto former = lastMessage();
    former->setPlaceRaw(u"verified-enclave"_s);
    const QSignalSpy reset(chat.messages(), &QAbstractItemModel::modelReset);
    QSignalSpy told(chat.messages(), &QAbstractItemModel::dataChanged);
    regenerate(u"second"_s);
    EXPECT_EQ(sentWords(), QStringList{u"q"_s});
    EXPECT_EQ(shown(), u"q second"_s);
    EXPECT_EQ(version(), u"2/2"_s);
    EXPECT_EQ(former->placeRaw(), u"verified-enclave"_s);
    EXPECT_EQ(lastMessage()->placeRaw(), u"this-mac"_s);

    chat.showVersion(lastId(), 1);
    EXPECT_EQ(version(), u"2/2"_s);
    told.clear();
    atOnce([this] { chat.showVersion(lastId(), -1); });
    EXPECT_EQ(shown(), u"q first"_s);
    EXPECT_EQ(version(), u"1/2"_s);
    ASSERT_EQ(told.count(), 1);
    EXPECT_EQ(told[0][0].toModelIndex().row(), 1);
    EXPECT_TRUE(reset.isEmpty()) << "the list stays where it is";
    deliver(u"more"_s, u"x"_s);
    EXPECT_EQ(sentWords(), (QStringList{u"q"_s, u"first"_s, u"more"_s}));
    EXPECT_EQ(chat.messages()->rowCount(), 4);

    send(u"last"_s); // nothing of it while a turn runs
    const QString question = idAt(chat.messages()->lastQuestion());
    chat.regenerate();
    chat.beginEdit(question);
    chat.deleteMessage(question);
    chat.showVersion(idAt(1), 1);
    EXPECT_EQ(shown(), u"q first more x last "_s);
    EXPECT_FALSE(chat.isEditing());
}

TEST_F(MessageDeskTest, ARetryJoinsTheVersionsOfTheReplyThatFailed)
{
    deliver(u"q"_s, u"first"_s);
    chat.regenerate();
    TestWait::settle();
    fail();
    EXPECT_EQ(version(), u"2/2"_s) << "the way back";
    chat.regenerate();
    EXPECT_FALSE(chat.isResponding()) << "that is what Retry is for";
    chat.retryLastTurn();
    TestWait::settle();
    replies.text(u"second"_s);
    replies.finish();
    EXPECT_EQ(shown(), u"q second"_s);
    EXPECT_EQ(version(), u"2/2"_s);
    chat.showVersion(lastId(), -1);
    EXPECT_EQ(shown(), u"q first"_s);
}

TEST_F(MessageDeskTest, TheLastQuestionIsEditedAndItsFormerWordsComeBackWithTheirReply)
{
    deliver(u"typo"_s, u"what"_s);
    chat.setDraft(u"draft"_s);
    chat.beginEdit(idAt(0));
    EXPECT_TRUE(chat.isEditing());
    EXPECT_EQ(chat.draft(), u"typo"_s);
    chat.setDraft(u"no"_s);
    chat.cancelEdit();
    EXPECT_EQ(chat.draft(), u"draft"_s);
    EXPECT_EQ(chat.conversation()->draft(), u"draft"_s) << "new words for a message are no draft";
    edit(u"topic"_s);
    EXPECT_EQ(chat.draft(), u"draft"_s);
    EXPECT_EQ(chat.title(), u"topic"_s);
    EXPECT_EQ(sentWords(), QStringList{u"topic"_s});
    EXPECT_EQ(replies.asked.back().userWords, u"topic"_s);
    replies.text(u"well"_s);
    replies.finish();
    regenerate(u"better"_s);
    for (const auto &[step, expected, number] :
         {std::tuple(-1, u"topic well"_s, u"2/3"_s), {-1, u"typo what"_s, u"1/3"_s}}) {
        atOnce([&, step = step] { chat.showVersion(lastId(), step); });
        EXPECT_EQ(shown(), expected);
        EXPECT_EQ(version(), number);
    }
    regenerate(u"who"_s); // an answer to the former words, made last
    EXPECT_EQ(shown(), u"typo who"_s);
    chat.showVersion(lastId(), -1);
    EXPECT_EQ(shown(), u"topic better"_s);
    deliver(u"next"_s, u"x"_s);
    chat.beginEdit(idAt(0));
    EXPECT_FALSE(chat.isEditing()) << "it is not the last";
}

TEST_F(MessageDeskTest, AnEditLeavesNothingBehindOfATurnWithoutAWord)
{
    send(u"typo"_s);
    fail();
    edit(u"topic"_s);
    EXPECT_EQ(stored(), 4) << "not before it has succeeded";
    replies.text(u"well"_s);
    replies.finish();
    EXPECT_EQ(version(), u"1/1"_s);
    EXPECT_EQ(stored(), 2);
    EXPECT_FALSE(context.hasChanges());
}

TEST_F(MessageDeskTest, WhatIsDeletedGoesWithAllItsVersionsAndComesBackUntilSomethingIsSaid)
{
    deliver(u"q1"_s, u"a1"_s);
    deliver(u"typo"_s, u"what"_s);
    edit(u"q2"_s);
    replies.text(u"a2"_s);
    replies.finish();
    deliver(u"q3"_s, u"a3"_s);
    const auto rows = transcript();
    const struct {
        int row;
        QString left;
        int shownGone;
        std::int64_t stored;
    } cases[] = {{0, u"q2 a2 q3 a3"_s, 2, 6},
                 {2, u"q1 a1 q3 a3"_s, 2, 4},
                 {3, u"q1 a1 q2 q3 a3"_s, 1, 5},
                 {5, u"q1 a1 q2 a2 q3"_s, 1, 7}};
    for (const auto &[row, left, shownGone, storedThen] : cases) {
        atOnce([&, row = row] { chat.deleteMessage(idAt(row)); });
        EXPECT_EQ(shown(), left);
        EXPECT_EQ(chat.deletedCount(), shownGone);
        EXPECT_EQ(stored(), storedThen);
        atOnce([this] { chat.undoDelete(); });
        EXPECT_EQ(transcript(), rows);
        EXPECT_EQ(chat.deletedCount(), 0);
    }
    chat.deleteMessage(lastId());
    deliver(u"q4"_s, u"a4"_s);
    chat.undoDelete();
    EXPECT_EQ(shown(), u"q1 a1 q2 a2 q3 q4 a4"_s);
}

TEST_F(MessageDeskTest, AChatKeepsTheMarkOfAPictureThatWasDeleted)
{
    chat.entries()->attachments()->hold(ImportedAttachment{.id = QUuid::createUuid(),
                                                           .filename = u"cat.jpg"_s,
                                                           .fileExtension = u"image"_s,
                                                           .imageData = QByteArray("jpeg")});
    send(u"what is it?"_s);
    replies.text(u"A cat"_s);
    replies.finish();
    regenerate(u"A dog"_s);
    EXPECT_EQ(replies.asked.back().request.messages.back().imageDataURLs.size(), 1) << "it is sent again";
    chat.deleteMessage(idAt(0));
    EXPECT_EQ(stored(), 0);
    deliver(u"hello"_s, u"hi"_s);
    EXPECT_EQ(replies.asked.back().request.configuration.carrying, SensitiveDataSet(SensitiveData::image));
}

} // namespace

} // namespace morvane
