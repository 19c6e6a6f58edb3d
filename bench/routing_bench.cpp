// What preparing a turn's request takes of the GUI thread, from the history to the messages, the prompt and
// the tools of the request, and before that from the records of the chat to the history.

#include "ai/routing/AIRequestRouter.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/PersistenceController.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/ProcessKeySealing.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/chat/TurnHistory.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <benchmark/benchmark.h>

#include <stdexcept>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

// Of the models in use: answers at once, as a list that is already known does.
class OneModel final : public OllamaProbing {
public:
    QCoro::Task<ProbeAnswer<QString>> version(QString, std::stop_token) override
    {
        co_return ProbeAnswer<QString>{u"0"_s};
    }
    QCoro::Task<ProbeAnswer<QStringList>> capabilities(QString, QString, std::stop_token) override
    {
        co_return ProbeAnswer<QStringList>{QStringList{u"tools"_s}};
    }
    QCoro::Task<ProbeAnswer<std::vector<OllamaModel>>> modelList(QString, std::stop_token) override
    {
        co_return ProbeAnswer<std::vector<OllamaModel>>{std::vector<OllamaModel>{{u"some-model"_s}}};
    }
};

std::vector<AITool> eightTools()
{
    std::vector<AITool> tools;
    for (const char *name : {"remember", "forget", "search_web", "read_web_page", "look_at_screen",
                             "open_link", "create_calendar_event", "run_shortcut"})
        tools.push_back({.name = QString::fromLatin1(name),
                         .description = QString(300, u'd'),
                         .parameters = {{.name = u"value"_s, .description = QString(60, u'p')}}});
    return tools;
}

std::vector<ContextBuilder::HistoryItem> history(int count)
{
    std::vector<ContextBuilder::HistoryItem> items;
    for (int i = 0; i < count; ++i)
        items.push_back({i % 2 == 0 ? MessageRole::user : MessageRole::assistant,
                         QString::number(i) + QString(800, u'w')});
    return items;
}

QCoro::Task<> prepareOne(AIRequestRouter *router, TurnRequest turn, std::size_t *messages)
{
    const PreparedRequest prepared = co_await router->prepareRequest(std::move(turn), {});
    *messages = prepared.messages.size();
}

void prepare(benchmark::State &state, int messageCount)
{
    InMemorySettingsRepository repository;
    SettingsStore settings(repository);
    settings.setModel(u"some-model"_s);
    InMemoryKeychainService keychain;
    ProofLedger proofs;
    SystemClock clock;
    OneModel probes;
    Work work(clock);
    AIRequestRouter router({.settings = settings,
                            .keychain = keychain,
                            .proofs = proofs,
                            .clock = clock,
                            .work = work,
                            .ollama = &probes,
                            .prompts = {.notes = [] { return std::optional(QString(4000, u'n')); }},
                            .tools = eightTools});
    TurnRequest turn;
    turn.history = history(messageCount);
    for (auto _ : state) {
        std::size_t messages = 0;
        prepareOne(&router, turn, &messages);
        if (messages == 0)
            throw std::runtime_error("the request was not prepared at once");
    }
}

// From a chat that was just opened, so that every text is still sealed, and again for its next turn.
void readChat(benchmark::State &state, bool isOpened)
{
    SystemClock clock;
    const auto store = PersistenceController::inMemory(std::make_shared<ProcessKeySealing>());
    ConversationRepository repository(store->mainContext(), clock);
    const auto conversation = repository.create();
    const std::vector<ContextBuilder::HistoryItem> items = history(2000);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const auto message = repository.makeMessage({.id = QUuid::createUuid(),
                                                     .role = items[i].role,
                                                     .content = items[i].content,
                                                     .createdAt = clock.now(),
                                                     .status = MessageStatus::delivered});
        if (i % 20 == 1)
            message->appendToolLine(u"Searched the web for “something”"_s, ToolLineState::finished);
        conversation->append(message);
    }
    auto messages = std::make_unique<MessageListModel>(clock);
    messages->setMessages(conversation->orderedMessages());
    for (auto _ : state) {
        if (!isOpened) {
            state.PauseTiming();
            messages = std::make_unique<MessageListModel>(clock);
            messages->setMessages(conversation->orderedMessages());
            state.ResumeTiming();
        }
        const auto read = TurnHistory::of(*messages, nullptr);
        benchmark::DoNotOptimize(TurnHistory::carriedBy(read, *conversation, repository));
        if (read.size() != items.size())
            throw std::runtime_error("not every message was read");
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"ai.morvane.*=false"_s);
    benchmark::RegisterBenchmark("prepare_30_messages_8_tools", prepare, 30)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("prepare_2000_messages_8_tools", prepare, 2000)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read_2000_messages_100_tool_rounds", readChat, true)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read_2000_sealed_messages_100_tool_rounds", readChat, false)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
