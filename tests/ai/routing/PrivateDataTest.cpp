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
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class PrivateDataTest : public RouterFixture {
protected:
    PrivateDataTest()
    {
        services.provider = client;
        services.nativeOllama = ollama;
        services.ollama = ollama.get();
        services.privateCloud = {.endpoint = u"https://outside.test/cloud/v1"_s,
                                 .makeProvider = [this] { return client; }};
        services.prompts = {.notes = [] { return std::optional(u"- SECRET NOTE"_s); }};
        services.tools = [] { return std::vector<AITool>{{.name = u"search_web"_s}}; };
        router = std::make_unique<AIRequestRouter>(services); // on the resolver of the system
    }

    // A turn as the chat runs it. Whatever goes wrong in it is fine here.
    void runTurn(SensitiveDataSet data)
    {
        TurnRequest turn;
        turn.carrying = data;
        turn.history = {{MessageRole::user, u"SECRET WORDS"_s, {}}};
        if (data.testFlag(SensitiveData::image))
            turn.history.front().images = QStringList{u"data:image/png;base64,AA=="_s};
        try {
            static_cast<void>(readReply(router->stream(open(std::move(turn)))));
        } catch (const ProviderError &) {
        }
        TestWait::settle();
    }

    // Names lead where they lead for a first time again.
    static void setNames()
    {
        for (const QByteArray &line : TestData::lines("ai/host_names.txt")) {
            QStringList answers = QString::fromLatin1(line).split(u'|');
            const QByteArray name = answers.takeFirst().toLatin1();
            std::vector<QStringList> addresses;
            for (const QString &answer : answers)
                addresses.push_back(answer.split(u' '));
            SocketSpy::setAddresses(name, addresses);
        }
    }

    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    std::shared_ptr<OllamaNativeProvider> ollama = std::make_shared<OllamaNativeProvider>(network);
    std::shared_ptr<OpenAICompatibleProvider> client = std::make_shared<OpenAICompatibleProvider>(network);
};

TEST_F(PrivateDataTest, NoConnectionLeavesForAnyTurnThatCarriesPrivateData)
{
    const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("404 Not Found", "{}")));
    // A reply of this machine's server that asks for its question to be sent on.
    const ScriptedServer forwarding(ScriptedServer::answering(ScriptedServer::response(
        "307 Temporary Redirect", {}, "Location: https://outside.test/v1/chat/completions\r\n")));
    QByteArrayList forms = TestData::lines("ai/host_forms.txt");
    for (QByteArray &form : forms)
        form.replace("PORT", QByteArray::number(server.port()));
    forms.push_back(forwarding.url(u"/v1"_s).toEncoded());
    const std::vector<SensitiveDataSet> carried{
        SensitiveData::screenText, SensitiveData::memory, SensitiveData::image,
        SensitiveData::screenText | SensitiveData::memory | SensitiveData::image};
    for (const QByteArray &form : forms) {
        for (const QString &model : {u"m"_s, u"m:cloud"_s}) {
            for (const bool isCloudOn : {false, true}) {
                for (const auto state : {LocalModelServing::State::absent, LocalModelServing::State::ready}) {
                    for (const SensitiveDataSet data : carried) {
                        SCOPED_TRACE(
                            (form + ' ' + model.toUtf8() + ' ' + QByteArray::number(data)).toStdString());
                        setNames();
                        configure(QString::fromUtf8(form), model);
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
    configure(u"https://outside.test/v1"_s, u"m"_s);
    const int before = SocketSpy::outsideConnections();
    runTurn({});
    EXPECT_GT(SocketSpy::outsideConnections(), before);
}

} // namespace

} // namespace morvane
