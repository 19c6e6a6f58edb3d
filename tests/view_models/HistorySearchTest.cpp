#include "async/Work.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/PersistenceController.h"
#include "support/Await.h"
#include "support/FakeFieldSealing.h"
#include "support/ManualClock.h"
#include "support/TestData.h"
#include "utils/text/Identifier.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/find/FindViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"
#include "view_models/sidebar/HistorySearchModel.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::days;

TEST(SearchTermsTest, WordsMatchWhateverTheirOrderCaseAndAccents)
{
    const char *table = "view_models/search_terms.txt";
    const auto outcome = [](const QByteArray &line) {
        const QStringList parts = QString::fromUtf8(line).split(u'|');
        return SearchTerms(parts[0]).match(parts[1]) ? u"found"_s : u"not found"_s;
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

TEST(SearchTermsTest, AnExcerptIsOneShortLineAroundTheFind)
{
    const QString text = u"word "_s.repeated(50) + u"a needle\n\tin it "_s + u"more "_s.repeated(60);
    const QString excerpt = SearchTerms(u"NEEDLE"_s).excerpt(text);
    EXPECT_LE(excerpt.size(), 160);
    EXPECT_TRUE(excerpt.startsWith(u'…') && excerpt.endsWith(u'…')) << qPrintable(excerpt);
    EXPECT_TRUE(excerpt.contains(u"a needle in it"_s)) << qPrintable(excerpt);
    EXPECT_EQ(SearchTerms(u"short"_s).excerpt(u"A short one"_s), u"A short one"_s);

    const QString ghosts = u"👻"_s.repeated(300);
    const QString cut = SearchTerms(u"👻"_s).excerpt(ghosts);
    EXPECT_EQ(QString::fromUtf8(cut.toUtf8()), cut) << "no half of a pair is left";
}

// Counts the texts that are opened on the test's thread, and opens those off it not before the test lets go
// of them.
class WatchedSealing final : public FieldSealing {
public:
    std::optional<QString> seal(const QString &text) const override { return m_sealing.seal(text); }
    QString open(const QString &sealed) const override
    {
        const bool isHere = std::this_thread::get_id() == m_home;
        openedHere += isHere ? 1 : 0;
        if (!isHeld || isHere)
            return m_sealing.open(sealed);
        began.release();
        while (isHeld)
            std::this_thread::yield();
        QString text = m_sealing.open(sealed);
        hasOpened = true;
        return text;
    }

    std::atomic<bool> isHeld = false;
    mutable std::counting_semaphore<> began{0};
    mutable std::atomic<bool> hasOpened = false;
    mutable std::atomic<int> openedHere = 0;

private:
    FakeFieldSealing m_sealing;
    const std::thread::id m_home = std::this_thread::get_id();
};

class SearchedStore : public testing::Test {
protected:
    std::shared_ptr<ChatMessage> message(const QString &text, MessageRole role = MessageRole::user)
    {
        return repository.makeMessage({.id = QUuid::createUuid(),
                                       .role = role,
                                       .content = text,
                                       .createdAt = clock.now(),
                                       .status = MessageStatus::delivered});
    }

    ManualClock clock;
    std::shared_ptr<WatchedSealing> sealing = std::make_shared<WatchedSealing>();
    std::unique_ptr<PersistenceController> persistence = PersistenceController::inMemory(sealing);
    ConversationRepository repository{persistence->mainContext(), clock};
    Work work{clock};
};

class HistorySearchTest : public SearchedStore {
protected:
    std::shared_ptr<Conversation> chat(const QString &title, const QStringList &messages)
    {
        const auto made = repository.create();
        for (const QString &text : messages)
            repository.add(message(text), *made);
        repository.rename(*made, title);
        clock.advance(1s);
        return made;
    }
    void search(const QString &query)
    {
        model.setQuery(query);
        clock.advance(1s);
        TestWait::until([this] { return !model.isSearching(); });
    }
    [[nodiscard]] QStringList found() const
    {
        QStringList rows;
        for (int i = 0; i < model.rowCount(); ++i) {
            const QModelIndex row = model.index(i, 0);
            rows += row.data(HistorySearchModel::TitleRole).toString() + u'|' +
                    row.data(HistorySearchModel::ExcerptRole).toString();
        }
        return rows;
    }

    HistorySearchModel model{repository, clock, work};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(HistorySearchTest, TitlesComeFirstThenTheLatestMessagesAndAChatOnceAsItIsCalledNow)
{
    const auto bread = chat(u"Bread"_s, {u"rye and fern leaves"_s});
    const auto ferns = chat(u"Ferns"_s, {u"a fern"_s, u"another fern"_s});
    chat(u"Garden"_s, {u"the fern by the wall"_s, u"and the fern\nby the door"_s});
    chat(u"Tax"_s, {u"numbers"_s});
    search(u"fern"_s);
    EXPECT_EQ(found(), QStringList({u"Ferns|"_s, u"Garden|and the fern by the door"_s,
                                    u"Bread|rye and fern leaves"_s}));
    repository.rename(*ferns, u"Mosses"_s);
    repository.remove(*bread);
    model.refresh();
    EXPECT_EQ(found(), QStringList({u"Mosses|"_s, u"Garden|and the fern by the door"_s}));
    search(u"door fern"_s);
    EXPECT_EQ(found(), QStringList(u"Garden|and the fern by the door"_s));
    search(u" "_s);
    EXPECT_EQ(found(), QStringList());
    EXPECT_FALSE(model.isActive());
}

TEST_F(HistorySearchTest, OneSearchIsMadeForAWordTypedQuickly)
{
    chat(u"Ferns"_s, {u"a fern"_s});
    for (const auto &typed : {u"f"_s, u"fe"_s, u"fer"_s}) {
        model.setQuery(typed);
        clock.advance(50ms);
        TestWait::settle();
        EXPECT_EQ(model.rowCount(), 0);
    }
    search(u"fern"_s);
    EXPECT_EQ(found(), QStringList(u"Ferns|"_s));
    auto passing = std::make_unique<HistorySearchModel>(repository, clock, work);
    passing->setQuery(u"fern"_s);
    clock.advance(130ms);
    passing.reset(); // in the middle of its search
    TestWait::settle();
}

TEST_F(HistorySearchTest, FindsAreBoundedAndReachTheOldestMessage)
{
    QStringList many;
    for (int i = 0; i < 700; ++i)
        many += u"filler %1"_s.arg(i);
    chat(u"Old"_s, {u"a needle"_s});
    chat(u"Long"_s, many);
    for (int i = 0; i < 260; ++i)
        chat(u"Chat %1"_s.arg(i), {});
    search(u"needle"_s);
    EXPECT_EQ(found(), QStringList(u"Old|a needle"_s));
    search(u"chat"_s);
    EXPECT_EQ(model.rowCount(), static_cast<int>(HistorySearchModel::maxRows));
}

TEST_F(HistorySearchTest, TheListTellsTheNeighboursOfAChat)
{
    const auto older = chat(u"Older"_s, {});
    for (int i = 0; i < 70; ++i)
        chat(u"Chat %1"_s.arg(i), {});
    const auto newer = chat(u"Newer"_s, {});
    ConversationListModel list(repository, clock);
    const auto section = [&](days later) {
        clock.advance(later);
        return list.index(0).data(ConversationListModel::SectionRole).toString();
    };
    EXPECT_EQ(section(days(0)), u"Today"_s);
    EXPECT_EQ(section(days(1)), u"Yesterday"_s);
    EXPECT_EQ(section(days(1)), u"Last 7 Days"_s);
    EXPECT_EQ(section(days(4)), u"Last 7 Days"_s);
    EXPECT_EQ(section(days(1)), u"March 2026"_s);
    const QString top = Identifier::text(newer->id());
    EXPECT_EQ(list.neighbour(top, -1), QString());
    EXPECT_EQ(list.neighbour(list.neighbour(top, 1), -1), top);
    EXPECT_EQ(list.neighbour(u"unknown"_s, 1), top);
    QString last = top;
    for (QString next = top; !next.isEmpty(); next = list.neighbour(next, 1))
        last = next;
    EXPECT_EQ(last, Identifier::text(older->id())) << "beyond the first page too";
}

TEST_F(HistorySearchTest, QuittingWaitsForThePortionThatIsBeingRead)
{
    chat(u"Plants"_s, {u"a fern"_s});
    sealing->isHeld = true;
    model.setQuery(u"fern"_s);
    clock.advance(1s);
    TestWait::settle();
    sealing->began.acquire();
    sealing->isHeld = false;
    work.end();
    EXPECT_TRUE(sealing->hasOpened);
    TestWait::settle(); // the search ends with it
}

TEST(FindTermsTest, FindsAreWholeCharactersWhateverTheirCaseAccentsAndBlanks)
{
    const char *table = "view_models/find_terms.txt";
    const auto outcome = [](const QByteArray &line) {
        QStringList parts = QString::fromUtf8(line).split(u'|');
        const bool words = parts[0].startsWith(u"words:"_s);
        const FindTerms terms(words ? parts[0].sliced(6) : parts[0],
                              words ? FindTerms::Way::words : FindTerms::Way::phrase);
        const auto finds = terms.in(parts[1]);
        for (auto find = finds.rbegin(); find != finds.rend(); ++find)
            parts[1].insert(find->start + find->length, u']').insert(find->start, u'[');
        return parts[1].replace(u'\n', u'⏎').replace(QChar::Nbsp, u' ');
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

class FindViewModelTest : public SearchedStore {
protected:
    void search()
    {
        clock.advance(1s);
        TestWait::until([this] { return !find.isSearching(); });
        TestWait::settle();
    }

    const ProofLedger ledger;
    const AnswerProofs proofs{ledger};
    MessageListModel list{clock, proofs};
    MessageListModel::Messages shown;
    FindViewModel find{list, repository, clock, work};
};

TEST_F(FindViewModelTest, ALongChatIsReadBesideTheWindowAndFromWhereThePersonReads)
{
    for (int i = 0; i < 2000; ++i)
        shown.push_back(i % 2 ? message(u"**ne**edle\n\n- [needle](https://needle.invalid) %1"_s.arg(i),
                                        MessageRole::assistant)
                              : message(u"a *needle*"_s));
    list.setMessages(shown);
    const int openedBefore = sealing->openedHere;
    find.open(1500);
    find.setQuery(u"needle"_s);
    search();
    EXPECT_EQ(find.count(), 3000) << "of what is shown, not of what was written";
    EXPECT_EQ(sealing->openedHere, openedBefore);
    EXPECT_EQ(find.current(), (FindPlace{1500, 0, 0}));
    EXPECT_EQ(find.position(), 2251);
    find.previous();
    EXPECT_EQ(find.current(), (FindPlace{1499, 1, 0}));
    find.setQuery(u"999"_s);
    search();
    EXPECT_EQ(find.current(), (FindPlace{1999, 1, 0})) << "below first, then from the top";
    find.next();
    EXPECT_EQ(find.current(), (FindPlace{999, 1, 0}));

    list.setMessages({shown[0], shown[999]});
    EXPECT_EQ(find.current(), (FindPlace{1, 1, 0})) << "the message went up";
    EXPECT_EQ(find.count(), 1);
    shown[999]->setContent(u"gone"_s);
    list.messageChanged(shown[999]->id());
    clock.advance(1s);
    TestWait::until([this] { return find.count() == 0; });
    EXPECT_EQ(find.position(), 0);
}

} // namespace morvane
