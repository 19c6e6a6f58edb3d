// What a call costs between the model that asks and the ability that runs, with as many notes as there can
// be.

#include "ai/tools/ToolRegistry.h"
#include "async/Clock.h"
#include "memory/MemoryStore.h"
#include "memory/NoteText.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "services/WebAccessing.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <benchmark/benchmark.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

// A note of the greatest length; each has words of its own.
QString note(std::size_t number)
{
    return u"note %1 about tea, trains and the garden; "_s.arg(number).repeated(8).left(
        NoteText::maxCharacters);
}

class NoWeb final : public WebAccessing {
public:
    SearchService searchService() const override { return SearchService::builtIn; }
    QCoro::Task<std::vector<SearchResult>> search(QString, std::stop_token) override
    {
        co_return std::vector<SearchResult>();
    }
    QCoro::Task<Page> readPage(QString, qsizetype, std::stop_token) override { co_return Page(); }
};

struct Room {
    Room()
    {
        for (std::size_t i = 0; i < MemoryStore::maxFacts; ++i)
            memory.record(note(i));
    }

    SystemClock clock;
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    MemoryStore memory{settings, vault, clock, QString()};
    NoWeb web;
    ToolRegistry registry{{settings, memory, web, clock}};
};

QCoro::Task<> keep(QCoro::Task<AIToolResult> task, AIToolResult *result)
{
    *result = {};
    const AIToolResult given = co_await std::move(task);
    *result = given;
}

void dispatch(benchmark::State &state, const QString &name, const QString &arguments)
{
    Room room;
    const auto turn = TurnContext::begin(TurnContext::Attendance::attended, u"chat:A"_s,
                                         TurnContext::Notes::kept, u"Read https://typed.example/page"_s, {});
    const AIToolCall call{u"call-1"_s, name, arguments};
    AIToolResult result;
    for (auto _ : state) {
        keep(room.registry.dispatch(call, turn), &result);
        if (result.content.isEmpty() || result.isError)
            state.SkipWithError("the call was not carried out");
    }
}

// Every note is looked at and none is meant, so the notes stay as they are from one round to the next.
void forget(benchmark::State &state)
{
    dispatch(state, u"forget"_s, uR"({"about":"the violin lessons"})"_s);
}

void readPage(benchmark::State &state)
{
    dispatch(state, u"read_web_page"_s, uR"({"url":"https://typed.example/page"})"_s);
}

// The store holds 80 notes at most; this is one pass of its rule over 200.
void match(benchmark::State &state)
{
    std::vector<QString> notes;
    for (std::size_t i = 0; i < 200; ++i)
        notes.push_back(note(i));
    const QString wanted = NoteText::normalized(u"the violin lessons"_s);
    for (auto _ : state) {
        int found = 0;
        for (const QString &text : notes)
            found += NoteText::matches(NoteText::normalized(text), wanted) ? 1 : 0;
        benchmark::DoNotOptimize(found);
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"ai.morvane.*=false"_s);
    benchmark::RegisterBenchmark("tool_dispatch_forget_80_notes", forget)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("tool_dispatch_read_80_notes", readPage)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("match_200_notes", match)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
