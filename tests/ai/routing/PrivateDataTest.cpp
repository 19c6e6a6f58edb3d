// Whole turns over the real HTTP client, with the sockets of the process watched: private data never leaves
// this machine and its network, whatever the settings, the names and their addresses say.

#include "RouterFixture.h"

#include "ai/providers/OllamaNativeProvider.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "async/Work.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "network/SocketSpy.h"
#include "support/ScriptedServer.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class PrivateDataTest : public testing::Test {
protected:
    // A turn as the chat runs it. Whatever goes wrong in it is fine here.
    void runTurn(SensitiveDataSet data)
    {
        TurnRequest turn;
        turn.carrying = data;
        turn.history = {{MessageRole::user, u"SECRET WORDS"_s}};
        if (data.testFlag(SensitiveData::image))
            turn.history.front().images = QStringList{u"data:image/png;base64,AA=="_s};
        try {
            OpenedTurn opened = TestWait::await(router.openTurn(std::move(turn), {}));
            static_cast<void>(readReply(router.stream(std::move(opened))));
        } catch (const ProviderError &) {
        }
        TestWait::settle();
    }

    // The addresses, with the port of `server` for those that lead to this machine.
    static std::vector<QString> hostForms(const ScriptedServer &server)
    {
        const QString port = u':' + QString::number(server.port());
        std::vector<QString> forms{
            u"http://127.0.0.1"_s + port,
            u"http://localhost"_s + port,
            u"http://localhost."_s + port,
            u"http://[::ffff:127.0.0.1]"_s + port,
            u"https://8.8.8.8/v1"_s,
            u"https://[2606:4700::1111]/v1"_s,
            u"https://[::ffff:8.8.8.8]/v1"_s,
            u"https://[::ffff:808:808%25lo]/v1"_s,
            u"https://010.010.010.010/v1"_s, // octal, as some resolvers read it
            u"https://0x8.0x8.0x8.0x8/v1"_s, // hexadecimal
            u"https://8.8.2056/v1"_s,        // short
            u"https://134744072/v1"_s,       // one number
            u"https://８.８.８.８/v1"_s,     // full width
            u"https://127.0.0.1@outside.test/v1"_s,
            u"https://127.0.0.1.outside.test/v1"_s,
            u"https://localhost.outside.test/v1"_s,
            u"https://outside.test./v1"_s,
            u"http://outside.test/v1"_s,
            u"https://outside.local/v1"_s,
            u"https://mixed.local/v1"_s,
            u"https://changing.local/v1"_s,
            u"https://changing.local./v1"_s,
            u"https://near.test/v1"_s,
        };
        return forms;
    }

    // Names lead where they lead for a first time again.
    static void setNames()
    {
        const QString outside = u"93.184.216.34"_s;
        for (const char *name :
             {"outside.test", "outside.test.", "127.0.0.1.outside.test", "outside.local",
              "localhost.outside.test", "8.8.2056", "134744072", "010.010.010.010", "0x8.0x8.0x8.0x8"})
            SocketSpy::setAddresses(name, {{outside}});
        SocketSpy::setAddresses("mixed.local", {{u"127.0.0.1"_s, outside}});
        SocketSpy::setAddresses("near.test", {{u"127.0.0.1"_s}});
        for (const char *name : {"changing.local", "changing.local."})
            SocketSpy::setAddresses(name, {{u"127.0.0.1"_s}, {outside}});
    }

    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    InMemorySettingsRepository settingsRepository;
    SettingsStore settings{settingsRepository};
    InMemoryKeychainService keychain;
    ProofLedger proofs;
    ScriptedLocalModel localModel;
    std::shared_ptr<OllamaNativeProvider> native = std::make_shared<OllamaNativeProvider>(network, clock);
    std::shared_ptr<OpenAICompatibleProvider> compatible =
        std::make_shared<OpenAICompatibleProvider>(network);
    Work work{clock};
    AIRequestRouter router{{.settings = settings,
                            .keychain = keychain,
                            .proofs = proofs,
                            .clock = clock,
                            .work = work,
                            .provider = compatible,
                            .nativeOllama = native,
                            .ollama = native.get(),
                            .privateCloud = {.endpoint = u"https://outside.test/cloud/v1"_s,
                                             .makeProvider = [this] { return compatible; }},
                            .localModel = &localModel,
                            .prompts = {.notes = [] { return std::optional(u"- SECRET NOTE"_s); }},
                            .tools = [] { return std::vector<AITool>{{.name = u"search_web"_s}}; }}};
};

TEST_F(PrivateDataTest, NoConnectionLeavesForAnyTurnThatCarriesPrivateData)
{
    const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("404 Not Found", "{}")));
    // A reply of this machine's server that asks for its question to be sent on.
    const ScriptedServer forwarding(ScriptedServer::answering(ScriptedServer::response(
        "307 Temporary Redirect", {}, "Location: https://outside.test/v1/chat/completions\r\n")));
    auto forms = hostForms(server);
    forms.push_back(forwarding.url(u"/v1"_s).toString());

    const std::vector<SensitiveDataSet> carried{
        SensitiveData::screenText, SensitiveData::memory, SensitiveData::image,
        SensitiveData::screenText | SensitiveData::memory | SensitiveData::image};
    for (const QString &form : forms) {
        for (const QString &model : {u"m"_s, u"m:cloud"_s}) {
            for (const bool isCloudOn : {false, true}) {
                for (const auto state : {LocalModelServing::State::absent, LocalModelServing::State::ready}) {
                    for (const SensitiveDataSet data : carried) {
                        SCOPED_TRACE((form + u' ' + model + u' ' + QString::number(data)).toStdString());
                        setNames();
                        settings.setBaseURLString(form);
                        settings.setModel(model);
                        settings.setHostedRelayEncrypted(isCloudOn);
                        localModel.set(state, u"gemma3:4b"_s);
                        const int before = SocketSpy::outsideConnections();
                        runTurn(data);
                        EXPECT_EQ(SocketSpy::outsideConnections(), before);
                    }
                }
            }
        }
        clock.advance(std::chrono::minutes(2)); // what was learnt of one form doesn't spare the next
    }
    for (const ScriptedServer::Request &request : server.requests())
        EXPECT_TRUE(request.head.contains("127.0.0.1") || request.head.contains("localhost"));
    EXPECT_GT(server.connections(), 0) << "what may be asked is asked";
}

TEST_F(PrivateDataTest, TheWatchSeesAnOrdinaryTurnLeave)
{
    setNames();
    settings.setBaseURLString(u"https://outside.test/v1"_s);
    settings.setModel(u"m"_s);
    const int before = SocketSpy::outsideConnections();
    runTurn({});
    EXPECT_GT(SocketSpy::outsideConnections(), before);
}

TEST_F(PrivateDataTest, NotesGoOnlyWhereTheyMay)
{
    const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("404 Not Found", "{}")));
    const auto bodies = [&server] {
        QByteArray all;
        for (const ScriptedServer::Request &request : server.requests())
            all += request.body;
        return all;
    };
    settings.setBaseURLString(server.url(u"/v1"_s).toString());
    settings.setModel(u"m:cloud"_s);
    runTurn({});
    EXPECT_TRUE(bodies().contains("SECRET WORDS"));
    EXPECT_FALSE(bodies().contains("SECRET NOTE")) << "a cloud model gets no notes";
    settings.setModel(u"m"_s);
    runTurn({});
    EXPECT_TRUE(bodies().contains("SECRET NOTE"));
    EXPECT_TRUE(ledger.snapshot().entries.back().carrying.testFlag(SensitiveData::memory));
}

} // namespace

} // namespace morvane
