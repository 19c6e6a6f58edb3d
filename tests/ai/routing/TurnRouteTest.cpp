// What prepareRequest() makes of the settings, of what a turn carries and of what is known of its place.

#include "RouterFixture.h"

#include "ai/prompts/SystemPrompt.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString localhost = u"http://localhost:11434/v1"_s;

class TurnRouteTest : public RouterFixture {
protected:
    TurnRouteTest()
    {
        services.tools = [] {
            std::vector<AITool> tools;
            for (const auto *name : {"remember", "forget", "search_web", "look_at_screen"})
                tools.push_back({.name = QString::fromLatin1(name)});
            return tools;
        };
        services.prompts = {.instructions = [] { return u"Be brief."_s; },
                            .notes = [] { return std::optional(u"- Likes tea"_s); }};
        start();
    }

    static QString toolNames(const PreparedRequest &prepared)
    {
        QStringList names;
        for (const AITool &tool : prepared.tools)
            names.append(tool.name);
        return names.join(u' ');
    }
};

TEST_F(TurnRouteTest, TheDestinationDecidesAboutToolsAndNotes)
{
    probes.models = {{{u"llama3.2:3b"_s}, {u"alias"_s, true}, {u"tagless:latest"_s}}};
    names = {{u"mixed.local"_s, {u"192.168.1.9"_s, u"8.8.8.8"_s}},
             {u"box.local"_s, {u"192.168.1.9"_s}},
             {u"box.example"_s, {u"10.0.0.1"_s}}};
    const auto outcome = [this](const QByteArray &line) {
        configureLine(line);
        const PreparedRequest prepared = prepare();
        const std::optional notes = prepared.memoryAllowed ? std::optional(u"- Likes tea"_s) : std::nullopt;
        EXPECT_EQ(prepared.messages.front().content,
                  SystemPrompt::ofTurn(SystemPrompt::identity(u"Be brief."_s), prepared.tools, notes));
        EXPECT_EQ(prepared.configuration.carrying.testFlag(SensitiveData::memory), prepared.memoryAllowed)
            << "notes in the prompt are private data";
        return toolNames(prepared) + (notes ? u", with notes"_s : u", without notes"_s);
    };
    TestData::expect("ai/tools_and_notes.txt", outcome);

    configure(localhost, u"llama3.2:3b"_s);
    const PreparedRequest ghost = prepare({.memoryAllowed = false});
    EXPECT_EQ(toolNames(ghost), u"search_web look_at_screen"_s);
    EXPECT_FALSE(ghost.messages.front().content.contains(u"Likes tea"_s));
    EXPECT_EQ(toolNames(prepare({.visionModel = u"llama3.2:3b"_s})), QString());
    probes.models = std::nullopt;
    clock.advance(60s);
    configure(localhost, u"anything"_s);
    EXPECT_TRUE(prepare().memoryAllowed) << "a server without a list has nobody to pass questions on to";
    probes.isOllama = true;
    configure(u"http://127.0.0.1:1/v1"_s, u"anything"_s); // never probed before
    EXPECT_FALSE(prepare().memoryAllowed) << "one that doesn't show its list may have";
    probes.isUp = false;
    clock.advance(60s);
    configure(localhost, u"anything"_s);
    EXPECT_FALSE(prepare().memoryAllowed) << "nor is anything known of one that nobody heard this time";
    const int before = lookups;
    configure(u"https://box.example"_s, u"m"_s);
    static_cast<void>(prepare());
    EXPECT_EQ(lookups, before) << "nothing private goes there, wherever its name leads";
}

