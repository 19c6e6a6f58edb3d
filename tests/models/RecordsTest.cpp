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
        const auto moment = QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
        return ChatMessage::create(
            sealing, {{}, MessageRole::user, content, moment, MessageStatus::delivered, {}, u"notes.txt"_s});
    }

    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
};

template <typename Enum>
void expectTexts(const QString &texts)
{
    QStringList raw;
    for (std::size_t i = 0; i < rawTexts<Enum>.size(); ++i) {
        raw += rawText(static_cast<Enum>(i));
        EXPECT_EQ(fromRawText<Enum>(raw.last()), static_cast<Enum>(i));
        EXPECT_EQ(fromRawText<Enum>(raw.last().toUpper()), std::nullopt);
    }
    EXPECT_EQ(raw.join(u' '), texts);
}

TEST(RawTextTest, CasesAreStoredUnderTheirNames)
{
    expectTexts<MessageRole>(u"user assistant system"_s);
    expectTexts<MessageStatus>(u"pending streaming delivered failed cancelled"_s);
    expectTexts<ConversationRetention>(u"forever ninetyDays thirtyDays sevenDays"_s);
    expectTexts<ChatTextSize>(u"small medium large"_s);
    expectTexts<AppAppearance>(u"system light dark gallery"_s);
    expectTexts<ShortcutPreset>(
        u"optionSpace controlSpace commandShiftSpace optionC optionV functionF13 disabled"_s);
    using enum ConversationRetention;
    for (const auto &[retention, days] : {std::pair(ninetyDays, 90), {thirtyDays, 30}, {sevenDays, 7}})
        EXPECT_EQ(retentionInterval(retention), std::chrono::seconds(86'400 * days));
    EXPECT_EQ(retentionInterval(forever), std::nullopt);
}

TEST_F(RecordsTest, ATextThatCannotBeSealedIsLostAtCreationAndKeepsItsFormerValueLater)
{
    const auto former = message(u"former"_s);
    former->appendToolLine(u"one"_s);
    sealing->setLocked(true);
    const auto created = message(u"new"_s)->columns();
    EXPECT_EQ(created.sealedContent, QString());
    EXPECT_EQ(created.sealedAttachmentName, QString());
    const auto before = former->columns();
    former->setContent(u"changed"_s);
    former->setErrorMessage(u"error"_s);
    former->replaceLastToolLine(u"three"_s);
    EXPECT_TRUE(former->columns() == before);
    EXPECT_EQ(former->content(), QString()); // unreadable for now
    former->setAttachmentName(std::nullopt); // needs no key
    EXPECT_EQ(former->columns().sealedAttachmentName, std::nullopt);

    // Sealed from the start, when it can be.
    sealing->setLocked(false);
    const auto document = ImportedDocument::create(sealing, {.filename = u"plan.pdf"_s});
    const auto chat = Conversation::create(sealing, {.title = u"Trip"_s, .rollingSummary = u"So far"_s});
    const auto stored = message()->columns();
    const std::pair<QString, QString> texts[] = {{before.sealedContent, u"former"_s},
                                                 {*before.sealedToolSummary, u"one"_s},
                                                 {stored.sealedContent, u"hello"_s},
                                                 {*stored.sealedAttachmentName, u"notes.txt"_s},
                                                 {document->columns().sealedFilename, u"plan.pdf"_s},
                                                 {chat->columns().sealedTitle, u"Trip"_s},
                                                 {*chat->columns().sealedRollingSummary, u"So far"_s}};
    for (const auto &[sealed, opened] : texts) {
        EXPECT_TRUE(FakeFieldSealing::isSealed(sealed));
        EXPECT_EQ(sealing->open(sealed), opened);
    }
}

TEST_F(RecordsTest, AnUnknownRoleReadsAsThePersonsAndAnUnknownStatusAsDelivered)
{
    const ChatMessage odd(sealing, {.roleRaw = u"robot"_s, .statusRaw = u"odd"_s});
    EXPECT_EQ(odd.role(), MessageRole::user);
    EXPECT_EQ(odd.knownRole(), std::nullopt);
    EXPECT_EQ(odd.status(), MessageStatus::delivered);
    EXPECT_FALSE(odd.hitTokenLimit());
}

TEST_F(RecordsTest, ToolLinesKeepTheLastEightAndAChangeTellsByTheRevision)
{
    const auto reply = message();
    const auto before = reply->revision();
    reply->setStatus(MessageStatus::delivered); // as it was
    EXPECT_EQ(reply->revision(), before);
    reply->replaceLastToolLine(u"0"_s);
    EXPECT_GT(reply->revision(), before);
    EXPECT_EQ(reply->toolSummary(), u"0"_s);
    for (const QChar line : u"123456789"_s)
        reply->appendToolLine(line);
    EXPECT_EQ(reply->toolSummary(), u"2\n3\n4\n5\n6\n7\n8\n9"_s);
    reply->replaceLastToolLine(u"last"_s);
    EXPECT_EQ(reply->toolSummary(), u"2\n3\n4\n5\n6\n7\n8\nlast"_s);
}

TEST_F(RecordsTest, MessagesOfOneMomentKeepTheOrderTheyWereAddedIn)
{
    const auto chat = Conversation::create(sealing, {.title = u"T"_s});
    for (const auto &[text, moment] : {std::pair(u"c"_s, 2), {u"a"_s, 1}, {u"d"_s, 2}, {u"b"_s, 1}})
        chat->append(message(text, moment));
    QString order;
    for (const auto &one : chat->orderedMessages())
        order += one->content();
    EXPECT_EQ(order, u"abcd"_s);
    EXPECT_EQ(chat->messages().front()->content(), u"c"_s);
}

} // namespace

} // namespace morvane
