#include "ai/nearby/ModelServerBrowser.h"
#include "ai/nearby/ServerAddress.h"
#include "async/Work.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

using App = ModelServerApp;
using Code = TransportError::Code;

namespace {

// "found: a, b", or the words of the failure with the sign that help shows.
QString told(const ModelServerBrowser &browser)
{
    const QString help = browser.needsNetworkAccessHelp() ? u" [help]"_s : QString();
    if (const auto *found = std::get_if<ModelServerBrowser::Found>(&browser.state()))
        return u"found: "_s + found->models.join(u", "_s) + help;
    if (const auto *failed = std::get_if<ModelServerBrowser::Failed>(&browser.state()))
        return failed->text + help;
    return std::holds_alternative<ModelServerBrowser::Idle>(browser.state()) ? u"idle"_s : u"searching"_s;
}

const QString otherReply = u"Reached that computer, but no model server answered. Is Ollama running there?"_s;
const QString unreachable = u"Couldn't reach that computer."_s;
const QString silent = u"That computer didn't respond. Is it awake and on the same network?"_s;

class ModelServerBrowserTest : public testing::Test {
protected:
    // Ends what a test left running, so that nothing outlives its services.
    void TearDown() override
    {
        browser.reset();
        TestWait::settle();
        work.end();
        TestWait::settle();
    }
    QString probe(const QString &text, App app = App::ollama)
    {
        browser.probe(text, app);
        TestWait::until([&] { return told(browser) != u"searching"_s; });
        return told(browser);
    }

    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    Work work{clock};
    ModelServerBrowser browser{network, work};
};

TEST_F(ModelServerBrowserTest, JudgesWhatAServerAnswers)
{
    const auto json = [](const QByteArray &body) { return ScriptedServer::response("200 OK", body); };
    const std::vector<std::pair<QByteArray, QString>> rows{
        {json(R"({"data":[{"id":"qwen2.5:7b"},{"id":"gemma3:4b"}]})"), u"found: gemma3:4b, qwen2.5:7b"_s},
        {json(R"({"data":[]})"), u"Connected, but that server has no models installed yet."_s},
        {json(R"({"error":"no"})"), otherReply},
        {json("<html>It works!</html>"), otherReply},
        {ScriptedServer::response("404 Not Found", R"({"data":[{"id":"a"}]})"), otherReply},
        {ScriptedServer::response("302 Found", "", "Location: https://example.com/models\r\n"), otherReply},
        {json(QByteArray(17 * 1024 * 1024, ' ')), otherReply},
        {"SSH-2.0-OpenSSH_9.2\r\n", unreachable},
        {"", unreachable},
    };
    for (const auto &[response, words] : rows) {
        ScriptedServer server([&response = response](ScriptedServer::Connection &connection) {
            connection.readRequest();
            connection.send(response);
        });
        EXPECT_EQ(probe(server.url().authority()), words) << response.left(60).toStdString();
        EXPECT_EQ(server.requests().at(0).target(), "/v1/models");
    }
    EXPECT_EQ(ledger.snapshot().entries.at(0).feature, EgressFeature::aiSetup);
}

TEST_F(ModelServerBrowserTest, TellsRefusalFromSilenceAndNeverWaitsForLong)
{
    int closed = 0;
    {
        ScriptedServer server({});
        closed = server.port();
    }
    EXPECT_EQ(
        probe(u"127.0.0.1:%1"_s.arg(closed), App::other),
        u"Found that computer, but it's refusing connections. The model server usually needs to be told to "
        u"accept them from other computers. See the setup steps below. [help]"_s);

    ScriptedServer server([](ScriptedServer::Connection &connection) { connection.awaitClose(); });
    browser.probe(server.url().authority(), App::ollama);
    EXPECT_EQ(told(browser), u"searching"_s); // and the help of the former one is gone
    TestWait::until([&] { return server.connections() == 1; });
    clock.advance(ModelServerBrowser::patience);
    TestWait::until([&] { return told(browser) == silent; });
    browser.probe(server.url().authority(), App::ollama);
    TestWait::until([&] { return server.connections() == 2; });
    browser.reset();
    TestWait::until([&] { return server.closedByPeer() == 2; });
    EXPECT_EQ(told(browser), u"idle"_s);
}

// Addresses that can't be had on every machine.
TEST(ModelServerBrowserPortsTest, TriesTheUsualPortsAndSaysTheMostThatItLearned)
{
    ManualClock clock;
    Work work(clock);
    const auto failing = [](Code code) {
        return FakeHttpSession::Answer{.sendError = std::make_exception_ptr(TransportError(code, u"So."_s))};
    };
    const FakeHttpSession::Answer page{.status = 200, .pieces = {"It works!"}};
    const FakeHttpSession::Answer list{.status = 200, .pieces = {R"([{"id":"m"}])"}};
    const QString noName = u"Couldn't find a computer with that name on your network."_s;
    struct Row {
        App app;
        std::vector<FakeHttpSession::Answer> answers;
        QString ports;
        QString words;
    };
    for (
        const Row &row : {
            Row{App::ollama, {failing(Code::HostNotFound)}, u"11434"_s, noName},
            Row{App::lmStudio, {failing(Code::TimedOut)}, u"1234"_s, silent},
            Row{App::lmStudio, {failing(Code::Blocked)}, u"1234"_s, unreachable},
            Row{App::other, {failing(Code::CannotConnect), list}, u"8080 8000"_s, u"found: m"_s},
            Row{App::other, {page, list}, u"8080 8000"_s, u"found: m"_s},
            Row{App::other, {list}, u"8080"_s, u"found: m"_s},
            Row{App::other, {failing(Code::TimedOut)}, u"8080"_s, silent},
            Row{App::other,
                {page, failing(Code::CannotConnect)},
                u"8080 8000"_s,
                u"Reached that computer, but no model server answered. Is the model server running there?"_s},
        }) {
        FakeHttpSessionProvider network;
        ModelServerBrowser browser(network, work);
        for (const auto &answer : row.answers)
            network.fake->answer(answer);
        const LogCapture log;
        browser.probe(u"box"_s, row.app);
        TestWait::until([&] { return told(browser) != u"searching"_s; });
        QStringList ports;
        for (const HttpRequest &request : network.fake->requests())
            ports += QString::number(request.url.port());
        EXPECT_EQ(ports.join(u' '), row.ports);
        EXPECT_EQ(told(browser), row.words);
        EXPECT_EQ(log.lines().join(u'\n'), row.words.startsWith(u"found"_s)
                                               ? u"ai-provider: Discovered 1 models on a model server"_s
                                               : QString());
        browser.probe(u" "_s, row.app);
        EXPECT_EQ(told(browser), u"That doesn't look like a computer name or address."_s);
        EXPECT_EQ(network.fake->requests().size(), row.answers.size());
    }
}

} // namespace

