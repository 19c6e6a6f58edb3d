#include "HttpFixture.h"
#include "SocketSpy.h"

#include "network/Redirect.h"

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
    const QUrl from(u"https://a.test/x"_s);
    const struct {
        int status;
        QByteArray method;
        QString target;
        QByteArray nextMethod;
        bool keepsBody, keepsKey;
    } cases[] = {
        {301, "POST", u"https://A.test:443/y"_s, "GET", false, true},
        {302, "POST", u"https://a.test/y"_s, "GET", false, true},
        {302, "PUT", u"https://a.test/y"_s, "PUT", true, true},
        {303, "POST", u"https://a.test/y"_s, "GET", false, true},
        {303, "PUT", u"https://a.test/y"_s, "GET", false, true},
        {303, "HEAD", u"https://a.test/y"_s, "HEAD", true, true},
        {307, "POST", u"https://a.test/y"_s, "POST", true, true},
        {308, "POST", u"https://a.test/y"_s, "POST", true, true},
        // Scheme, host and port are the origin; another one gets no credential.
        {307, "POST", u"http://a.test:443/x"_s, "POST", true, false},
        {307, "POST", u"https://a.test:8443/x"_s, "POST", true, false},
        {307, "POST", u"https://b.a.test/x"_s, "POST", true, false},
    };
    for (const auto &[status, method, target, nextMethod, keepsBody, keepsKey] : cases) {
        SCOPED_TRACE(std::to_string(status) + ' ' + target.toStdString());
        HttpRequest request;
        request.url = from;
        request.method = method;
        request.body = "body";
        request.headers = {{"content-type", "text/plain"}, {"Accept", "text/*"}};
        for (const char *name : {"authorization", "Cookie", "X-Subscription-Token"})
            request.headers.push_back({name, "key"});
        const HttpRequest next = Redirect::following(request, status, QUrl(target));
        EXPECT_EQ(next.url, QUrl(target));
        EXPECT_EQ(next.method, nextMethod);
        EXPECT_EQ(next.body, keepsBody ? "body" : "");
        EXPECT_EQ(next.headers.size(), (keepsBody ? 1U : 0U) + 1U + (keepsKey ? 3U : 0U));
    }
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

TEST_F(RedirectTest, TheGateMeetsEveryHop)
{
    session = std::make_shared<CurlHttpSession>(EgressFeature::aiModel, SensitiveData::image, ledger, clock);
    const std::vector<std::pair<QByteArray, QString>> table{
        {"//public.test", u"public.test is not on this Mac or your network, and this request carries your "
                          "own data"_s},
        {"file:///etc/passwd", u"file is not a web address"_s},
        {"http://[zz]/", u"a request with no address"_s},
    };
    for (const auto &[location, reason] : table) {
        ScriptedServer server(sending(location));
        bool wasAsked = false;
        HttpRequest request = post(server.url(), "image");
        request.followsRedirect = [&](const QUrl &, const QUrl &) { return wasAsked = true; };
        const int connections = SocketSpy::connections();
        const int lookups = SocketSpy::lookups();
        EXPECT_EQ(fetch(request).error, Code::Blocked) << location.constData();
        EXPECT_FALSE(wasAsked);
        EXPECT_EQ(SocketSpy::connections(), connections + 1); // the first hop
        EXPECT_EQ(SocketSpy::lookups(), lookups);
        EXPECT_EQ(rows().back().outcome.text(),
                  u"Blocked: MorvaneGPT did not send this request: "_s + reason + u'.');
        EXPECT_EQ(rows().back().host, u"127.0.0.1"_s);
        EXPECT_GT(rows().back().bytesSent, 0);
    }
    EXPECT_EQ(rows().size(), table.size());
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
    ASSERT_EQ(rows().size(), 21U);
    EXPECT_EQ(rows()[19].outcome.text(), u"HTTP 302"_s);
    EXPECT_EQ(rows()[20].outcome.text(), u"Failed: The server redirected the request too often."_s);
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
        TestWait::until([&] { return ending->isDone; });
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
