#include "persistence/ConversationRepository.h"
#include "models/ConversationRetention.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
#include "persistence/PersistenceError.h"
#include "support/FakeFieldSealing.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class ConversationRepositoryTest : public testing::Test {
protected:
    void say(Conversation &conversation, const QString &text, MessageRole role = MessageRole::user)
    {
        repository.add(repository.makeMessage({.id = QUuid::createUuid(),
                                               .role = role,
                                               .content = text,
                                               .createdAt = clock.now(),
                                               .status = MessageStatus::delivered}),
                       conversation);
    }

    QStringList titles() const
    {
        QStringList all;
        for (const auto &conversation : repository.all())
            all += conversation->title();
        return all;
    }

    std::shared_ptr<Conversation> named(const QString &title)
    {
        auto conversation = repository.create();
        repository.rename(*conversation, title);
        return conversation;
    }

    ManualClock clock;
    InMemorySettingsRepository defaults;
    std::shared_ptr<FakeFieldSealing> sealing = std::make_shared<FakeFieldSealing>();
    std::unique_ptr<PersistenceController> persistence = PersistenceController::inMemory(sealing);
    ConversationRepository repository{persistence->mainContext(), clock, &defaults};
};

TEST_F(ConversationRepositoryTest, ListsWhatWasLastChangedFirst)
{
    const auto first = named(u"first"_s);
    clock.advance(1s);
    named(u"second"_s);
    clock.advance(1s);
    EXPECT_EQ(titles(), QStringList({u"second"_s, u"first"_s}));
    say(*first, u"hello"_s);
    EXPECT_EQ(titles(), QStringList({u"first"_s, u"second"_s}));
    EXPECT_EQ(repository.mostRecent(), first);
    EXPECT_EQ(repository.find(first->id()), first);
    EXPECT_EQ(repository.find(QUuid::createUuid()), nullptr);
    EXPECT_EQ(repository.page(1, 5).size(), 1U);
}

TEST_F(ConversationRepositoryTest, LeavesConversationsOfDepartedPagesOut)
{
    const auto departed = named(u"departed"_s);
    named(u"stays"_s);
    defaults.setList(QString(ConversationRepository::legacyModuleConversationsKey),
                     {departed->id().toString(QUuid::WithoutBraces).toLower(), u"no id"_s});
    EXPECT_EQ(titles(), QStringList{u"stays"_s});
    EXPECT_EQ(repository.count(), 1);
    EXPECT_EQ(repository.find(departed->id()), departed);
}

TEST_F(ConversationRepositoryTest, TitlesFromFirstWords)
{
    const QString exact = QString(41, u'a') + u"é"_s;
    const struct {
        QString text;
        QString title;
    } cases[] = {
        {u"  \n "_s, u"New Conversation"_s},
        {u"\n  Hello there \r\nmore"_s, u"Hello there "_s},
        {exact, exact},
        {exact + u"b"_s, exact + u"…"_s},
        {QString(40, u'a') + u"  bc"_s, QString(40, u'a') + u"…"_s},
        {u"👩‍👩‍👧‍👦"_s.repeated(42), u"👩‍👩‍👧‍👦"_s.repeated(42)},
        {u"👩‍👩‍👧‍👦"_s.repeated(43), u"👩‍👩‍👧‍👦"_s.repeated(42) + u"…"_s},
    };
    for (const auto &[text, title] : cases)
        EXPECT_EQ(ConversationRepository::titleFrom(text), title) << text.toStdString();
}

TEST_F(ConversationRepositoryTest, TheFirstWordsOfAPersonNameAnUntitledConversation)
{
    const auto chat = repository.create();
    EXPECT_EQ(chat->title(), u"New Conversation"_s);
    say(*chat, u"I answer"_s, MessageRole::assistant);
    EXPECT_EQ(chat->title(), u"New Conversation"_s);
    say(*chat, u"How do boats float?"_s);
    say(*chat, u"And planes?"_s);
    EXPECT_EQ(chat->title(), u"How do boats float?"_s);
    EXPECT_TRUE(FakeFieldSealing::isSealed(chat->columns().sealedTitle));
}

TEST_F(ConversationRepositoryTest, RenameCleansTheTitle)
{
    const auto chat = repository.create();
    const struct {
        QString given;
        QString kept;
    } cases[] = {
        {u" a\nb "_s, u"a b"_s},
        {u" \n\t "_s, u"a b"_s}, // blank: as it was
        {QString(79, u'x') + u" y"_s, QString(79, u'x')},
        {QString(81, u'z'), QString(80, u'z')},
    };
    for (const auto &[given, kept] : cases) {
        repository.rename(*chat, given);
        EXPECT_EQ(chat->title(), kept);
    }
    const QString sealed = chat->columns().sealedTitle;
    repository.rename(*chat, chat->title());
    EXPECT_EQ(chat->columns().sealedTitle, sealed);
    sealing->setLocked(true);
    repository.rename(*chat, u"locked"_s);
    EXPECT_EQ(chat->columns().sealedTitle, sealed);
}