TEST(ServerAddressTest, MakesBaseAddressesOfWhatPeopleType)
{
    const std::vector<std::pair<QString, QString>> rows{
        {u" box: "_s, u"http://box.local:8080/v1 http://box.local:8000/v1"_s},
        {u"Box.local."_s, u"http://Box.local.:8080/v1 http://Box.local.:8000/v1"_s},
        {u"box:1234"_s, u"http://box.local:1234/v1"_s},
        {u"192.168.1.5/api/"_s, u"http://192.168.1.5:8080/api http://192.168.1.5:8000/api"_s},
        {u"HTTP://192.168.1.5:80"_s, u"http://192.168.1.5:80/v1"_s},
        {u"fd00::1"_s, u"http://[fd00::1]:8080/v1 http://[fd00::1]:8000/v1"_s},
        {u"[fd00::1]:99"_s, u"http://[fd00::1]:99/v1"_s},
        {u"localhost"_s, u"http://localhost:8080/v1 http://localhost:8000/v1"_s},
        {u"https://models.example.com"_s, u"https://models.example.com/v1"_s},
        // Outside only with https, and nothing that isn't a place alone.
        {u"models.example.com"_s, {}},
        {u"8.8.8.8"_s, {}},
        {u"0x7f.0.0.1"_s, {}},
        {u"2001:db8::1"_s, {}},
        {u"ftp://box"_s, {}},
        {u"user:word@box"_s, {}},
        {u"https://user@models.example.com"_s, {}},
        {u"box?x=1"_s, {}},
        {u"box:0"_s, {}},
        {u"box:99999"_s, {}},
        {u"Anna’s box"_s, {}},
        {u"küche"_s, {}},
        {u" \n"_s, {}},
        {u"http://"_s, {}},
        {u"://"_s, {}},
        {QString(600, u'b'), {}},
    };
    for (const auto &[text, addresses] : rows)
        EXPECT_EQ(ServerAddress::candidates(text, {8080, 8000}).join(u' '), addresses)
            << text.left(40).toStdString();
}

} // namespace morvane
