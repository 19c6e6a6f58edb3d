#include "HttpFixture.h"
#include "SocketSpy.h"

#include "network/Redirect.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

namespace {

class RedirectTest : public HttpTest {
protected:
    static ScriptedServer::Script sending(const QByteArray &location, const QByteArray &body = {})
    {
        return ScriptedServer::answering(
            ScriptedServer::response("302 Found", body, "Location: " + location + "\r\n"));
    }
};

TEST(RedirectRuleTest, WhatTheNextHopTakesAlong)
{
    const auto outcome = [](const QByteArray &line) {
        const QByteArrayList words = line.split(' ');
        HttpRequest request;
        request.url = QUrl(u"https://a.test/x"_s);
        request.method = words[1];
        request.body = "body";
        for (const char *name : {"content-type", "Accept", "authorization", "Cookie", "X-Subscription-Token"})
            request.headers.push_back({name, "value"});
        const QUrl target(QString::fromLatin1(words[2]));
        const HttpRequest next = Redirect::following(request, words[0].toInt(), target);
        EXPECT_EQ(next.url, target);
        QByteArrayList kept{next.method, next.body};
        for (const HttpHeader &header : next.headers)
            kept.append(header.name);
        return QString::fromLatin1(kept.join(' '));
    };
    TestData::expect("network/redirects.txt", outcome);
}

TEST_F(RedirectTest, EachHopLeavesARowWithItsOwnHostAndBytes)
{
    ScriptedServer target(ScriptedServer::answering(ScriptedServer::response("404 Not Found", "there")));
    QUrl named = target.url(u"/next"_s);
    named.setHost(u"localhost"_s);
    ScriptedServer server(sending(named.toEncoded(), "moved"));
    HttpRequest request = post(server.url(), QByteArray(100'000, 'b'));
    request.headers = {{"Authorization", "Bearer key"}};
    const Ending ending = fetch(request);
    EXPECT_EQ(ending.status, 404);
    EXPECT_EQ(ending.url, named);
    EXPECT_EQ(target.requests().at(0).method(), "GET");
    EXPECT_FALSE(target.requests().at(0).hasHeader("Authorization"));

    ASSERT_EQ(rows().size(), 2U);
    EXPECT_EQ(rows()[0].host, u"127.0.0.1"_s);
    EXPECT_EQ(rows()[0].bytesSent, server.bytesReceived());
    EXPECT_EQ(rows()[0].bytesReceived, server.bytesSent());
    EXPECT_EQ(rows()[0].outcome.text(), u"HTTP 302"_s);
    EXPECT_EQ(rows()[1].host, u"localhost"_s);
    EXPECT_EQ(rows()[1].bytesSent, target.bytesReceived());
    EXPECT_EQ(rows()[1].bytesReceived, target.bytesSent());
    EXPECT_EQ(rows()[1].outcome.text(), u"HTTP 404"_s);
}

// A refused request leaves one empty row and no trace; so does a refused redirect, behind the row of the hop
// that led there.
TEST_F(RedirectTest, TheGateMeetsEveryHop)
{
    session = std::make_shared<CurlHttpSession>(EgressFeature::aiModel, SensitiveData::image, ledger, clock);
    const std::vector<std::tuple<QByteArray, std::string, std::string>> table{
        {"http://public.test/", "public.test",
         "public.test is not on this computer or your network, and this request carries your own data"},
        {"file:///etc/passwd", "(no host)", "file is not a web address"},
        {"http://[zz]/", "(no host)", "a request with no address"},
    };
    for (const auto &[location, host, reason] : table) {
        SCOPED_TRACE(location.constData());
        const std::string blocked = "Blocked: MorvaneGPT did not send this request: " + reason + '.';
        ScriptedServer server(sending(location));
        bool wasAsked = false;
        HttpRequest request = post(server.url(), "image");
        request.followsRedirect = [&](const QUrl &, const QUrl &) { return wasAsked = true; };
        const int connections = SocketSpy::connections();
        const int lookups = SocketSpy::lookups();
        EXPECT_EQ(fetch(get(QUrl(QString::fromLatin1(location)))).error, Code::Blocked);
        EXPECT_EQ(textOf(rows().back()), host + " 0/0 " + blocked);
        EXPECT_EQ(rows().back().startedAt, clock.now());
        EXPECT_EQ(SocketSpy::connections(), connections);
        EXPECT_EQ(fetch(request).error, Code::Blocked);
        EXPECT_FALSE(wasAsked);
        EXPECT_EQ(SocketSpy::connections(), connections + 1); // the first hop
        EXPECT_EQ(SocketSpy::lookups(), lookups);
        EXPECT_EQ(textOf(rows().back()), host + " 0/0 " + blocked);
        const NetworkLedger::Entry reached = rows().at(rows().size() - 2);
        EXPECT_EQ(reached.host, u"127.0.0.1"_s);
        EXPECT_EQ(reached.bytesSent, server.bytesReceived());
        EXPECT_EQ(reached.outcome.text(), u"HTTP 302"_s);
    }
    EXPECT_EQ(rows().size(), 3 * table.size());
}

// Because the caller wants no redirect, refuses this one, or because it leads nowhere.
TEST_F(RedirectTest, ARedirectThatIsNotFollowedIsTheAnswer)
{
    const ScriptedServer server(sending("/next", QByteArray(100'000, 'm')));
    QUrl asked;
    HttpRequest refusing = get(server.url());
    refusing.followsRedirect = [&](const QUrl &, const QUrl &to) {
        asked = to;
        return false;
    };
    HttpRequest answered = get(server.url());
    answered.redirects = HttpRequest::Redirects::Answered;
    const ScriptedServer pointless(
        ScriptedServer::answering(ScriptedServer::response("302 Found", QByteArray(100'000, 'm'))));
    for (const HttpRequest &request : {refusing, answered, get(pointless.url())}) {
        const Ending ending = fetch(request);
        EXPECT_EQ(ending.status, 302);
        EXPECT_EQ(ending.url, request.url);
        EXPECT_EQ(ending.body.size(), 100'000);
    }
    EXPECT_EQ(asked, server.url(u"/next"_s));
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(RedirectTest, GivesUpAfterTwentyHops)
{
    const ScriptedServer server(sending("/again"));
    EXPECT_EQ(fetch(get(server.url())).error, Code::TooManyRedirects);
    EXPECT_EQ(server.requests().size(), 21U);
}

TEST_F(RedirectTest, AnEndlessRedirectBodyIsNotReadOn)
{
    ScriptedServer server([](ScriptedServer::Connection &connection) {
        const auto request = connection.readRequest();
        if (request && request->target() == "/there") {
            connection.send(ScriptedServer::response("200 OK", "there"));
            return;
        }
        connection.send("HTTP/1.1 302 Found\r\nLocation: there\r\n\r\n");
        while (connection.send(QByteArray(65'536, 'x'))) {
        }
    });
    EXPECT_EQ(fetch(get(server.url())).body, "there");
}

// The caller may give up in the very moment it is asked.
TEST_F(RedirectTest, StoppingInsideTheRedirectRuleIsSafe)
{
    const ScriptedServer server(sending("/again"));
    HttpRequest request = get(server.url());
    for (const bool follows : {true, false}) {
        std::stop_source stop;
        request.followsRedirect = [&](const QUrl &, const QUrl &) {
            stop.request_stop();
            return follows;
        };
        const auto ending = begin(request, stop.get_token());
        awaitEnd(ending);
        EXPECT_TRUE(ending->isCancelled);
    }
    request.followsRedirect = [&](const QUrl &, const QUrl &) {
        session.reset();
        return true;
    };
    EXPECT_EQ(fetch(request).error, Code::Cancelled);
}

} // namespace

} // namespace morvane
