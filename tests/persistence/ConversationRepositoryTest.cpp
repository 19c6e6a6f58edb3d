#include "StoreFixture.h"
#include "models/ConversationRetention.h"
#include "support/TestData.h"

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
    EXPECT_EQ(TestData::transcript("persistence/titles.txt", title),
              TestData::text("persistence/titles.txt"));
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
    EXPECT_EQ(TestData::transcript("persistence/renames.txt", renamed),
              TestData::text("persistence/renames.txt"));
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

    const auto logged = log.lines().size();
    repository.prune(std::nullopt, clock.now().addYears(1000));
    EXPECT_EQ(repository.count(), 3);
    for (const std::size_t gone : {1, 0})
        EXPECT_EQ(repository.prune(retentionInterval(ConversationRetention::sevenDays), clock.now()).size(),
                  gone);
    EXPECT_EQ(titles(), QStringList({u"new"_s, u"at the cutoff"_s}));
    EXPECT_EQ(session.context().count<ChatMessage>(), 0);
    EXPECT_EQ(log.lines().mid(logged),
              QStringList{u"persistence: Pruned 1 conversations past retention window"_s});
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

} // namespace

} // namespace morvane
