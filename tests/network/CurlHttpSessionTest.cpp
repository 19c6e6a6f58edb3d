#include "HttpFixture.h"
#include "SocketSpy.h"

#include "utils/files/PrivateFile.h"

#include <QTemporaryDir>

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

namespace {

class CurlHttpSessionTest : public HttpTest {};

// Body and status come out right, and the ledger's counts are those of the server's side.
TEST_F(CurlHttpSessionTest, EachFormOfResponseArrivesAndIsCountedToTheByte)
{
    const QByteArray gzipOfHello = QByteArray::fromHex("1f8b0800000000000003cb48cdc9c9070086a6103605000000");
    const QByteArray packed = ScriptedServer::response("200 OK", gzipOfHello, "Content-Encoding: gzip\r\n");
    const struct {
        const char *name;
        QByteArray method;
        QByteArray response; // as the server sends it
        int status;
        QByteArray body;
        QByteArray offeredEncoding;
    } cases[] = {
        {"length", "GET", ScriptedServer::response("200 OK", "hello"), 200, "hello", {}},
        {"no reason", "GET", "HTTP/1.1 418\r\nContent-Length: 0\r\n\r\n", 418, "", {}},
        {"chunked",
         "GET",
         "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
         "2;x=y\r\nhe\r\n3\r\nllo\r\n0\r\nTrailer-Field: 1\r\n\r\n",
         200,
         "hello",
         {}},
        {"until close", "GET", "HTTP/1.0 500 Oops\r\n\r\nhello", 500, "hello", {}},
        {"no content", "DELETE", "HTTP/1.1 204 No Content\r\n\r\n", 204, "", {}},
        {"interim",
         "POST",
         "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n" + ScriptedServer::response("201 Created", "x"),
         201,
         "x",
         {}},
        {"head", "HEAD", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", 200, "", {}},
        {"gzip", "GET", packed, 200, "hello", "gzip"},
        {"gzip, not offered", "GET", packed, 200, gzipOfHello, {}},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.name);
        ScriptedServer server([&](ScriptedServer::Connection &connection) {
            connection.readRequest();
            connection.send(each.response);
        });
        HttpRequest request = get(server.url());
        request.method = each.method;
        request.headers = {{"X-Empty", ""}};
        if (!each.offeredEncoding.isEmpty())
            request.headers.push_back({"Accept-Encoding", each.offeredEncoding});
        ledger.clear();
        const Ending ending = fetch(request);

        EXPECT_EQ(ending.error, std::nullopt);
        EXPECT_EQ(ending.status, each.status);
        EXPECT_EQ(ending.body, each.body);
        const auto seen = server.requests().at(0);
        EXPECT_EQ(seen.method(), each.method);
        EXPECT_TRUE(seen.hasHeader("X-Empty"));
        EXPECT_EQ(seen.hasHeader("Accept-Encoding"), !each.offeredEncoding.isEmpty());
        ASSERT_EQ(rows().size(), 1U);
        EXPECT_EQ(rows()[0].bytesSent, server.bytesReceived());
        EXPECT_EQ(rows()[0].bytesReceived, server.bytesSent());
        EXPECT_EQ(rows()[0].outcome, EgressOutcome{EgressOutcome::Completed{each.status}});
    }
}

TEST_F(CurlHttpSessionTest, SendsLargeBodiesWholeAndCountsThem)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "ok")));
    for (const qsizetype size : {0, 1, 65'535, 65'537, 3'000'000}) {
        const QByteArray body(size, 'b');
        const qint64 before = server.bytesReceived();
        EXPECT_EQ(fetch(post(server.url(), body)).body, "ok");
        EXPECT_EQ(server.requests().back().body, body);
        EXPECT_EQ(rows().back().bytesSent, server.bytesReceived() - before) << size;
    }
    const ScriptedServer::Request request = server.requests().back();
    EXPECT_FALSE(request.hasHeader("Expect"));
    EXPECT_FALSE(request.hasHeader("Content-Type"));
    EXPECT_EQ(server.connections(), 1); // kept and used again
}

// Far more than may wait unread: decoding is held back as the sender is, and nothing gets lost.
TEST_F(CurlHttpSessionTest, DecodesABodyThatUnpacksToAThousandTimesItsSize)
{
    const QByteArray unpacked(20'000'000, 'z');
    const QByteArray zlib = qCompress(unpacked, 9).sliced(4); // without Qt's own length
    ScriptedServer server(
        ScriptedServer::answering(ScriptedServer::response("200 OK", zlib, "Content-Encoding: deflate\r\n")));
    HttpRequest request = get(server.url());
    request.headers = {{"Accept-Encoding", "deflate"}};
    const Ending ending = fetch(request);
    EXPECT_TRUE(ending.body == unpacked);
    EXPECT_EQ(rows()[0].bytesReceived, server.bytesSent());
}

