#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
#include "persistence/StoreFiles.h"
#include "security/ProcessKeySealing.h"
#include "utils/log/Log.h"
#include "utils/text/UniversalTime.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <ctime>
#include <unistd.h>

using namespace morvane;
using namespace Qt::StringLiterals;

// The chat store at the sizes that years of use give it, beside the same work on a small one.

namespace {

constexpr qsizetype messageLength = 700; // characters, about what a reply has

// A profile with a store of so many conversations of so many messages each.
class Profile {
public:
    Profile(int conversations, int messagesInEach)
    {
        const auto opened = open();
        ObjectContext &context = opened->mainContext();
        ConversationRepository repository(context, clock);
        for (int i = 0; i < conversations; ++i) {
            const auto chat = Conversation::create(
                sealing(), {QUuid::createUuid(), u"Conversation %1"_s.arg(i), moment(i)});
            context.insert(chat);
            for (int j = 0; j < messagesInEach; ++j)
                insert(context, *chat, moment(j));
            if (i % 50 == 0)
                repository.save();
        }
        repository.save();
    }

    [[nodiscard]] std::unique_ptr<PersistenceController> open()
    {
        return PersistenceController::onDisk(
            {SupportFolders::inProfile(m_home.path()), m_defaults, [] { return false; }}, sealing());
    }

    [[nodiscard]] QString storePath() const
    {
        return ChatStoreLocation::storePath(SupportFolders::inProfile(m_home.path()));
    }

    static const std::shared_ptr<const FieldSealing> &sealing()
    {
        static const std::shared_ptr<const FieldSealing> instance = std::make_shared<ProcessKeySealing>();
        return instance;
    }

    static QDateTime moment(int seconds)
    {
        return UniversalTime::ofMilliseconds((1'700'000'000 + seconds) * 1000LL);
    }

    static std::shared_ptr<ChatMessage> insert(ObjectContext &context, Conversation &chat,
                                               const QDateTime &date)
    {
        static const QString text(messageLength, u'x');
        const auto message = ChatMessage::create(
            sealing(), {QUuid::createUuid(), MessageRole::assistant, text, date, MessageStatus::delivered});
        message->setConversationID(chat.id());
        context.insert(message);
        return message;
    }

    SystemClock clock;

private:
    QTemporaryDir m_home;
    InMemorySettingsRepository m_defaults;
};

Profile &smallStore() // 100 messages
{
    static Profile profile(10, 10);
    return profile;
}

Profile &largeStore() // 200,000 messages
{
    static Profile profile(10'000, 20);
    return profile;
}

Profile &longChat()
{
    static Profile profile(1, 5000);
    return profile;
}

// What a start asks of the store: open it, the chat that was open last, and the first screens of the list.
void openStore(benchmark::State &state, Profile &(*profile)())
{
    Profile &opened = profile();
    for (auto _ : state) {
        const auto persistence = opened.open();
        const ConversationRepository repository(persistence->mainContext(), opened.clock);
        benchmark::DoNotOptimize(repository.mostRecent()->isEmpty());
        benchmark::DoNotOptimize(repository.page(0, 10));
    }
}

// Chats that are open, and go on by one message at a time, up to the disk.
class OpenChat {
public:
    explicit OpenChat(Profile &profile)
        : m_clock(profile.clock)
        , m_persistence(profile.open())
    {
        (void)m_chat->messages();
    }

    // Milliseconds of processor time for each of so many saves.
    double save(int times)
    {
        const std::clock_t start = std::clock();
        for (int i = 0; i < times; ++i)
            m_repository.add(m_repository.makeMessage({QUuid::createUuid(), MessageRole::user, u"One more"_s,
                                                       m_clock.now(), MessageStatus::delivered}),
                             *m_chat);
        return 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / times;
    }

private:
    SystemClock &m_clock;
    std::unique_ptr<PersistenceController> m_persistence;
    ConversationRepository m_repository{m_persistence->mainContext(), m_clock};
    std::shared_ptr<Conversation> m_chat = m_repository.mostRecent();
};

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

struct SaveTimes {
    double large = 0; // milliseconds
    double small = 0;
};

// By turns, so that whatever else the machine does meets both. One turn is long enough for SQLite to fold its
// log into the file at least once, which it does every 1,000 pages: a save writes six or seven.
SaveTimes measuredSaves()
{
    constexpr int turns = 15;
    constexpr int savesInTurn = 250;
    OpenChat large(largeStore());
    OpenChat small(smallStore());
    ::sync(); // the disk is done with what the making of the stores left it
    std::vector<double> inLarge;
    std::vector<double> inSmall;
    for (int i = 0; i < turns; ++i) {
        inLarge.push_back(large.save(savesInTurn));
        inSmall.push_back(small.save(savesInTurn));
    }
    return {median(inLarge), median(inSmall)};
}

void saveMessage(benchmark::State &state, double SaveTimes::*time)
{
    static const SaveTimes times = measuredSaves();
    for (auto _ : state)
        benchmark::DoNotOptimize(times);
    state.counters["value"] = times.*time;
    state.SetLabel("ms");
}

void openChat(benchmark::State &state)
{
    const auto persistence = longChat().open();
    const ConversationRepository repository(persistence->mainContext(), longChat().clock);
    for (auto _ : state) {
        const auto chat = repository.mostRecent();
        benchmark::DoNotOptimize(chat->orderedMessages().back()->content());
    }
}

// The same rows read column by column with the bare library.
void openChatYardstick(benchmark::State &state)
{
    sqlite3 *database = nullptr;
    sqlite3_open_v2(longChat().storePath().toUtf8(), &database, SQLITE_OPEN_READONLY, nullptr);
    for (auto _ : state) {
        sqlite3_stmt *rows = nullptr;
        sqlite3_prepare_v2(database, "SELECT * FROM ChatMessage ORDER BY rowid", -1, &rows, nullptr);
        std::vector<std::string> values;
        while (sqlite3_step(rows) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(rows); ++column) {
                if (const unsigned char *text = sqlite3_column_text(rows, column))
                    values.emplace_back(reinterpret_cast<const char *>(text));
            }
        }
        benchmark::DoNotOptimize(values);
        sqlite3_finalize(rows);
    }
    sqlite3_close(database);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"ai.morvane.*=false"_s);
    using benchmark::kMillisecond;
    benchmark::RegisterBenchmark("open_store_10000_chats", openStore, largeStore)->Unit(kMillisecond);
    benchmark::RegisterBenchmark("open_store_10000_chats/yardstick", openStore, smallStore)
        ->Unit(kMillisecond);
    benchmark::RegisterBenchmark("save_message_in_200000", saveMessage, &SaveTimes::large)->Iterations(1);
    benchmark::RegisterBenchmark("save_message_in_200000/yardstick", saveMessage, &SaveTimes::small)
        ->Iterations(1);
    benchmark::RegisterBenchmark("open_chat_5000", openChat)->Unit(kMillisecond);
    benchmark::RegisterBenchmark("open_chat_5000/yardstick", openChatYardstick)->Unit(kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
