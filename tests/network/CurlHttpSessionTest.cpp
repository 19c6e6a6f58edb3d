#include "HttpFixture.h"

#include "support/TestData.h"
#include "utils/files/PrivateFile.h"

#include <QTemporaryDir>

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

namespace {

class CurlHttpSessionTest : public HttpTest {};

// Body and status come out right, and the ledger's counts are those of the server's side.
TEST_F(CurlHttpSessionTest, EachFormOfResponseEndsAsItShouldAndIsCountedToTheByte)
{
    const auto outcome = [this](const QByteArray &line) {
        const QByteArrayList words = line.split(' ').mid(0, 2);
        QByteArray response = line.sliced(words.join(' ').size() + 1);
        ScriptedServer server([&](ScriptedServer::Connection &connection) {
            connection.readRequest();
            connection.send(response.replace("\n", "\r\n"));
        });
        HttpRequest request = get(server.url());
        request.method = words[0];
        request.headers = {{"X-Empty", ""}};
        const bool offersEncoding = words[1] != "-";
        if (offersEncoding)
            request.headers.push_back({"Accept-Encoding", words[1]});
        ledger.clear();
        const Ending ending = fetch(request);

        const auto seen = server.requests().at(0);
        EXPECT_EQ(seen.method(), request.method);
        EXPECT_TRUE(seen.hasHeader("X-Empty"));
        EXPECT_EQ(seen.hasHeader("Accept-Encoding"), offersEncoding);
        EXPECT_EQ(rows().size(), 1U);
        EXPECT_EQ(rows()[0].bytesSent, server.bytesReceived());
        EXPECT_TRUE(ending.error || rows()[0].bytesReceived == server.bytesSent());
        const QString end = !ending.error                              ? u"complete"_s
                            : ending.error == Code::ConnectionLost     ? u"connection lost"_s
                            : ending.error == Code::UnreadableResponse ? u"unreadable"_s
                                                                       : u"another error"_s;
        return u"%1 \"%2\" %3; %4"_s.arg(ending.status)
            .arg(QString::fromLatin1(ending.body.toPercentEncoding()), end, rows()[0].outcome.text());
    };
    TestData::expect("network/responses.txt", outcome);
}

TEST_F(CurlHttpSessionTest, SendsLargeBodiesWholeAndCountsThem)
{
    ScriptedServer server(ok("ok"));
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
    ScriptedServer server(ok(zlib, "Content-Encoding: deflate\r\n"));
    HttpRequest request = get(server.url());
    request.headers = {{"Accept-Encoding", "deflate"}};
    const Ending ending = fetch(request);
    EXPECT_TRUE(ending.body == unpacked);
    EXPECT_EQ(rows()[0].bytesReceived, server.bytesSent());
}

TEST_F(CurlHttpSessionTest, AddressesAreSentAsTheyAreAndHeadersKeepOrderAndCase)
{
    ScriptedServer server(ok("", "X-One: a\r\nx-one:b\r\nX-Folded: c\r\n d\r\nX-Empty:\r\n"));
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
    const ScriptedServer proxy(ok("proxy"));
    const ScriptedServer server(ok("", "Set-Cookie: a=b; Path=/\r\n"));
    const QTemporaryDir home;
    PrivateFile::write(home.filePath(u".netrc"_s), "default login user password secret\n");
    const QByteArray formerHome = qgetenv("HOME");
    qputenv("HOME", home.path().toUtf8());
    for (const char *name : {"http_proxy", "all_proxy"})
        qputenv(name, proxy.url().toEncoded());
    fetch(get(server.url()));
    fetch(get(server.url()));
    for (const char *name : {"http_proxy", "all_proxy"})
        qunsetenv(name);
    qputenv("HOME", formerHome);
    EXPECT_EQ(proxy.connections(), 0);
    ASSERT_EQ(server.requests().size(), 2U);
    EXPECT_FALSE(server.requests()[1].hasHeader("Cookie"));
    EXPECT_FALSE(server.requests()[1].hasHeader("Authorization"));
}

TEST_F(CurlHttpSessionTest, SpeaksIPv6)
{
    ScriptedServer server(ok("six"), ScriptedServer::Family::IPv6);
    if (!server.isListening())
        GTEST_SKIP() << "this machine has no IPv6 loopback";
    EXPECT_EQ(fetch(get(server.url())).body, "six");
    EXPECT_EQ(rows()[0].host, u"::1"_s);
}

TEST_F(CurlHttpSessionTest, RefusesWhatWouldForgeAHeader)
{
    ScriptedServer server(ok(""));
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