TEST_F(CurlHttpSessionTest, AddressesAreSentAsTheyAreAndHeadersKeepOrderAndCase)
{
    ScriptedServer server(ScriptedServer::answering(
        ScriptedServer::response("200 OK", "", "X-One: a\r\nx-one:b\r\nX-Folded: c\r\n d\r\nX-Empty:\r\n")));
    QUrl url = server.url(u"/a%2Fb?q=%20x#part"_s);
    url.setUserInfo(u"user:secret"_s); // could pass for the host; never sent
    HttpResponse response = TestWait::await(session->send(get(url), {}));
    EXPECT_EQ(response.header("X-ONE"), "a");
    EXPECT_EQ(response.header("X-Folded"), "c d");
    EXPECT_EQ(response.header("X-Empty"), "");
    EXPECT_EQ(response.header("X-Two"), std::nullopt);
    EXPECT_EQ(response.headers.size(), 5U);
    EXPECT_EQ(server.requests()[0].target(), "/a%2Fb?q=%20x");
    EXPECT_FALSE(server.requests()[0].hasHeader("Authorization"));
}

TEST_F(CurlHttpSessionTest, TakesNothingFromTheMachineAndKeepsNoCookies)
{
    const ScriptedServer proxy(ScriptedServer::answering(ScriptedServer::response("200 OK", "proxy")));
    const ScriptedServer server(
        ScriptedServer::answering(ScriptedServer::response("200 OK", "", "Set-Cookie: a=b; Path=/\r\n")));
    const QTemporaryDir home;
    PrivateFile::write(home.filePath(u".netrc"_s), "default login user password secret\n");
    const std::vector<std::pair<const char *, QByteArray>> environment{
        {"http_proxy", proxy.url().toEncoded()},
        {"all_proxy", proxy.url().toEncoded()},
        {"HOME", home.path().toUtf8()}};
    std::vector<QByteArray> former;
    for (const auto &[name, value] : environment) {
        former.push_back(qgetenv(name));
        qputenv(name, value);
    }
    fetch(get(server.url()));
    fetch(get(server.url()));
    for (std::size_t i = 0; i < former.size(); ++i)
        former[i].isNull() ? qunsetenv(environment[i].first) : qputenv(environment[i].first, former[i]);
    EXPECT_EQ(proxy.connections(), 0);
    ASSERT_EQ(server.requests().size(), 2U);
    EXPECT_FALSE(server.requests()[1].hasHeader("Cookie"));
    EXPECT_FALSE(server.requests()[1].hasHeader("Authorization"));
}

TEST_F(CurlHttpSessionTest, ARefusedRequestLeavesOneEmptyRowAndNoTrace)
{
    session = std::make_shared<CurlHttpSession>(EgressFeature::aiModel, SensitiveData::memory, ledger, clock);
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "")));
    const int connections = SocketSpy::connections();
    const int lookups = SocketSpy::lookups();
    for (const QUrl &url : {QUrl(u"http://public.test/"_s), QUrl(u"ftp://127.0.0.1/"_s), QUrl()})
        EXPECT_EQ(fetch(get(url)).error, Code::Blocked);
    EXPECT_EQ(SocketSpy::connections(), connections);
    EXPECT_EQ(SocketSpy::lookups(), lookups);

    ASSERT_EQ(rows().size(), 3U);
    EXPECT_EQ(textOf(rows()[0]),
              "public.test 0/0 Blocked: MorvaneGPT did not send this request: public.test is not on this Mac "
              "or your network, and this request carries your own data.");
    EXPECT_EQ(textOf(rows()[2]),
              "(no host) 0/0 Blocked: MorvaneGPT did not send this request: a request with no address.");
    EXPECT_EQ(rows()[0].startedAt, clock.now());

    EXPECT_EQ(fetch(get(server.url())).status, 200);
    EXPECT_GT(SocketSpy::connections(), connections); // the spy does see one
}

TEST_F(CurlHttpSessionTest, SpeaksIPv6)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "six")),
                          ScriptedServer::Family::IPv6);
    if (!server.isListening())
        GTEST_SKIP() << "this machine has no IPv6 loopback";
    EXPECT_EQ(fetch(get(server.url())).body, "six");
    EXPECT_EQ(rows()[0].host, u"::1"_s);
}

TEST_F(CurlHttpSessionTest, RefusesWhatWouldForgeAHeader)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "")));
    const std::vector<HttpHeader> forged{
        {"X-A", "1\r\nX-B: 2"}, {"X-A", "1\nX-B: 2"}, {"X A", "1"}, {"X-A:", "1"}, {"", "1"}};
    for (const HttpHeader &header : forged) {
        HttpRequest request = get(server.url());
        request.headers = {header};
        EXPECT_EQ(fetch(request).error, Code::Other) << header.value.constData();
    }
    HttpRequest request = get(server.url());
    request.method = "GET / HTTP/1.1\r\nX:";
    EXPECT_EQ(fetch(request).error, Code::Other);
    EXPECT_EQ(server.connections(), 0);

    request.method = "POST";
    request.headers = {{"Host", "elsewhere"}, {"Content-Length", "7"}, {"Transfer-Encoding", "chunked"}};
    EXPECT_EQ(fetch(request).status, 200);
    EXPECT_FALSE(server.requests()[0].head.contains("elsewhere"));
    EXPECT_FALSE(server.requests()[0].hasHeader("Transfer-Encoding"));
}

} // namespace

} // namespace morvane
