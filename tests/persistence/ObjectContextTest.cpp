#include "persistence/ObjectContext.h"
#include "persistence/PersistenceController.h"
#include "support/FakeFieldSealing.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class ObjectContextTest : public testing::Test {
protected:
    std::shared_ptr<Conversation> conversation(const QString &title) const
    {
        return Conversation::create(sealing,
                                    {.id = QUuid::createUuid(), .title = title, .createdAt = moment});
    }

    std::shared_ptr<ChatMessage> message(const QString &content) const
    {
        return ChatMessage::create(sealing, {.id = QUuid::createUuid(),
                                             .role = MessageRole::assistant,
                                             .content = content,
                                             .createdAt = moment,
                                             .status = MessageStatus::pending});
    }

    std::shared_ptr<ChatMessage> added(Conversation &conversation, const QString &content)
    {
        auto one = message(content);
        conversation.append(one);
        context->insert(one);
        return one;
    }

    QDateTime moment = QDateTime::fromMSecsSinceEpoch(1'700'000'000'123, Qt::UTC);
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    std::unique_ptr<PersistenceController> persistence = PersistenceController::inMemory(sealing);
    ObjectContext *context = &persistence->mainContext();
};

TEST_F(ObjectContextTest, EveryFieldComesBackFromTheStore)
{
    ChatMessage::Columns columns;
    columns.id = QUuid::createUuid();
    columns.roleRaw = u"assistant"_s;
    columns.sealedContent = u"sealed \u0001 text"_s;
    columns.createdAt = moment;
    columns.statusRaw = u"odd"_s;
    columns.sealedErrorMessage = QString(u""_s);
    columns.attachmentID = QUuid::createUuid();
    columns.sealedAttachmentName = u"name"_s;
    columns.sealedToolSummary = u"tools"_s;
    columns.sourceDomains = QStringList{u"a.example"_s, u"b \"quoted\", ü"_s};
    columns.hitTokenLimit = false;
    columns.placeRaw = u"place"_s;
    columns.conversation = QUuid::createUuid();
    context->insert(std::make_shared<ChatMessage>(sealing, columns));
    context->save();

    const auto read = context->find<ChatMessage>(columns.id);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->columns().roleRaw, columns.roleRaw);
    EXPECT_EQ(read->columns().sealedContent, columns.sealedContent);
    EXPECT_EQ(read->columns().createdAt, columns.createdAt);
    EXPECT_EQ(read->columns().statusRaw, columns.statusRaw);
    EXPECT_EQ(read->columns().sealedErrorMessage, columns.sealedErrorMessage);
    EXPECT_EQ(read->columns().attachmentID, columns.attachmentID);
    EXPECT_EQ(read->columns().sealedAttachmentName, columns.sealedAttachmentName);
    EXPECT_EQ(read->columns().sealedToolSummary, columns.sealedToolSummary);
    EXPECT_EQ(read->columns().sourceDomains, columns.sourceDomains);
    EXPECT_EQ(read->columns().hitTokenLimit, columns.hitTokenLimit);
    EXPECT_EQ(read->columns().placeRaw, columns.placeRaw);
    EXPECT_EQ(read->columns().conversation, columns.conversation);
}

TEST_F(ObjectContextTest, OneRowIsOneObjectForAsLongAsSomeoneHoldsIt)
{
    const auto chat = conversation(u"A"_s);
    context->insert(chat);
    EXPECT_EQ(context->find<Conversation>(chat->id()), chat); // not saved yet
    context->save();
    EXPECT_EQ(context->fetch<Conversation>().front(), chat);

    added(*chat, u"hello"_s);
    context->save();
    const std::weak_ptr<ChatMessage> held = chat->messages().front();
    EXPECT_EQ(chat->messages().front()->conversation(), chat);
    const QUuid id = chat->id();
    std::weak_ptr<Conversation> gone = chat;
    const_cast<std::shared_ptr<Conversation> &>(chat).reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_TRUE(held.expired());
    EXPECT_EQ(context->find<Conversation>(id)->messages().front()->content(), u"hello"_s);
}

TEST_F(ObjectContextTest, AFetchSeesWhatIsNotSaved)
{
    const auto first = conversation(u"A"_s);
    const auto second = conversation(u"B"_s);
    context->insert(first);
    context->insert(second);
    context->save();
    first->setUpdatedAt(moment.addDays(1));
    context->remove(*second);
    const auto later = context->fetch<Conversation>(
        {.where = "updatedAt > ?", .values = {SqlCoding::value(moment)}, .order = "updatedAt DESC"});
    ASSERT_EQ(later.size(), 1U);
    EXPECT_EQ(later.front(), first);
    EXPECT_EQ(context->count<Conversation>(), 1);
    EXPECT_TRUE(context->hasChanges());
    context->save();
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(ObjectContextTest, RemovingAConversationRemovesItsMessagesAndLeavesDocuments)
{
    const auto chat = conversation(u"A"_s);
    context->insert(chat);
    const auto message = added(*chat, u"hello"_s);
    const auto other = conversation(u"B"_s);
    context->insert(other);
    added(*other, u"stays"_s);
    context->insert(ImportedDocument::create(sealing, {.id = QUuid::createUuid(), .filename = u"f"_s}));
    context->save();

    context->remove(*chat);
    EXPECT_EQ(message->content(), u"hello"_s); // safe to read
    message->setContent(u"late"_s);            // and reaches nothing
    message->setStatus(MessageStatus::delivered);
    context->save();
    EXPECT_EQ(context->count<ChatMessage>(), 1);
    EXPECT_EQ(context->count<Conversation>(), 1);
    EXPECT_EQ(context->count<ImportedDocument>(), 1);
    EXPECT_EQ(context->find<ChatMessage>(message->id()), nullptr);
}

TEST_F(ObjectContextTest, RecordsOutliveTheirContext)
{
    const auto chat = conversation(u"A"_s);
    context->insert(chat);
    const auto message = added(*chat, u"hello"_s);
    context->save();
    const auto unread = context->find<Conversation>(chat->id());
    persistence.reset();
    message->setContent(u"after"_s);
    EXPECT_EQ(message->content(), u"after"_s);
    EXPECT_EQ(message->conversation(), nullptr);
    EXPECT_EQ(chat->messages().size(), 1U);
}

TEST_F(ObjectContextTest, MessagesKeepTheirOrderAcrossChangesAndReloads)
{
    auto chat = conversation(u"A"_s);
    context->insert(chat);
    for (const auto &text : {u"1"_s, u"2"_s, u"3"_s})
        added(*chat, text);
    context->save();
    chat->messages().front()->setContent(u"1*"_s);
    added(*chat, u"4"_s);
    context->save();
    const QUuid id = chat->id();
    chat.reset();
    chat = context->find<Conversation>(id);
    QStringList texts;
    for (const auto &message : chat->messages())
        texts += message->content();
    EXPECT_EQ(texts, QStringList({u"1*"_s, u"2"_s, u"3"_s, u"4"_s}));
}

TEST_F(ObjectContextTest, EmptinessIsKnownWithoutLoadingMessages)
{
    auto chat = conversation(u"A"_s);
    context->insert(chat);
    EXPECT_TRUE(chat->isEmpty());
    added(*chat, u"hello"_s);
    context->save();
    const QUuid id = chat->id();
    chat.reset();
    EXPECT_FALSE(context->find<Conversation>(id)->isEmpty());
}

} // namespace

} // namespace morvane
