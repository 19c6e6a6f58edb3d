#include "HttpFixture.h"
#include "SocketSpy.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Code = TransportError::Code;

namespace {

struct Breakage {
    const char *name;
    QByteArray bytes; // all that the server sends before it closes
    Code code;
    int status = 0; // when a head arrived before the break
};

void PrintTo(const Breakage &breakage, std::ostream *out)
{
    *out << breakage.name;
}

QByteArray manyHeaders()
{
    QByteArray bytes("HTTP/1.1 200 OK\r\n");
    while (bytes.size() < 300 * 1024)
        bytes += "X-Filler: " + QByteArray(1000, 'x') + "\r\n";
    return bytes + "\r\n";
}

QByteArray manyInterims()
{
    QByteArray bytes;
    while (bytes.size() < 300 * 1024)
        bytes += "HTTP/1.1 102 Processing\r\n\r\n";
    return bytes;
}

class BrokenServerTest : public HttpTest, public testing::WithParamInterface<Breakage> {};

TEST_P(BrokenServerTest, EndsInATypedErrorAndARow)
{
    const Breakage &breakage = GetParam();
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        connection.readRequest();
        connection.send(breakage.bytes);
    });
    const Ending ending = fetch(get(server.url()));
    EXPECT_EQ(ending.error, breakage.code);
    EXPECT_EQ(ending.status, breakage.status);
    ASSERT_EQ(rows().size(), 1U);
    EXPECT_TRUE(std::holds_alternative<EgressOutcome::Failed>(rows()[0].outcome.value));
    EXPECT_FALSE(rows()[0].outcome.text().contains(u"marker"_s)); // nothing of what was sent
}

INSTANTIATE_TEST_SUITE_P(
    Breakages, BrokenServerTest,
    testing::Values(
        Breakage{"nothing", "", Code::ConnectionLost},
        Breakage{"garbage", "marker \x01\x02\xff not http at all\r\n\r\n", Code::ConnectionLost},
        Breakage{"badStatus", "HTTP/1.1 abc marker\r\n\r\n", Code::ConnectionLost},
        Breakage{"halfAHead", "HTTP/1.1 200 OK\r\nContent-Le", Code::ConnectionLost},
        Breakage{"cutBody", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345", Code::ConnectionLost, 200},
        Breakage{"cutChunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc",
                 Code::ConnectionLost, 200},
        Breakage{"badChunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nmarker\r\n",
                 Code::ConnectionLost, 200},
        Breakage{"manyHeaders", manyHeaders(), Code::ResponseTooLarge},
        Breakage{"oneHugeHeader", "HTTP/1.1 200 OK\r\nX: " + QByteArray(1'000'000, 'x') + "\r\n\r\n",
                 Code::ResponseTooLarge},
        Breakage{"endlessInterims", manyInterims(), Code::ResponseTooLarge}),
    [](const auto &test) { return test.param.name; });

class UnreachableTest : public HttpTest {};

TEST_F(UnreachableTest, NoListenerAndNoName)
{
    QUrl closed;
    {
        const ScriptedServer server(ScriptedServer::answering(""));
        closed = server.url();
    }
    EXPECT_EQ(fetch(get(closed)).error, Code::CannotConnect);
    EXPECT_EQ(fetch(get(QUrl(u"http://unknown.test/"_s))).error, Code::CannotConnect);
    EXPECT_EQ(textOf(rows()[1]), "unknown.test 0/0 Failed: Could not connect to the server.");
}

class SilenceTest : public HttpTest {};

TEST_F(SilenceTest, AServerThatNeverAnswersTimesOut)
{
    ScriptedServer server([](ScriptedServer::Connection &connection) {
        connection.readRequest();
        connection.awaitClose();
    });
    HttpRequest request = post(server.url(), "question");
    request.timeout = 20s;
    const auto ending = begin(request);
    TestWait::until([&] { return server.requests().size() == 1; });
    clock.advance(19'999ms);
    EXPECT_FALSE(ending->isDone);
    clock.advance(1ms);
    TestWait::until([&] { return ending->isDone; });
    EXPECT_EQ(ending->error, Code::TimedOut);
    EXPECT_EQ(rows()[0].outcome.text(), u"Failed: Nothing was sent or received for 20 seconds."_s);
    EXPECT_EQ(rows()[0].bytesSent, server.bytesReceived());
    TestWait::until([&] { return server.closedByPeer() == 1; });
}

TEST_F(SilenceTest, ANameThatNeverResolvesTimesOut)
{
    const auto ending = begin(get(QUrl(u"http://slow.test/"_s)));
    TestWait::until([] { return SocketSpy::slowLookupBegan.try_acquire(); });
    clock.advance(60s);
    TestWait::until([&] { return ending->isDone; });
    EXPECT_EQ(ending->error, Code::TimedOut);
    SocketSpy::slowLookupMayEnd.release();
}

TEST_F(SilenceTest, EachByteStartsTheSilenceAnew)
{
    QSemaphore next;
    const QByteArray response = "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc";
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        connection.readRequest();
        for (const char byte : response) {
            if (!next.tryAcquire(1, 30'000) || !connection.send({&byte, 1}))
                return;
        }
        connection.awaitClose();
    });
    const qint64 before = SocketSpy::received();
    const auto ending = begin(get(server.url()));
    TestWait::until([&] { return server.requests().size() == 1; });
    for (qsizetype i = 0; i < response.size() && !ending->isDone; ++i) {
        clock.advance(40s); // far beyond the timeout in all, never at once
        next.release();
        TestWait::until([&] { return SocketSpy::received() == before + i + 1; });
    }
    TestWait::until([&] { return ending->isDone; });
    EXPECT_EQ(ending->body, "abc");
}

} // namespace

} // namespace morvane
