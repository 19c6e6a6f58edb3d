#include "models/AppAppearance.h"
#include "models/ChatTextSize.h"
#include "models/Conversation.h"
#include "models/ConversationRetention.h"
#include "models/ImportedDocument.h"
#include "models/ShortcutPreset.h"
#include "support/FakeFieldSealing.h"
#include "support/TestData.h"
#include "utils/text/UniversalTime.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class RecordsTest : public testing::Test {
protected:
    std::shared_ptr<ChatMessage> message(const QString &content = u"hello"_s, qint64 milliseconds = 0) const
    {
        const auto moment = UniversalTime::ofMilliseconds(milliseconds);
        return ChatMessage::create(
            sealing, {{}, MessageRole::user, content, moment, MessageStatus::delivered, {}, u"notes.txt"_s});
    }

    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
};

// The texts of all cases.
template <typename Enum>
std::string textsOf(const char *name)
{
    QStringList raw;
    for (std::size_t i = 0; i < rawTexts<Enum>.size(); ++i) {
        raw += rawText(static_cast<Enum>(i));
        EXPECT_EQ(fromRawText<Enum>(raw.last()), static_cast<Enum>(i));
        EXPECT_EQ(fromRawText<Enum>(raw.last().toUpper()), std::nullopt);
    }
    return name + (": " + raw.join(u' ').toStdString()) + '\n';
}

TEST(RawTextTest, CasesAreStoredUnderTheirNames)
{
    EXPECT_EQ(textsOf<MessageRole>("role") + textsOf<MessageStatus>("status") +
                  textsOf<ConversationRetention>("retention") + textsOf<ChatTextSize>("text size") +
                  textsOf<AppAppearance>("appearance") + textsOf<ShortcutPreset>("shortcut"),
              TestData::text("models/raw_texts.txt"));
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
    QStringList opened;
    for (const QString &sealed : {before.sealedContent, *before.sealedToolSummary, stored.sealedContent,
                                  *stored.sealedAttachmentName, document->columns().sealedFilename,
                                  chat->columns().sealedTitle, *chat->columns().sealedRollingSummary})
        opened += FakeFieldSealing::isSealed(sealed) ? sealing->open(sealed) : u"(readable)"_s;
    EXPECT_EQ(opened.join(u'|'), u"former|one|hello|notes.txt|plan.pdf|Trip|So far"_s);
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
    const ToolDetail detail{u"“words”"_s, u"a\nb"_s, true};
    reply->replaceLastToolLine(u"last"_s, ToolLineState::declined, detail);
    EXPECT_EQ(reply->toolSummary(), u"2\n3\n4\n5\n6\n7\n8\nlast"_s);
    EXPECT_EQ(reply->toolDetails(), QList<ToolDetail>(7) << detail);
    EXPECT_TRUE(FakeFieldSealing::isSealed(*reply->columns().sealedToolDetails));
    reply->stopToolLines();
    EXPECT_EQ(reply->toolStates(),
              u"stopped stopped stopped stopped stopped stopped stopped declined"_s.split(u' '));
    EXPECT_EQ(reply->toolSummary(), u"2\n3\n4\n5\n6\n7\n8\nlast"_s);
    reply->setToolSummary(u"one\ntwo"_s); // as a row from before the states
    reply->appendToolLine(u"three"_s, ToolLineState::failed);
    EXPECT_EQ(reply->toolStates(), QStringList({QString(), QString(), u"failed"_s}));
    EXPECT_EQ(reply->toolDetails(), QList<ToolDetail>(3));
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
