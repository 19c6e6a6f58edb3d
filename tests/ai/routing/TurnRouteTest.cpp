// What prepareRequest() makes of the settings, of what a turn carries and of what is known of its place.

#include "RouterFixture.h"

#include "ai/prompts/SystemPrompt.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = ProviderError::Plain;

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
    const QString all = u"remember forget search_web look_at_screen"_s;
    const QString outside = u"search_web"_s;
    probes.models = {{{u"llama3.2:3b"_s}, {u"alias"_s, true}, {u"tagless:latest"_s}}};
    names = {{u"mixed.local"_s, {u"192.168.1.9"_s, u"8.8.8.8"_s}},
             {u"box.local"_s, {u"192.168.1.9"_s}},
             {u"box.example"_s, {u"10.0.0.1"_s}}};
    struct Row {
        QString baseURL;
        QString model;
        QString tools;
        bool memory;
    };
    const std::vector<Row> table{
        {localhost, u"llama3.2:3b"_s, all, true},
        {localhost, u"tagless"_s, all, true},
        {localhost, u"alias"_s, outside, false}, // runs elsewhere, whatever its name
        {localhost, u"gpt-oss:20b-cloud"_s, outside, false},
        {localhost, u"unlisted"_s, outside, false},
        {u"https://8.8.8.8"_s, u"llama3.2:3b"_s, outside, false},
        {u"https://box.local"_s, u"llama3.2:3b"_s, all, true},
        {u"https://mixed.local"_s, u"llama3.2:3b"_s, outside, false},
        {u"https://unknown.local"_s, u"llama3.2:3b"_s, outside, false},
        {u"https://box.example"_s, u"llama3.2:3b"_s, outside, false}, // the gate wouldn't let it pass
    };
    for (const Row &row : table) {
        SCOPED_TRACE((row.baseURL + u' ' + row.model).toStdString());
        configure(row.baseURL, row.model);
        const PreparedRequest prepared = prepare();
        EXPECT_EQ(toolNames(prepared), row.tools);
        EXPECT_EQ(prepared.memoryAllowed, row.memory);
        const std::optional notes = row.memory ? std::optional(u"- Likes tea"_s) : std::nullopt;
        EXPECT_EQ(prepared.messages.front().content,
                  SystemPrompt::ofTurn(SystemPrompt::identity(u"Be brief."_s), prepared.tools, notes));
        EXPECT_EQ(prepared.configuration.carrying,
                  row.memory ? SensitiveDataSet(SensitiveData::memory) : SensitiveDataSet())
            << "notes in the prompt are private data";
        EXPECT_EQ(prepared.configuration.purpose, u"chat"_s);
    }
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
    static_cast<void>(TestWait::await(router->seesImages({})));
    EXPECT_FALSE(prepare().memoryAllowed) << "one that doesn't show its list may have";
}

