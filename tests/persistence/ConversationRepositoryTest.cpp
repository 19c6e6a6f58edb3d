#include "StoreFixture.h"
#include "models/ConversationRetention.h"
#include "support/TestData.h"
#include "utils/text/UniversalTime.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class ConversationRepositoryTest : public StoreFixture {
protected:
    QStringList titles() const { return titlesOf(repository.all()); }

    Session session = inMemory();
    ConversationRepository &repository = session.repository;
};

TEST_F(ConversationRepositoryTest, ListsWhatWasLastChangedFirst)
{
    const auto first = makeChat(repository, u"first"_s);
    clock.advance(1s);
    makeChat(repository, u"second"_s);
    makeChat(repository, u"third"_s); // of the same moment
    EXPECT_EQ(titles(), QStringList({u"third"_s, u"second"_s, u"first"_s}));
    clock.advance(1s);
    say(repository, *first, u"hello"_s);
    EXPECT_EQ(titles(), QStringList({u"first"_s, u"third"_s, u"second"_s}));
    EXPECT_EQ(repository.mostRecent(), first);
    EXPECT_EQ(repository.find(first->id()), first);
    EXPECT_EQ(repository.find(QUuid::createUuid()), nullptr);
    EXPECT_EQ(titlesOf(repository.page(1, 1)), QStringList{u"third"_s});

    // Without those of departed pages.
    defaults.setList(QString(ConversationRepository::legacyModuleConversationsKey),
                     {first->id().toString(QUuid::WithoutBraces).toLower(), u"no id"_s});
    EXPECT_EQ(titles(), QStringList({u"third"_s, u"second"_s}));
    EXPECT_EQ(repository.count(), 2);
    EXPECT_EQ(repository.find(first->id()), first);
}

TEST_F(ConversationRepositoryTest, TitlesFromFirstWords)
{
    const auto title = [](const QByteArray &text) {
        return ConversationRepository::titleFrom(QString::fromUtf8(text));
    };
    TestData::expect("persistence/titles.txt", title);
}

TEST_F(ConversationRepositoryTest, TheFirstWordsOfAPersonNameAnUntitledConversationAndRenameCleansATitle)
{
    const auto chat = repository.create();
    say(repository, *chat, u"I answer"_s, MessageRole::assistant);
    EXPECT_EQ(chat->title(), u"New Conversation"_s);
    say(repository, *chat, u"How do boats float?"_s);
    say(repository, *chat, u"And planes?"_s);
    EXPECT_EQ(chat->title(), u"How do boats float?"_s);
    const auto renamed = [&](const QByteArray &title) {
        repository.rename(*chat, QString::fromUtf8(title));
        return chat->title();
    };
    TestData::expect("persistence/renames.txt", renamed);
    const QString sealed = chat->columns().sealedTitle;
    repository.rename(*chat, chat->title());
    EXPECT_EQ(chat->columns().sealedTitle, sealed);
    sealing->setLocked(true);
    repository.rename(*chat, u"locked"_s);
    EXPECT_EQ(chat->columns().sealedTitle, sealed);
}

TEST_F(ConversationRepositoryTest, PruneKeepsWhatStandsAtTheCutoff)
{
    makeChat(repository, u"old"_s, {u"message"_s});
    clock.advance(1ms);
    makeChat(repository, u"at the cutoff"_s);
    clock.advance(7 * 24h);
    makeChat(repository, u"new"_s);

    repository.prune(std::nullopt, clock.now().addYears(1000));
    EXPECT_EQ(repository.count(), 3);
    for (const std::size_t gone : {1, 0})
        EXPECT_EQ(repository.prune(retentionInterval(ConversationRetention::sevenDays), clock.now()).size(),
                  gone);
    EXPECT_EQ(titles(), QStringList({u"new"_s, u"at the cutoff"_s}));
    EXPECT_EQ(session.context().count<ChatMessage>(), 0);
}

