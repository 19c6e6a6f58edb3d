#include "RouterFixture.h"

#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A server of four models on this machine; the one in use can do nothing but write.
class ModelChoiceTest : public RouterFixture {
protected:
    ModelChoiceTest()
    {
        probes.isOllama = true;
        probes.models.emplace();
        for (const QByteArray &line : TestData::lines("ai/served_models.txt")) {
            QStringList words = QString::fromLatin1(line).split(u' ');
            const QString name = words.takeFirst();
            probes.models->push_back({name, words.removeAll(u"elsewhere"_s) > 0});
            probes.abilities[name] = words;
        }
        services.tools = [] { return std::vector<AITool>{{.name = u"search_web"_s}}; };
        start();
    }

    std::optional<QString> vision(bool withImage = true)
    {
        std::vector<ContextBuilder::HistoryItem> history{{MessageRole::user, u"q"_s}};
        if (withImage)
            history.insert(history.begin(), {MessageRole::user, u"look"_s, {u"data:"_s}});
        return TestWait::await(router->visionModel(history, {}));
    }
    std::optional<QString> tools(SensitiveDataSet carrying = {})
    {
        return TestWait::await(router->toolsModel(carrying, {}));
    }
};

TEST_F(ModelChoiceTest, AModelOfTheServerItselfStandsInAndIsAskedForOnce)
{
    EXPECT_EQ(vision(false), std::nullopt);
    EXPECT_TRUE(probes.asked.isEmpty()) << "no image, no question";
    EXPECT_EQ(vision(), u"gemma3:4b"_s) << "the first that sees, but not one that runs elsewhere";
    EXPECT_EQ(tools(), u"qwen2.5:7b"_s) << "the largest by its name, but not one that runs elsewhere";
    EXPECT_EQ(TestWait::await(router->seesImages({})), false);
    probes.asked.clear();
    EXPECT_EQ(vision(), u"gemma3:4b"_s);
    EXPECT_EQ(tools(), u"qwen2.5:7b"_s);
    EXPECT_TRUE(probes.asked.isEmpty()) << probes.asked.join(u", "_s).toStdString();
}

TEST_F(ModelChoiceTest, AnAbleOrUnknownModelStays)
{
    configure(u"http://localhost:11434/v1"_s, u"mistral"_s);
    EXPECT_EQ(vision(), std::nullopt);
    EXPECT_EQ(tools(), std::nullopt);
    configure(u"http://localhost:11434/v1"_s, u"untold"_s);
    EXPECT_EQ(vision(), std::nullopt) << "its server doesn't tell";
    EXPECT_EQ(tools(), std::nullopt);
    EXPECT_FALSE(probes.asked.contains(u"show gemma3:4b"_s)) << "no other is looked for";
}

TEST_F(ModelChoiceTest, NobodyIsAskedInVain)
{
    configure(u"https://service.example"_s, u"m"_s);
    EXPECT_EQ(vision(), std::nullopt);
    EXPECT_EQ(tools(SensitiveData::screenText), std::nullopt);
    EXPECT_EQ(probes.asked, QStringList()) << "a server outside may not even be asked";
    configure(u"http://localhost:11434/v1"_s, u"llama3.2:3b"_s);
    turnOnPrivateCloud();
    EXPECT_EQ(vision(), std::nullopt) << "the private cloud has one model";
    EXPECT_EQ(tools(), std::nullopt);
    settings.setHostedChatEnabled(false);
    services.tools = [] { return std::vector<AITool>(); };
    start();
    EXPECT_EQ(tools(), std::nullopt);
    EXPECT_EQ(probes.asked, QStringList());
}

