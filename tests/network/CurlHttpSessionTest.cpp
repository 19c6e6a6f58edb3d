#include "HttpFixture.h"
#include "SocketSpy.h"

#include <QFile>

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

namespace {

class CurlHttpSessionTest : public HttpTest {};

struct Exchange {
    const char *name;
    QByteArray method;
    QByteArray response; // as the server sends it
    int status;
    QByteArray body;
    QByteArray offeredEncoding;
};

const QByteArray gzipOfHello = QByteArray::fromHex("1f8b0800000000000003cb48cdc9c9070086a6103605000000");

void PrintTo(const Exchange &exchange, std::ostream *out)
{
    *out << exchange.name;
}

class ResponseFormTest : public CurlHttpSessionTest, public testing::WithParamInterface<Exchange> {};

// Body and status come out right, and the ledger's counts are those of the server's side.
TEST_P(ResponseFormTest, ArrivesAndIsCountedToTheByte)
{
    const Exchange &exchange = GetParam();
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        connection.readRequest();
        connection.send(exchange.response);
    });
    HttpRequest request = get(server.url());
    request.method = exchange.method;
    request.headers = {{"X-Empty", ""}};
    if (!exchange.offeredEncoding.isEmpty())
        request.headers.push_back({"Accept-Encoding", exchange.offeredEncoding});
    const Ending ending = fetch(request);

    EXPECT_EQ(ending.error, std::nullopt);
    EXPECT_EQ(ending.status, exchange.status);
    EXPECT_EQ(ending.body, exchange.body);
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(server.requests()[0].method(), exchange.method);
    EXPECT_TRUE(server.requests()[0].hasHeader("X-Empty"));
    EXPECT_EQ(server.requests()[0].hasHeader("Accept-Encoding"), !exchange.offeredEncoding.isEmpty());
    ASSERT_EQ(rows().size(), 1U);
    EXPECT_EQ(rows()[0].bytesSent, server.bytesReceived());
    EXPECT_EQ(rows()[0].bytesReceived, server.bytesSent());
    EXPECT_EQ(rows()[0].outcome, EgressOutcome{EgressOutcome::Completed{exchange.status}});
}

INSTANTIATE_TEST_SUITE_P(
    Forms, ResponseFormTest,
    testing::Values(Exchange{"length", "GET", ScriptedServer::response("200 OK", "hello"), 200, "hello", {}},
                    Exchange{"noReason", "GET", "HTTP/1.1 418\r\nContent-Length: 0\r\n\r\n", 418, "", {}},
                    Exchange{"chunked",
                             "GET",
                             "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                             "2;x=y\r\nhe\r\n3\r\nllo\r\n0\r\nTrailer-Field: 1\r\n\r\n",
                             200,
                             "hello",
                             {}},
                    Exchange{"untilClose", "GET", "HTTP/1.0 500 Oops\r\n\r\nhello", 500, "hello", {}},
                    Exchange{"noContent", "DELETE", "HTTP/1.1 204 No Content\r\n\r\n", 204, "", {}},
                    Exchange{"interim",
                             "POST",
                             "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n" +
                                 ScriptedServer::response("201 Created", "x"),
                             201,
                             "x",
                             {}},
                    Exchange{"head", "HEAD", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", 200, "", {}},
                    Exchange{"gzip", "GET",
                             ScriptedServer::response("200 OK", gzipOfHello, "Content-Encoding: gzip\r\n"),
                             200, "hello", "gzip"},
                    Exchange{"gzipNotOffered",
                             "GET",
                             ScriptedServer::response("200 OK", gzipOfHello, "Content-Encoding: gzip\r\n"),
                             200,
                             gzipOfHello,
                             {}}),
    [](const auto &test) { return test.param.name; });

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

TEST_F(CurlHttpSessionTest, HeadersOfTheResponseKeepOrderAndCase)
{
    ScriptedServer server(ScriptedServer::answering(
        ScriptedServer::response("200 OK", "", "X-One: a\r\nx-one:b\r\nX-Folded: c\r\n d\r\nX-Empty:\r\n")));
    HttpResponse response = TestWait::await(session->send(get(server.url(u"/a%2Fb?q=%20x#part"_s)), {}));
    EXPECT_EQ(response.header("X-ONE"), "a");
    EXPECT_EQ(response.header("X-Folded"), "c d");
    EXPECT_EQ(response.header("X-Empty"), "");
    EXPECT_EQ(response.header("X-Two"), std::nullopt);
    EXPECT_EQ(response.headers.size(), 5U);
    EXPECT_EQ(server.requests()[0].target(), "/a%2Fb?q=%20x");
}

TEST_F(CurlHttpSessionTest, KeepsNoCookies)
{
    ScriptedServer server(
        ScriptedServer::answering(ScriptedServer::response("200 OK", "", "Set-Cookie: a=b; Path=/\r\n")));
    fetch(get(server.url()));
    fetch(get(server.url()));
    EXPECT_FALSE(server.requests()[1].hasHeader("Cookie"));
}

TEST_F(CurlHttpSessionTest, TakesNoProxyFromTheEnvironment)
{
    ScriptedServer proxy(ScriptedServer::answering(ScriptedServer::response("200 OK", "proxy")));
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "server")));
    for (const char *name : {"http_proxy", "all_proxy", "ALL_PROXY"})
        qputenv(name, proxy.url().toEncoded());
    EXPECT_EQ(fetch(get(server.url())).body, "server");
    for (const char *name : {"http_proxy", "all_proxy", "ALL_PROXY"})
        qunsetenv(name);
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

TEST_F(CurlHttpSessionTest, AnAddressThatItsRuleForbidsIsNeverConnectedTo)
{
    QByteArray judged;
    session = std::make_shared<CurlHttpSession>(EgressFeature::webPage, SensitiveDataSet(), ledger, clock,
                                                [&](const QByteArray &address) {
                                                    judged = address;
                                                    return false;
                                                });
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "")));
    const int connections = SocketSpy::connections();
    EXPECT_EQ(fetch(get(server.url())).error, Code::Blocked);
    EXPECT_EQ(judged, QByteArray::fromHex("7f000001"));
    EXPECT_EQ(SocketSpy::connections(), connections);
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

// The user name of an address could pass for its host; it is neither connected to nor sent.
TEST_F(CurlHttpSessionTest, SendsNoUserNameOfAnAddress)
{
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "")));
    QUrl url = server.url();
    url.setUserInfo(u"user:secret"_s);
    EXPECT_EQ(fetch(get(url)).status, 200);
    EXPECT_FALSE(server.requests()[0].hasHeader("Authorization"));
}

} // namespace

} // namespace morvane