TEST_F(TurnRouteTest, PrivateDataStaysOrMovesOrIsRefused)
{
    probes.models = {{{u"llama3.2:3b"_s}, {u"alias"_s, true}}};
    const ProviderError needsLocal(Plain::localModelRequired);
    const auto cloudModel = [](const char *model) {
        return ProviderError(ProviderError::CloudModelInPrivateMode{QString::fromLatin1(model)});
    };
    struct Row {
        QString baseURL;
        QString model;
        std::optional<ProviderError> refused;
    };
    const std::vector<Row> table{
        {localhost, u"llama3.2:3b"_s, {}},
        {localhost, u"gpt-oss:20b-cloud"_s, cloudModel("gpt-oss:20b-cloud")},
        {localhost, u"alias"_s, cloudModel("alias")},
        {localhost, u"unlisted"_s, needsLocal},
        {u"https://service.example"_s, u"m"_s, needsLocal},
        {u"https://service.example"_s, u"m:cloud"_s, needsLocal},
        {u"https://service.example"_s, QString(), ProviderError(Plain::notConfigured)},
        {u"http://service.example"_s, u"m"_s,
         ProviderError(ProviderError::InsecureBaseURL{u"http://service.example"_s})},
        {u"nowhere"_s, u"m"_s, ProviderError(ProviderError::InvalidBaseURL{u"nowhere"_s})},
    };
    for (const auto data : {SensitiveData::screenText, SensitiveData::memory, SensitiveData::image}) {
        for (const Row &row : table) {
            SCOPED_TRACE((row.baseURL + u' ' + row.model).toStdString());
            configure(row.baseURL, row.model);
            localModel.set(LocalModelServing::State::absent);
            if (row.refused)
                EXPECT_EQ(refusal(carrying(data)), *row.refused);
            else
                EXPECT_TRUE(prepare(carrying(data)).configuration.carrying.testFlag(data));
            localModel.set(LocalModelServing::State::ready, u"llama3.2:3b"_s);
            const PreparedRequest moved = prepare(carrying(data));
            EXPECT_EQ(moved.configuration.baseURLString, localhost);
            EXPECT_EQ(moved.configuration.model, u"llama3.2:3b"_s);
            EXPECT_TRUE(moved.configuration.carrying.testFlag(data));
        }
    }
    configure(u"https://service.example"_s, u"m"_s);
    EXPECT_EQ(lookups, 0) << "not even the name of a place that is out of the question is looked up";
    probes.models = {{{u"llama3.2:3b"_s, true}}};
    clock.advance(60s);
    EXPECT_EQ(refusal(carrying(SensitiveData::image)), cloudModel("llama3.2:3b"))
        << "the local model is judged like any other";
}

TEST_F(TurnRouteTest, TheConfigurationComesFromTheSettings)
{
    settings.setTemperature(0.3);
    settings.setMaxOutputTokens(1000);
    settings.setPrivateCloudThinksLonger(true);
    keychain.save(u"sk-mine"_s, AIRequestRouter::apiKeyAccount());
    configure(u"https://service.example"_s, u"m"_s);
    AIConfiguration service = prepare().configuration;
    EXPECT_EQ(service.apiKey, u"sk-mine"_s);
    EXPECT_EQ(service.temperature, 0.3);
    EXPECT_EQ(service.maxOutputTokens, 1000) << "a service keeps the person's limit";
    EXPECT_EQ(service.requestTimeout, 120.0);
    EXPECT_TRUE(service.preferStreaming);
    EXPECT_FALSE(service.thinksLonger);
    EXPECT_EQ(router->outputBudget(), 2048);
    EXPECT_EQ(prepare({.toolsModel = u"able"_s}).configuration.model, u"able"_s);
    EXPECT_EQ(prepare({.outputBudget = 3000}).configuration.maxOutputTokens, 3000);

    configure(localhost, u"m"_s);
    EXPECT_EQ(prepare().configuration.maxOutputTokens, 4096) << "a model nearby gets room";
    EXPECT_EQ(prepare({.outputBudget = 3000}).configuration.maxOutputTokens, 3000);
    EXPECT_EQ(router->outputBudget(), 8192);

    turnOnPrivateCloud();
    AIConfiguration cloud = prepare({.toolsModel = u"able"_s}).configuration;
    EXPECT_EQ(cloud.baseURLString, u"https://cloud.invalid/v1"_s);
    EXPECT_EQ(cloud.apiKey, u"install"_s);
    EXPECT_EQ(cloud.model, u"e2ee-glm-5-3-flash"_s);
    EXPECT_EQ(cloud.maxOutputTokens, 1000);
    EXPECT_TRUE(cloud.thinksLonger);
    settings.setHostedRelayModel(u" e2ee-other\n"_s);
    EXPECT_EQ(prepare().configuration.model, u"e2ee-other"_s);
    EXPECT_TRUE(prepare().tools.empty());
    settings.setMaxOutputTokens(3000);
    EXPECT_EQ(router->outputBudget(), 4096);
    settings.setHostedChatEnabled(false);
    configure(u"https://CLOUD.invalid/v1/"_s, u"m"_s);
    EXPECT_TRUE(prepare().tools.empty()) << "the same place, named in the settings";
}