TEST_F(TurnRouteTest, PrivateDataStaysOrMovesOrIsRefused)
{
    probes.models = {{{u"llama3.2:3b"_s}, {u"alias"_s, true}}};
    const auto outcome = [this](const QByteArray &line) {
        configureLine(line);
        QStringList fates;
        for (const auto data : {SensitiveData::screenText, SensitiveData::memory, SensitiveData::image}) {
            localModel.set(LocalModelServing::State::absent);
            fates.append(fate(carrying(data)));
            localModel.set(LocalModelServing::State::ready, u"llama3.2:3b"_s);
            const AIConfiguration moved = prepare(carrying(data)).configuration;
            EXPECT_EQ(moved.baseURLString + moved.model, localhost + u"llama3.2:3b"_s);
            EXPECT_TRUE(moved.carrying.testFlag(data));
        }
        fates.removeDuplicates();
        return fates.join(u" / ");
    };
    TestData::expect("ai/private_turns.txt", outcome);
    EXPECT_EQ(lookups, 0) << "not even the name of a place that is out of the question is looked up";
    probes.models = {{{u"llama3.2:3b"_s, true}}};
    clock.advance(60s);
    configure(u"https://service.example"_s, u"m"_s);
    EXPECT_TRUE(fate(carrying(SensitiveData::image)).contains(u"it runs in Ollama's cloud"))
        << "the local model is judged like any other";
}

TEST_F(TurnRouteTest, TheConfigurationComesFromTheSettings)
{
    settings.setTemperature(0.3);
    settings.setMaxOutputTokens(1000);
    settings.setPrivateCloudThinksLonger(true);
    keychain.save(u"sk-mine"_s, AIRequestRouter::apiKeyAccount());
    configure(u"https://service.example"_s, u"m"_s);
    settings.setApiKeyOrigin(u"https://service.example"_s);
    QString all;
    const auto note = [&](const char *when, TurnRequest turn = {}) {
        const PreparedRequest prepared = prepare(std::move(turn));
        const AIConfiguration &made = prepared.configuration;
        all += u"%1\n  %2 at %3, %4, %5 tokens, heat %6, %7 s%8%9"_s
                   .arg(QString::fromLatin1(when), made.model, made.baseURLString,
                        made.apiKey.value_or(u"none"_s))
                   .arg(made.maxOutputTokens)
                   .arg(made.temperature)
                   .arg(made.requestTimeout)
                   .arg(made.preferStreaming ? u", streamed"_s : QString(),
                        made.thinksLonger ? u", thinks longer"_s : QString()) +
               u"; may use up %1; tools: %2\n"_s.arg(QString::number(router->outputBudget()),
                                                     toolNames(prepared));
    };
    note("a service keeps the person's limit");
    note("with tools", {.toolsModel = u"able"_s});
    note("with a budget", {.outputBudget = 3000});
    configure(localhost, u"m"_s);
    note("a model nearby gets room");
    note("but no more than a budget", {.outputBudget = 3000});
    turnOnPrivateCloud();
    note("the private cloud", {.toolsModel = u"able"_s});
    settings.setHostedRelayModel(u" e2ee-other\n"_s);
    settings.setMaxOutputTokens(3000);
    note("another model of it");
    settings.setHostedChatEnabled(false);
    configure(u"https://CLOUD.invalid/v1/"_s, u"m"_s);
    note("the same place, named in the settings");
    EXPECT_EQ(all.toStdString(), TestData::text("ai/turn_configurations.txt"));
}

TEST_F(TurnRouteTest, TheSixtyFirstPrivateCloudTurnOfAnHourRunsLocally)
{
    turnOnPrivateCloud();
    for (int i = 0; i < 60; ++i) {
        EXPECT_EQ(fate({}), u"e2ee-glm-5-3-flash at https://cloud.invalid/v1"_s);
        clock.advance(10s);
    }
    EXPECT_EQ(fate({}), ProviderError(ProviderError::Plain::hostedBurstLimited).userMessage());
    EXPECT_EQ(fate(carrying(SensitiveData::memory)),
              ProviderError(ProviderError::Plain::localModelRequired).userMessage())
        << "it would not have gone there";
    localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
    EXPECT_EQ(fate({}), u"gemma3:4b at "_s + localhost);
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Hosted burst limit; routing to local model"_s));
    probes.models = {{{u"gemma3:4b"_s, true}}};
    clock.advance(60s);
    EXPECT_EQ(fate({}), ProviderError(ProviderError::Plain::hostedBurstLimited).userMessage())
        << "no service steps in for another";
    probes.models = std::nullopt;
    clock.advance(2940s);
    EXPECT_EQ(fate({}), u"gemma3:4b at "_s + localhost) << "the first was exactly an hour ago";
    clock.advance(1ms);
    EXPECT_EQ(fate({}), u"e2ee-glm-5-3-flash at https://cloud.invalid/v1"_s);
}

