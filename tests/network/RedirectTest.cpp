#include "HttpFixture.h"
#include "SocketSpy.h"

#include "network/Redirect.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

namespace {

class RedirectTest : public HttpTest {
protected:
    static QByteArray to(const QByteArray &status, const QUrl &target, const QByteArray &body = "moved")
    {
        return ScriptedServer::response(status, body, "Location: " + target.toEncoded() + "\r\n");
    }
};

struct Rule {
    QByteArray status;
    QByteArray method;
    QByteArray nextMethod;
    QByteArray nextBody;
};

void PrintTo(const Rule &rule, std::ostream *out)
{
    *out << rule.status.first(3).constData() << ' ' << rule.method.constData();
}

class RedirectMethodTest : public RedirectTest, public testing::WithParamInterface<Rule> {};

TEST_P(RedirectMethodTest, MethodAndBodyOfTheNextHop)
{
    const auto &[status, method, nextMethod, nextBody] = GetParam();
    ScriptedServer target(ScriptedServer::answering(ScriptedServer::response("200 OK", "there")));
    ScriptedServer server(ScriptedServer::answering(to(status, target.url(u"/next"_s))));
    HttpRequest request = post(server.url(), "body");
    request.method = method;
    request.headers = {{"Content-Type", "text/plain"}, {"Accept", "text/*"}};
    const Ending ending = fetch(request);

    EXPECT_EQ(ending.body, "there");
    EXPECT_EQ(ending.url, target.url(u"/next"_s));
    const auto next = target.requests().at(0);
    EXPECT_EQ(next.method(), nextMethod);
    EXPECT_EQ(next.body, nextBody);
    EXPECT_EQ(next.hasHeader("Content-Type"), !nextBody.isEmpty());
    EXPECT_TRUE(next.hasHeader("Accept"));
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, RedirectMethodTest,
    testing::Values(Rule{"301 Moved", "POST", "GET", ""}, Rule{"302 Found", "POST", "GET", ""},
                    Rule{"302 Found", "PUT", "PUT", "body"}, Rule{"303 See Other", "POST", "GET", ""},
                    Rule{"303 See Other", "PUT", "GET", ""}, Rule{"307 Temporary", "POST", "POST", "body"},
                    Rule{"308 Permanent", "POST", "POST", "body"}));

TEST_F(RedirectTest, EachHopLeavesARowWithItsOwnHostAndBytes)
{
    ScriptedServer target(ScriptedServer::answering(ScriptedServer::response("404 Not Found", "there")));
    QUrl named = target.url();
    named.setHost(u"localhost"_s);
    ScriptedServer server(ScriptedServer::answering(to("302 Found", named)));
    EXPECT_EQ(fetch(post(server.url(), QByteArray(100'000, 'b'))).status, 404);

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

TEST_F(RedirectTest, TheRedirectItselfIsTheAnswerForWhoAsksForIt)
{
    ScriptedServer server(ScriptedServer::answering(to("302 Found", QUrl(u"ftp://elsewhere.test/"_s))));
    HttpRequest request = get(server.url());
    request.redirects = HttpRequest::Redirects::Answered;
    const Ending ending = fetch(request);
    EXPECT_EQ(ending.status, 302);
    EXPECT_EQ(ending.body, "moved");
    EXPECT_EQ(ending.url, server.url());
}

TEST_F(RedirectTest, OnlyTheSameOriginGetsCredentials)
{
    ScriptedServer other(ScriptedServer::answering(ScriptedServer::response("200 OK", "")));
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        while (const auto request = connection.readRequest()) {
            if (request->target() == "/first")
                connection.send(ScriptedServer::response("307 T", "", "Location: second\r\n"));
            else
                connection.send(to("307 T", other.url()));
        }
    });
    HttpRequest request = get(server.url(u"/first"_s));
    request.headers = {{"authorization", "Bearer key"},
                       {"Cookie", "a=b"},
                       {"X-Subscription-Token", "key"},
                       {"User-Agent", "agent"}};
    EXPECT_EQ(fetch(request).status, 200);
    ASSERT_EQ(server.requests().size(), 2U);
    const auto second = server.requests()[1];
    EXPECT_EQ(second.target(), "/second");
    EXPECT_TRUE(second.hasHeader("Authorization") && second.hasHeader("X-Subscription-Token"));
    const auto third = other.requests().at(0);
    EXPECT_FALSE(third.hasHeader("Authorization") || third.hasHeader("X-Subscription-Token") ||
                 third.hasHeader("Cookie"));
    EXPECT_TRUE(third.hasHeader("User-Agent"));
}

TEST_F(RedirectTest, SchemeAndPortArePartOfTheOrigin)
{
    const auto keepsKey = [](const QString &from, const QString &to) {
        HttpRequest request = get(QUrl(from));
        request.headers = {{"Authorization", "key"}};
        return !Redirect::following(request, 307, QUrl(to)).headers.empty();
    };
    EXPECT_TRUE(keepsKey(u"https://a.test/x"_s, u"https://A.test:443/y"_s));
    EXPECT_FALSE(keepsKey(u"https://a.test/x"_s, u"http://a.test/x"_s));
    EXPECT_FALSE(keepsKey(u"https://a.test/x"_s, u"https://a.test:8443/x"_s));
    EXPECT_FALSE(keepsKey(u"https://a.test/x"_s, u"https://b.a.test/x"_s));
}

TEST_F(RedirectTest, TheGateMeetsEveryHop)
{
    session = std::make_shared<CurlHttpSession>(EgressFeature::aiModel, SensitiveData::image, ledger, clock);
    const std::vector<std::pair<QByteArray, QString>> table{
        {"http://public.test/", u"public.test is not on this Mac or your network, and this request carries "
                                "your own data"_s},
        {"//public.test", u"public.test is not on this Mac or your network, and this request carries "
                          "your own data"_s},
        {"file:///etc/passwd", u"file is not a web address"_s},
        {"http://[zz]/", u"a request with no address"_s},
        {"https:///path", u"a request with no host"_s},
    };
    for (const auto &[location, reason] : table) {
        ScriptedServer server(ScriptedServer::answering(
            ScriptedServer::response("302 F", "", "Location: " + location + "\r\n")));
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

TEST_F(RedirectTest, ARefusedRedirectIsTheAnswer)
{
    ScriptedServer server(ScriptedServer::answering(
        ScriptedServer::response("302 Found", QByteArray(100'000, 'm'), "Location: /next\r\n")));
    HttpRequest request = get(server.url());
    QUrl asked;
    request.followsRedirect = [&](const QUrl &, const QUrl &to) {
        asked = to;
        return false;
    };
    const Ending ending = fetch(request);
    EXPECT_EQ(ending.status, 302);
    EXPECT_EQ(ending.body.size(), 100'000);
    EXPECT_EQ(asked, server.url(u"/next"_s));
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(RedirectTest, GivesUpAfterTwentyHops)
{
    ScriptedServer server(
        ScriptedServer::answering(ScriptedServer::response("302 Found", "", "Location: /again\r\n")));
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
        connection.send("HTTP/1.1 302 Found\r\nLocation: /there\r\n\r\n");
        while (connection.send(QByteArray(65'536, 'x'))) {
        }
    });
    EXPECT_EQ(fetch(get(server.url())).body, "there");
}

TEST_F(RedirectTest, WithoutALocationThereIsNothingToFollow)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("302 Found", "stay")));
    EXPECT_EQ(fetch(get(server.url())).body, "stay");
}

// The caller may give up in the very moment it is asked.
TEST_F(RedirectTest, StoppingInsideTheRedirectRuleIsSafe)
{
    ScriptedServer server(
        ScriptedServer::answering(ScriptedServer::response("302 Found", "", "Location: /again\r\n")));
    for (const bool follows : {true, false}) {
        std::stop_source stop;
        HttpRequest request = get(server.url());
        request.followsRedirect = [&](const QUrl &, const QUrl &) {
            stop.request_stop();
            return follows;
        };
        const auto ending = begin(request, stop.get_token());
        TestWait::until([&] { return ending->isDone; });
        EXPECT_TRUE(ending->isCancelled);
    }
    HttpRequest request = get(server.url());
    request.followsRedirect = [&](const QUrl &, const QUrl &) {
        session.reset();
        return true;
    };
    EXPECT_EQ(fetch(request).error, Code::Cancelled);
}

} // namespace

} // namespace morvane