TEST_F(ConversationRepositoryTest, PruneKeepsWhatStandsAtTheCutoff)
{
    named(u"old"_s);
    clock.advance(1ms);
    named(u"at the cutoff"_s);
    clock.advance(7 * 24h);
    named(u"new"_s);

    LogCapture log;
    repository.prune(std::nullopt, clock.now().addYears(1000));
    EXPECT_EQ(repository.count(), 3);
    EXPECT_TRUE(log.lines().isEmpty());
    repository.prune(retentionInterval(ConversationRetention::sevenDays), clock.now());
    EXPECT_EQ(titles(), QStringList({u"new"_s, u"at the cutoff"_s}));
    repository.prune(retentionInterval(ConversationRetention::sevenDays), clock.now());
    EXPECT_EQ(log.lines(), QStringList{u"persistence: Pruned 1 conversations past retention window"_s});
}

TEST_F(ConversationRepositoryTest, ASearchGoesThroughAllTextsInPortions)
{
    const auto chat = repository.create();
    for (const auto &text : {u"1"_s, u"2"_s, u"3"_s})
        say(*chat, text);
    QStringList texts;
    auto portion = repository.sealedTexts(2);
    while (!portion.empty()) {
        for (const auto &text : portion) {
            EXPECT_EQ(text.conversation, chat->id());
            texts += sealing->open(text.sealedContent);
        }
        portion = repository.sealedTexts(2, portion.back().position);
    }
    EXPECT_EQ(texts, QStringList({u"3"_s, u"2"_s, u"1"_s}));
}

TEST_F(ConversationRepositoryTest, RemovesEmptyConversationsAndEverything)
{
    named(u"empty"_s);
    const auto kept = named(u"kept"_s);
    const auto full = named(u"full"_s);
    say(*full, u"hello"_s);
    repository.insert({.id = QUuid::createUuid(), .filename = u"f"_s});
    repository.removeEmpty(kept.get());
    EXPECT_EQ(titles().size(), 2);
    repository.removeEmpty();
    EXPECT_EQ(titles(), QStringList{u"full"_s});
    repository.deleteAll();
    EXPECT_EQ(repository.count(), 0);
    EXPECT_EQ(persistence->mainContext().count<ChatMessage>(), 0);
    EXPECT_EQ(persistence->mainContext().count<ImportedDocument>(), 0);
}

TEST_F(ConversationRepositoryTest, AdoptsAChatWithItsMessagesAndFiles)
{
    const auto ghostStore = PersistenceController::inMemory(sealing);
    ConversationRepository ghosts(ghostStore->mainContext(), clock);
    const auto ghost = ghosts.create();
    const QUuid file = QUuid::createUuid();
    ghosts.insert({.id = file, .filename = u"plan.pdf"_s, .fileExtension = u"image"_s, .fileSizeBytes = 7});
    ghosts.add(ghosts.makeMessage({.id = QUuid::createUuid(),
                                   .role = MessageRole::user,
                                   .content = u"look"_s,
                                   .createdAt = clock.now(),
                                   .status = MessageStatus::delivered,
                                   .attachmentID = file,
                                   .attachmentName = u"plan.pdf"_s}),
               *ghost);

    const auto copy = repository.adopt(*ghost);
    EXPECT_NE(copy, ghost);
    EXPECT_EQ(copy->id(), ghost->id());
    EXPECT_EQ(copy->title(), u"look"_s);
    EXPECT_NE(copy->columns().sealedTitle, ghost->columns().sealedTitle);
    ASSERT_EQ(copy->messages().size(), 1U);
    EXPECT_EQ(copy->messages().front()->content(), u"look"_s);
    EXPECT_NE(copy->messages().front(), ghost->messages().front());
    EXPECT_EQ(repository.findDocument(file)->filename(), u"plan.pdf"_s);
    EXPECT_EQ(repository.findDocument(file)->fileSizeBytes(), 7);
    EXPECT_EQ(ghosts.count(), 1);
}

TEST_F(ConversationRepositoryTest, AdoptingWhileLockedCopiesTheSealedTexts)
{
    const auto ghostStore = PersistenceController::inMemory(sealing);
    ConversationRepository ghosts(ghostStore->mainContext(), clock);
    const auto ghost = ghosts.create();
    sealing->setLocked(true);
    const auto copy = repository.adopt(*ghost);
    EXPECT_EQ(copy->columns().sealedTitle, ghost->columns().sealedTitle);
}

} // namespace

} // namespace morvane