TEST_F(TurnRouteTest, ABuildWithoutThePrivateCloudSendsNothingInItsPlace)
{
    services.privateCloud = {};
    start();
    turnOnPrivateCloud();
    const QString refused = ProviderError(ProviderError::Plain::notConfigured).userMessage();
    EXPECT_EQ(fate({}), refused);
    EXPECT_EQ(router->sources().back().problem, u"This build has no private cloud."_s);
    localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
    EXPECT_EQ(fate({}), refused) << "a turn of the private cloud goes nowhere else unasked";
    EXPECT_EQ(fate(carrying(SensitiveData::image)), u"gemma3:4b at "_s + localhost);
}

TEST_F(TurnRouteTest, APrivateTurnWaitsForAStartingModelAndNoLonger)
{
    configure(u"https://service.example"_s, u"m"_s);
    const auto begin = [this](SensitiveDataSet data, std::stop_token stop = {}) {
        auto outcome = TestWait::begin(router->openTurn(carrying(data), std::move(stop)));
        TestWait::settle();
        return outcome;
    };
    const auto pass = [this](std::chrono::milliseconds time) {
        clock.advance(time);
        TestWait::settle();
    };
    localModel.set(LocalModelServing::State::starting);
    EXPECT_TRUE(begin({})->done) << "it carries nothing";
    const auto ready = begin(SensitiveData::screenText);
    clock.advance(10s);
    EXPECT_FALSE(ready->done);
    localModel.set(LocalModelServing::State::ready, u"m"_s);
    pass(250ms);
    ASSERT_TRUE(ready->value);
    EXPECT_EQ(ready->value->request.configuration.baseURLString, localhost);

    localModel.set(LocalModelServing::State::starting);
    const auto late = begin(SensitiveData::screenText);
    std::stop_source stop;
    const auto stopped = begin(SensitiveData::screenText, stop.get_token());
    stop.request_stop();
    TestWait::settle();
    EXPECT_TRUE(stopped->done);
    pass(29'750ms);
    EXPECT_FALSE(late->done);
    pass(250ms);
    EXPECT_TRUE(late->error) << "and nobody else may have it";
    const auto orphan = begin(SensitiveData::screenText);
    router.reset();
    pass(250ms);
    EXPECT_TRUE(orphan->error);
}

// One picture and tools: the model that sees takes the turn, and none is asked about tools.
TEST_F(TurnRouteTest, AnOpenedTurnHasItsStandInItsBudgetItsProviderAndItsRow)
{
    configure(localhost, u"llama3.2:3b"_s);
    probes.isOllama = true;
    probes.models = {{{u"llama3.2:3b"_s}, {u"gemma3:4b"_s}, {u"qwen2.5:7b"_s}}};
    probes.abilities = {
        {u"llama3.2:3b"_s, {}}, {u"gemma3:4b"_s, {u"vision"_s}}, {u"qwen2.5:7b"_s, {u"tools"_s}}};
    const OpenedTurn seeing = open(carrying(SensitiveData::image));
    EXPECT_EQ(seeing.request.configuration.model, u"gemma3:4b"_s);
    EXPECT_FALSE(probes.asked.contains(u"show qwen2.5:7b"_s));
    EXPECT_EQ(seeing.provider, native);
    const auto row = proofs.find(*seeing.proofRow);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->startedAt, clock.now());
    EXPECT_EQ(row->place, (ProofLedger::Place{ProofLedger::Place::Kind::thisMac, u"gemma3:4b"_s, {}}));
    EXPECT_EQ(row->purpose, u"chat"_s);
    EXPECT_TRUE(row->carrying.testFlag(SensitiveData::image));

    const OpenedTurn continued = open({.isContinuation = true});
    EXPECT_EQ(continued.request.configuration.model, u"qwen2.5:7b"_s);
    EXPECT_EQ(continued.request.configuration.maxOutputTokens, 8192);
    EXPECT_NE(*continued.proofRow, *seeing.proofRow);
}

} // namespace

} // namespace morvane
