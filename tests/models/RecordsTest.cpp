#include "models/AppAppearance.h"
#include "models/ChatTextSize.h"
#include "models/Conversation.h"
#include "models/ConversationRetention.h"
#include "models/ImportedDocument.h"
#include "models/ShortcutPreset.h"
#include "support/FakeFieldSealing.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class RecordsTest : public testing::Test {
protected:
    std::shared_ptr<ChatMessage> message(const QString &content = u"hello"_s, qint64 milliseconds = 0) const
    {
        return ChatMessage::create(sealing,
                                   {.id = QUuid::createUuid(),
                                    .role = MessageRole::user,
                                    .content = content,
                                    .createdAt = QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC),
                                    .status = MessageStatus::delivered,
                                    .attachmentName = u"notes.txt"_s});
    }

    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
};

template <typename Enum>
void expectTexts(const QStringList &texts)
{
    ASSERT_EQ(static_cast<qsizetype>(rawTexts<Enum>.size()), texts.size());
    for (qsizetype i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(rawText(static_cast<Enum>(i)), texts[i]);
        EXPECT_EQ(fromRawText<Enum>(texts[i]), static_cast<Enum>(i));
        EXPECT_EQ(fromRawText<Enum>(texts[i].toUpper()), std::nullopt);
    }
}

TEST(RawTextTest, CasesAreStoredUnderTheirNames)
{
    expectTexts<MessageRole>({u"user"_s, u"assistant"_s, u"system"_s});
    expectTexts<MessageStatus>({u"pending"_s, u"streaming"_s, u"delivered"_s, u"failed"_s, u"cancelled"_s});
    expectTexts<ConversationRetention>({u"forever"_s, u"ninetyDays"_s, u"thirtyDays"_s, u"sevenDays"_s});
    expectTexts<ChatTextSize>({u"small"_s, u"medium"_s, u"large"_s});
    expectTexts<AppAppearance>({u"system"_s, u"light"_s, u"dark"_s, u"gallery"_s});
    expectTexts<ShortcutPreset>({u"optionSpace"_s, u"controlSpace"_s, u"commandShiftSpace"_s, u"optionC"_s,
                                 u"optionV"_s, u"functionF13"_s, u"disabled"_s});
    EXPECT_EQ(retentionInterval(ConversationRetention::ninetyDays), std::chrono::seconds(7'776'000));
    EXPECT_EQ(retentionInterval(ConversationRetention::thirtyDays), std::chrono::seconds(2'592'000));
    EXPECT_EQ(retentionInterval(ConversationRetention::sevenDays), std::chrono::seconds(604'800));
    EXPECT_EQ(retentionInterval(ConversationRetention::forever), std::nullopt);
}

TEST_F(RecordsTest, TextsAreSealedFromTheStart)
{
    const auto stored = message();
    EXPECT_TRUE(FakeFieldSealing::isSealed(stored->sealedContent()));
    EXPECT_TRUE(FakeFieldSealing::isSealed(*stored->columns().sealedAttachmentName));
    EXPECT_EQ(stored->content(), u"hello"_s);
    EXPECT_EQ(stored->attachmentName(), u"notes.txt"_s);

    const auto document = ImportedDocument::create(sealing, {.filename = u"plan.pdf"_s});
    EXPECT_TRUE(FakeFieldSealing::isSealed(document->columns().sealedFilename));
    EXPECT_EQ(document->filename(), u"plan.pdf"_s);

    const auto conversation =
        Conversation::create(sealing, {.title = u"Trip"_s, .rollingSummary = u"So far"_s});
    EXPECT_TRUE(FakeFieldSealing::isSealed(conversation->columns().sealedTitle));
    EXPECT_EQ(conversation->rollingSummary(), u"So far"_s);
}

TEST_F(RecordsTest, ATextThatCannotBeSealedIsLostAtCreationAndKeepsItsFormerValueLater)
{
    const auto former = message(u"former"_s);
    former->appendToolLine(u"one"_s);
    sealing->setLocked(true);

    const auto created = message(u"new"_s);
    EXPECT_EQ(created->sealedContent(), QString());
    EXPECT_EQ(created->columns().sealedAttachmentName, QString());

    former->setContent(u"changed"_s);
    former->setErrorMessage(u"error"_s);
    former->appendToolLine(u"two"_s);
    former->replaceLastToolLine(u"three"_s);
    EXPECT_EQ(former->content(), QString()); // unreadable for now
    sealing->setLocked(false);
    EXPECT_EQ(former->content(), u"former"_s);
    EXPECT_EQ(former->errorMessage(), std::nullopt);
    EXPECT_EQ(former->toolSummary(), u"one"_s);

    former->setErrorMessage(u"error"_s);
    sealing->setLocked(true);
    former->setErrorMessage(std::nullopt); // needs no key
    EXPECT_EQ(former->columns().sealedErrorMessage, std::nullopt);
}

TEST_F(RecordsTest, UnknownRawTextsReadAsTold)
{
    const ChatMessage odd(sealing, {.roleRaw = u"Assistant"_s, .statusRaw = u"paused"_s});
    EXPECT_EQ(odd.role(), MessageRole::user);
    EXPECT_EQ(odd.knownRole(), std::nullopt);
    EXPECT_EQ(odd.status(), MessageStatus::delivered);
    EXPECT_FALSE(odd.hitTokenLimit());
}

TEST_F(RecordsTest, ToolLinesKeepTheLastEight)
{
    const auto reply = message();
    reply->replaceLastToolLine(u"0"_s);
    EXPECT_EQ(reply->toolSummary(), u"0"_s);
    reply->replaceLastToolLine(u"1"_s);
    for (int line = 2; line <= 9; ++line)
        reply->appendToolLine(QString::number(line));
    EXPECT_EQ(reply->toolSummary(), u"2\n3\n4\n5\n6\n7\n8\n9"_s);
    reply->replaceLastToolLine(u"last"_s);
    EXPECT_EQ(reply->toolSummary(), u"2\n3\n4\n5\n6\n7\n8\nlast"_s);
}

TEST_F(RecordsTest, MessagesOfOneMomentKeepTheOrderTheyWereAddedIn)
{
    const auto conversation = Conversation::create(sealing, {.id = QUuid::createUuid(), .title = u"T"_s});
    for (const auto &[text, moment] : {std::pair(u"c"_s, 2), {u"a"_s, 1}, {u"d"_s, 2}, {u"b"_s, 1}})
        conversation->append(message(text, moment));
    QString order;
    for (const auto &one : conversation->orderedMessages())
        order += one->content();
    EXPECT_EQ(order, u"abcd"_s);
    EXPECT_EQ(conversation->messages().front()->content(), u"c"_s);
}

TEST_F(RecordsTest, RevisionTellsWhenAFieldChanged)
{
    const auto reply = message();
    const auto before = reply->revision();
    reply->setStatus(MessageStatus::delivered); // as it was
    EXPECT_EQ(reply->revision(), before);
    reply->setContent(u"more"_s);
    EXPECT_GT(reply->revision(), before);
}

} // namespace

} // namespace morvane