// So that nobody is asked again for each turn, and what can't be known yet isn't taken for a no.
TEST_F(ModelChoiceTest, OnlyASearchThatHeardAllIsKeptAndOnlyUntilOtherModelsMayBeThere)
{
    probes.models = {{{u"llama3.2:3b"_s}}};
    EXPECT_EQ(tools(), std::nullopt);
    probes.models = {{{u"llama3.2:3b"_s}, {u"qwen2.5:7b"_s}}};
    EXPECT_EQ(tools(), std::nullopt) << "kept";
    localModel.set(LocalModelServing::State::ready, u"qwen2.5:7b"_s);
    EXPECT_EQ(tools(), u"qwen2.5:7b"_s);

    localModel.set(LocalModelServing::State::absent);
    probes.onQuestion = [this] { probes.isUp = probes.asked.last() != "show qwen2.5:7b"_L1; };
    EXPECT_EQ(tools(), std::nullopt) << "the one that is able wasn't heard";
    probes.onQuestion = {};
    probes.isUp = true;
    EXPECT_EQ(tools(), u"qwen2.5:7b"_s);

    localModel.set(LocalModelServing::State::absent);
    probes.models = {{{u"llama3.2:3b"_s}, {u"untold:9b"_s}, {u"qwen2.5:7b"_s}}};
    probes.onQuestion = [this] {
        if (probes.asked.last() == "show untold:9b"_L1)
            clock.advance(5s);
    };
    EXPECT_EQ(tools(), std::nullopt) << "the search ended before all were asked";
    probes.onQuestion = {};
    EXPECT_EQ(tools(), u"qwen2.5:7b"_s);
}

TEST_F(ModelChoiceTest, TheProbeDecidesWhichProviderSpeaks)
{
    const auto providerOf = [this](const QString &baseURL) {
        AIConfiguration configuration;
        configuration.baseURLString = baseURL;
        configuration.model = u"m"_s;
        return TestWait::await(router->provider(configuration, {}));
    };
    EXPECT_EQ(providerOf(u"http://localhost:11434/v1"_s), native);
    EXPECT_EQ(providerOf(u"http://localhost:11434/other?x"_s), native);
    EXPECT_EQ(probes.asked, (QStringList{u"version"_s, u"tags"_s})) << "once for one server";
    EXPECT_TRUE(
        log.lines().contains(u"ai-provider: Server probe: http://localhost:11434 is Ollama = true"_s));
    probes.isOllama = false;
    EXPECT_EQ(providerOf(u"https://ollama.example/v1"_s), compatible) << "a name proves nothing";
    EXPECT_EQ(providerOf(u"not an address"_s), compatible);
    EXPECT_EQ(providerOf(u"https://cloud.invalid/v1/"_s), sealed);
    EXPECT_EQ(probes.asked.size(), 3);
    settings.setApiKeyOrigin(u"https://ollama.example"_s); // who asks with a key may hear otherwise
    probes.isOllama = true;
    EXPECT_EQ(providerOf(u"https://ollama.example/v1"_s), native);
    probes.models.reset();
    EXPECT_EQ(providerOf(u"https://versioned.example/api"_s), compatible) << "a version proves nothing";
}

TEST_F(ModelChoiceTest, WhatNobodyAnsweredAndAServerThatShowsAListSinceAreAskedAgain)
{
    configure(u"https://ollama.example/v1"_s, u"gemma3:4b"_s);
    probes.isUp = false; // it is still starting
    EXPECT_EQ(open().provider, compatible);
    probes.isUp = true;
    EXPECT_EQ(open().provider, native);

    // Another server has taken the place of the one that was probed.
    configure(u"http://localhost:11434/v1"_s, u"gemma3:4b"_s);
    probes.isOllama = false;
    probes.models = std::nullopt;
    EXPECT_EQ(open().provider, compatible);
    probes.isOllama = true;
    probes.models = {{{u"gemma3:4b"_s}}};
    clock.advance(60s);
    EXPECT_EQ(open().provider, native);
}

TEST_F(ModelChoiceTest, AStandInIsOfTheServerThatTheTurnGoesTo)
{
    probes.onQuestion = [this] { configure(u"http://192.168.1.5:11434/v1"_s, u"able"_s); };
    const AIConfiguration opened = open().request.configuration;
    EXPECT_EQ(opened.model + u" at "_s + opened.baseURLString, u"able at http://192.168.1.5:11434/v1"_s);
}

} // namespace

} // namespace morvane