TEST_F(TurnRouteTest, TheSixtyFirstPrivateCloudTurnOfAnHourRunsLocally)
{
    turnOnPrivateCloud();
    for (int i = 0; i < 60; ++i) {
        EXPECT_EQ(prepare().configuration.baseURLString, u"https://cloud.invalid/v1"_s);
        clock.advance(10s);
    }
    EXPECT_EQ(refusal({}), ProviderError(Plain::hostedBurstLimited));
    EXPECT_EQ(refusal(carrying(SensitiveData::memory)), ProviderError(Plain::localModelRequired))
        << "it would not have gone there";
    localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
    EXPECT_EQ(prepare().configuration.model, u"gemma3:4b"_s);
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Hosted burst limit; routing to local model"_s));
    clock.advance(3000s);
    EXPECT_EQ(prepare().configuration.model, u"gemma3:4b"_s) << "the first was exactly an hour ago";
    clock.advance(1ms);
    EXPECT_EQ(prepare().configuration.model, u"e2ee-glm-5-3-flash"_s);
}

TEST_F(TurnRouteTest, ABuildWithoutThePrivateCloudSendsNothingInItsPlace)
{
    AIRequestRouter bare({.settings = settings,
                          .keychain = keychain,
                          .proofs = proofs,
                          .clock = clock,
                          .work = work,
                          .provider = compatible,
                          .localModel = &localModel});
    turnOnPrivateCloud();
    const auto attempt = [&] { static_cast<void>(TestWait::await(bare.prepareRequest({}, {}))); };
    EXPECT_THROW(attempt(), ProviderError);
    EXPECT_EQ(bare.sources().front().problem, u"The private cloud is not available in this build."_s);
    localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
    EXPECT_THROW(attempt(), ProviderError) << "a turn of the private cloud goes nowhere else unasked";
    EXPECT_EQ(TestWait::await(bare.prepareRequest(carrying(SensitiveData::image), {})).configuration.model,
              u"gemma3:4b"_s);
}

TEST_F(TurnRouteTest, APrivateTurnWaitsForAStartingModelAndNoLonger)
{
    configure(u"https://service.example"_s, u"m"_s);
    const auto begin = [this](SensitiveDataSet data, std::stop_token stop = {}) {
        auto outcome = std::make_shared<TestWait::Outcome<OpenedTurn>>();
        TestWait::collect(router->openTurn(carrying(data), std::move(stop)), outcome);
        TestWait::settle();
        return outcome;
    };
    localModel.set(LocalModelServing::State::starting);
    EXPECT_TRUE(begin({})->done) << "it carries nothing";
    const auto ready = begin(SensitiveData::screenText);
    clock.advance(10s);
    EXPECT_FALSE(ready->done);
    localModel.set(LocalModelServing::State::ready, u"m"_s);
    clock.advance(250ms);
    TestWait::settle();
    ASSERT_TRUE(ready->value);
    EXPECT_EQ(ready->value->request.configuration.baseURLString, localhost);

    localModel.set(LocalModelServing::State::starting);
    const auto late = begin(SensitiveData::screenText);
    std::stop_source stop;
    const auto stopped = begin(SensitiveData::screenText, stop.get_token());
    stop.request_stop();
    TestWait::settle();
    EXPECT_TRUE(stopped->done);
    clock.advance(29'750ms);
    TestWait::settle();
    EXPECT_FALSE(late->done);
    clock.advance(250ms);
    TestWait::settle();
    EXPECT_TRUE(late->error) << "and nobody else may have it";
    const auto orphan = begin(SensitiveData::screenText);
    router.reset();
    clock.advance(250ms);
    TestWait::settle();
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
