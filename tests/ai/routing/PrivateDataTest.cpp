// Whole turns over the real HTTP client, with the sockets of the process watched: private data never leaves
// this machine and its network, whatever the settings, the names and their addresses say.

#include "RouterFixture.h"

#include "ai/providers/OllamaNativeProvider.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "ai/routing/HostPrivacy.h"
#include "async/Work.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "network/SocketSpy.h"
#include "support/ScriptedServer.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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

// On the real resolver, whose answers are scripted below the C library.
class HostPrivacyTest : public testing::Test {
protected:
    HostPrivacyTest()
    {
        hosts.setSubnets([] { return std::vector<PrivateNetworkAddress::Subnet>(); });
    }

    bool isPrivate(const QString &host) { return TestWait::await(hosts.isPrivate(host, {})); }

    ManualClock clock;
    Work work{clock};
    HostPrivacy hosts{clock, work};
};

TEST_F(HostPrivacyTest, ANameIsPrivateWhenAllItsAddressesAre)
{
    int number = 0;
    const auto outcome = [&](const QByteArray &addresses) {
        const QString name = u"row%1.local"_s.arg(number++);
        SocketSpy::setAddresses(name.toLatin1(),
                                {QString::fromLatin1(addresses).split(u' ', Qt::SkipEmptyParts)});
        return isPrivate(name) ? u"private"_s : u"not"_s;
    };
    TestData::expect("ai/near_hosts.txt", outcome);
    const int lookups = SocketSpy::lookups();
    EXPECT_TRUE(isPrivate(u"[FD00::1%eth0]"_s));
    EXPECT_FALSE(isPrivate(u"8.8.8.8"_s));
    EXPECT_TRUE(isPrivate(u"LocalHost."_s));
    EXPECT_EQ(SocketSpy::lookups(), lookups) << "what needs no lookup gets none";
}

TEST_F(HostPrivacyTest, AnAddressOnTheMachinesOwnNetworkIsNear)
{
    SocketSpy::setAddresses("neighbour.local", {{u"2001:db8:0:7f::9"_s}});
    hosts.setSubnets([] {
        return std::vector{
            PrivateNetworkAddress::Subnet{QByteArray::fromHex("20010db8000000400000000000000001"), 58}};
    });
    EXPECT_TRUE(isPrivate(u"neighbour.local"_s));
}

TEST_F(HostPrivacyTest, AnAnswerIsKeptForAMinuteAndAFailureIsNot)
{
    SocketSpy::setAddresses("moving.local", {{u"10.0.0.1"_s}, {u"8.8.8.8"_s}});
    EXPECT_TRUE(isPrivate(u"moving.local"_s));
    clock.advance(59'999ms);
    EXPECT_TRUE(isPrivate(u"Moving.local."_s));
    clock.advance(1ms);
    EXPECT_FALSE(isPrivate(u"moving.local"_s));

    EXPECT_FALSE(isPrivate(u"later.test"_s));
    SocketSpy::setAddresses("later.test", {{u"10.0.0.1"_s}});
    EXPECT_TRUE(isPrivate(u"later.test"_s));
}

TEST_F(HostPrivacyTest, AHangingResolverHoldsUpNobody)
{
    const auto outcome = TestWait::begin(hosts.isPrivate(u"slow.test"_s, {}));
    SocketSpy::slowLookupBegan.acquire();
    EXPECT_FALSE(outcome->done) << "the caller's thread went on";
    clock.advance(HostLookup::limit);
    TestWait::until([&] { return outcome->done; });
    EXPECT_EQ(outcome->value, false);
    SocketSpy::slowLookupMayEnd.release();

    // Its owner may go while it hangs.
    auto gone = std::make_unique<HostPrivacy>(clock, work);
    const auto orphan = TestWait::begin(gone->isPrivate(u"slow.test"_s, {}));
    SocketSpy::slowLookupBegan.acquire();
    gone.reset();
    clock.advance(HostLookup::limit);
    TestWait::until([&] { return orphan->done; });
    EXPECT_TRUE(orphan->error);
    SocketSpy::slowLookupMayEnd.release();
}

} // namespace

} // namespace morvane
