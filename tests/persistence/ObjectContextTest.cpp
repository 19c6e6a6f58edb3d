#include "StoreFixture.h"

#include "utils/text/UniversalTime.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class ObjectContextTest : public StoreFixture {
protected:
    // A conversation that nobody but the caller holds, with its saved messages.
    std::shared_ptr<Conversation> chatOf(const QStringList &texts)
    {
        return makeChat(session.repository, u"A"_s, texts);
    }

    Session session = inMemory();
    ObjectContext &context = session.context();
};

TEST_F(ObjectContextTest, EveryFieldComesBackFromTheStore)
{
    const QDateTime moment = UniversalTime::ofMilliseconds(1'700'000'000'123);
    const auto expectBack = [&]<typename R>(std::type_identity<R>, const typename R::Columns &columns) {
        context.insert(std::make_shared<R>(sealing, columns));
        context.save();
        EXPECT_TRUE(context.find<R>(columns.id)->columns() == columns);
    };
    const QUuid id = QUuid::createUuid();
    expectBack(std::type_identity<ChatMessage>(),
               {id, u"assistant"_s, u"sealed \u0001 text"_s, moment, u"odd"_s, u""_s, QUuid::createUuid(),
                u"name"_s, u"tools"_s, QStringList{u"a.example"_s, u"b \"quoted\", ü"_s}, true, u"place"_s,
                QUuid::createUuid(), QStringList{u"failed"_s}, QUuid::createUuid(), QUuid::createUuid(),
                true});
    expectBack(
        std::type_identity<ChatMessage>(),
        {QUuid::createUuid(), u"user"_s, u""_s, moment, u"delivered"_s, {}, {}, {}, {}, {}, {}, {}, {}});
    expectBack(std::type_identity<Conversation>(), {id, u"title"_s, moment, moment.addMSecs(1), u"summary"_s,
                                                    u"persona"_s, u"space"_s, true, u"draft"_s, true});
    expectBack(std::type_identity<ImportedDocument>(), {id, u"name"_s, u"pdf"_s, 1LL << 40, 8, true, moment});
}

TEST_F(ObjectContextTest, OneRowIsOneObjectForAsLongAsSomeoneHoldsIt)
{
    auto chat = Conversation::create(sealing, {.id = QUuid::createUuid(), .title = u"A"_s});
    context.insert(chat);
    EXPECT_EQ(context.find<Conversation>(chat->id()), chat); // not saved yet
    context.save();
    EXPECT_EQ(context.fetch<Conversation>().front(), chat);

    say(session.repository, *chat, u"hello"_s);
    EXPECT_EQ(chat->messages().front()->conversation(), chat);
    const std::weak_ptr<ChatMessage> held = chat->messages().front();
    const std::weak_ptr<Conversation> gone = chat;
    const QUuid id = chat->id();
    chat.reset();
    EXPECT_TRUE(gone.expired() && held.expired());
    EXPECT_EQ(textsOf(*context.find<Conversation>(id)), QStringList{u"hello"_s});
}

TEST_F(ObjectContextTest, AFetchSeesWhatIsNotSaved)
{
    auto first = chatOf({});
    const auto second = chatOf({});
    first->setUpdatedAt(clock.now().addDays(1));
    context.remove(*second);
    using Chats = std::vector<std::shared_ptr<Conversation>>;
    EXPECT_EQ(
        context.fetch<Conversation>({.where = "updatedAt > ?", .values = {SqlCoding::value(clock.now())}}),
        Chats{first});
    EXPECT_EQ(context.count<Conversation>(), 1);
    first->setTitle(u"after the fetch"_s);
    context.save();
    EXPECT_FALSE(context.hasChanges());
    const QUuid id = first->id();
    first.reset();
    EXPECT_EQ(context.find<Conversation>(id)->title(), u"after the fetch"_s);
}

TEST_F(ObjectContextTest, RemovingAConversationRemovesItsMessagesAndLeavesDocuments)
{
    const auto chat = chatOf({u"hello"_s});
    const auto message = chat->messages().front();
    auto unread = chatOf({u"not loaded"_s});
    const QUuid unreadId = unread->id();
    unread.reset();
    chatOf({u"stays"_s});
    session.repository.insert({.id = QUuid::createUuid(), .filename = u"f"_s});

    context.remove(*chat);
    context.remove(*context.find<Conversation>(unreadId));
    EXPECT_EQ(message->content(), u"hello"_s); // safe to read
    message->setContent(u"late"_s);            // and reaches nothing
    context.save();
    EXPECT_EQ(context.count<Conversation>(), 1);
    ASSERT_EQ(context.count<ChatMessage>(), 1);
    const auto last = context.fetch<ChatMessage>().front();
    EXPECT_EQ(last->content(), u"stays"_s);
    EXPECT_EQ(context.count<ImportedDocument>(), 1);
    const auto owner = last->conversation();
    EXPECT_FALSE(owner->isEmpty());
    EXPECT_EQ(owner->messages().size(), 1U);
    context.remove(*last);
    EXPECT_TRUE(owner->messages().empty());
}

TEST_F(ObjectContextTest, ARemovalIsNotRepeatedOverWhatWasInsertedAnew)
{
    const auto chat = chatOf({u"hello"_s});
    const auto message = chat->messages().front();
    const auto other = chatOf({});
    context.remove(*chat);
    context.removeAll<ImportedDocument>();
    context.insert(std::make_shared<Conversation>(sealing, chat->columns()));
    context.insert(std::make_shared<ChatMessage>(sealing, message->columns()));
    context.insert(ImportedDocument::create(sealing, {.id = QUuid::createUuid(), .filename = u"f"_s}));
    EXPECT_EQ(context.count<Conversation>(), 2); // written, not saved
    context.remove(*other);
    context.save();
    EXPECT_EQ(context.count<Conversation>(), 1);
    EXPECT_EQ(context.count<ChatMessage>(), 1);
    EXPECT_EQ(context.count<ImportedDocument>(), 1);
}

TEST_F(ObjectContextTest, MessagesKeepTheirOrderAcrossChangesAndReloadsAndOutliveTheContext)
{
    auto chat = chatOf({u"1"_s, u"2"_s, u"3"_s});
    chat->messages().front()->setContent(u"1*"_s);
    say(session.repository, *chat, u"4"_s);
    const QUuid id = chat->id();
    chat.reset();
    chat = context.find<Conversation>(id);
    EXPECT_FALSE(chat->isEmpty()); // told without loading them
    EXPECT_EQ(textsOf(*chat), QStringList({u"1*"_s, u"2"_s, u"3"_s, u"4"_s}));
    EXPECT_TRUE(chatOf({})->isEmpty());

    // A search reads the texts alone, of what is shown, in portions.
    chat->messages()[1]->setSetAside(true);
    QStringList texts;
    for (auto portion = context.sealedTexts(1 << 30, 3); !portion.empty();
         portion = context.sealedTexts(portion.back().position, 3)) {
        for (const auto &text : portion) {
            EXPECT_EQ(text.conversation, id);
            EXPECT_EQ(context.find<ChatMessage>(text.message)->sealedContent(), text.sealedContent);
            texts += sealing->open(text.sealedContent);
        }
    }
    EXPECT_EQ(texts, QStringList({u"4"_s, u"3"_s, u"1*"_s}));

    // Records outlive their context.
    const auto message = chat->messages().front();
    session.persistence.reset();
    message->setContent(u"after"_s);
    EXPECT_EQ(message->content(), u"after"_s);
    EXPECT_EQ(message->conversation(), nullptr);
    EXPECT_EQ(chat->messages().size(), 4U);
}

} // namespace

} // namespace morvane
