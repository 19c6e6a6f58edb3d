#include "view_models/find/FindViewModel.h"

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

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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

// Counts the texts that are opened on the thread it was made on.
class CountingSealing final : public FieldSealing {
public:
    std::optional<QString> seal(const QString &text) const override { return m_sealing.seal(text); }
    QString open(const QString &sealed) const override
    {
        openedHere += std::this_thread::get_id() == m_home ? 1 : 0;
        return m_sealing.open(sealed);
    }
    mutable std::atomic<int> openedHere = 0;

private:
    FakeFieldSealing m_sealing;
    const std::thread::id m_home = std::this_thread::get_id();
};

class FindViewModelTest : public testing::Test {
protected:
    std::shared_ptr<ChatMessage> add(const QString &text, MessageRole role = MessageRole::assistant)
    {
        const auto message = repository.makeMessage({.id = QUuid::createUuid(),
                                                     .role = role,
                                                     .content = text,
                                                     .createdAt = clock.now(),
                                                     .status = MessageStatus::delivered});
        shown.push_back(message);
        return message;
    }
    void search()
    {
        clock.advance(1s);
        TestWait::until([this] { return !find.isSearching(); });
        TestWait::settle();
    }

    ManualClock clock;
    std::shared_ptr<CountingSealing> sealing = std::make_shared<CountingSealing>();
    std::unique_ptr<PersistenceController> persistence = PersistenceController::inMemory(sealing);
    ConversationRepository repository{persistence->mainContext(), clock};
    Work work{clock};
    const ProofLedger ledger;
    const AnswerProofs proofs{ledger};
    MessageListModel list{clock, proofs};
    MessageListModel::Messages shown;
    FindViewModel find{list, repository, clock, work};
};

TEST_F(FindViewModelTest, ALongChatIsReadBesideTheWindowAndFromWhereThePersonReads)
{
    for (int i = 0; i < 2000; ++i)
        add(i % 2 ? u"**ne**edle\n\n- [needle](https://needle.invalid) %1"_s.arg(i) : u"a *needle*"_s,
            i % 2 ? MessageRole::assistant : MessageRole::user);
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