TEST_F(ConversationRepositoryTest, RemovesEmptyConversationsAndEverything)
{
    makeChat(repository, u"empty"_s);
    const auto kept = makeChat(repository, u"kept"_s);
    makeChat(repository, u"full"_s, {u"hello"_s});
    const auto begun = makeChat(repository, u"begun"_s);
    begun->setDraft(u"Dear"_s);
    repository.insert({.id = QUuid::createUuid(), .filename = u"f"_s});
    repository.removeEmpty(kept.get());
    EXPECT_EQ(titles(), QStringList({u"begun"_s, u"full"_s, u"kept"_s}));
    begun->setDraft(QString());
    repository.removeEmpty();
    EXPECT_EQ(titles(), QStringList{u"full"_s});
    repository.deleteAll();
    EXPECT_EQ(repository.count(), 0);
    EXPECT_EQ(session.context().count<ChatMessage>(), 0);
    EXPECT_EQ(session.context().count<ImportedDocument>(), 0);
}

TEST_F(ConversationRepositoryTest, AdoptsAChatWithItsMessagesAndFilesSealedAnewWhereItCan)
{
    for (const bool isLocked : {false, true}) {
        auto ghosts = inMemory();
        const auto ghost = makeChat(ghosts.repository, u"look"_s);
        ghost->setDraft(u"never stored"_s);
        const QUuid file = QUuid::createUuid();
        ghosts.repository.insert({.id = file, .filename = u"plan.pdf"_s, .fileSizeBytes = 7});
        ghosts.repository.add(ghosts.repository.makeMessage({.id = QUuid::createUuid(),
                                                             .role = MessageRole::user,
                                                             .content = u"at this"_s,
                                                             .createdAt = clock.now(),
                                                             .attachmentID = file,
                                                             .attachmentName = u"plan.pdf"_s}),
                              *ghost);
        sealing->setLocked(isLocked);
        const auto copy = repository.adopt(*ghost);
        sealing->setLocked(false);
        EXPECT_NE(copy, ghost);
        EXPECT_EQ(copy->id(), ghost->id());
        EXPECT_EQ(copy->title(), u"look"_s);
        EXPECT_FALSE(copy->columns().sealedDraft);
        ASSERT_EQ(textsOf(*copy), QStringList{u"at this"_s});
        EXPECT_NE(copy->messages().front(), ghost->messages().front());
        const auto &columns = copy->messages().front()->columns();
        const auto &originals = ghost->messages().front()->columns();
        const auto document = repository.findDocument(file);
        EXPECT_EQ(document->filename(), u"plan.pdf"_s);
        EXPECT_EQ(document->fileSizeBytes(), 7);
        for (const bool isSame : {copy->columns().sealedTitle == ghost->columns().sealedTitle,
                                  columns.sealedContent == originals.sealedContent,
                                  columns.sealedAttachmentName == originals.sealedAttachmentName})
            EXPECT_EQ(isSame, isLocked);
        EXPECT_EQ(ghosts.repository.count(), 1);
    }
}

TEST_F(ConversationRepositoryTest, WhatIsPutBackStandsWhereItStoodAlsoAtTheNextStart)
{
    auto chat = repository.create();
    for (const auto &text : {u"one"_s, u"two"_s, u"three"_s, u"four"_s}) // all of one moment
        say(repository, *chat, text);
    Conversation::Messages all = chat->messages();
    repository.remove(Conversation::Messages{all[0], all[2]}, *chat);
    EXPECT_EQ(textsOf(*chat), QStringList({u"two"_s, u"four"_s}));
    repository.putBack(all, *chat);
    EXPECT_EQ(chat->messages(), all);
    repository.remove(all, *chat);
    EXPECT_EQ(chat->title(), Conversation::untitled()) << "its words are gone";
    repository.putBack(all, *chat);
    EXPECT_EQ(chat->title(), u"one"_s);
    const QUuid id = chat->id();
    chat.reset();
    all.clear();
    EXPECT_EQ(textsOf(*repository.find(id)), QStringList({u"one"_s, u"two"_s, u"three"_s, u"four"_s}));
}

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
