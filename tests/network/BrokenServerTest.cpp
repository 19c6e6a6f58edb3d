#include "HttpFixture.h"
#include "SocketSpy.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Code = TransportError::Code;

namespace {

class BrokenServerTest : public HttpTest {};

QByteArray repeated(const QByteArray &start, const QByteArray &line)
{
    return start + line.repeated(300 * 1024 / line.size()) + "\r\n";
}

TEST_F(BrokenServerTest, EndsInATypedErrorAndARow)
{
    const QByteArray head = "HTTP/1.1 200 OK\r\n";
    const QByteArray chunked = head + "Transfer-Encoding: chunked\r\n\r\n";
    const struct {
        const char *name;
        QByteArray bytes; // all that the server sends before it closes
        Code code;
        int status = 0; // when a head arrived before the break
    } cases[] = {
        {"nothing", "", Code::ConnectionLost},
        {"garbage", "marker \x01\x02\xff not http at all\r\n\r\n", Code::ConnectionLost},
        {"bad status", "HTTP/1.1 abc marker\r\n\r\n", Code::ConnectionLost},
        {"half a head", head + "Content-Le", Code::ConnectionLost},
        {"cut body", head + "Content-Length: 10\r\n\r\n12345", Code::ConnectionLost, 200},
        {"cut chunk", chunked + "5\r\nabc", Code::ConnectionLost, 200},
        {"bad chunk", chunked + "marker\r\n", Code::ConnectionLost, 200},
        {"many headers", repeated(head, "X-Filler: " + QByteArray(1000, 'x') + "\r\n"),
         Code::ResponseTooLarge},
        {"one huge header", head + "X: " + QByteArray(1'000'000, 'x') + "\r\n\r\n", Code::ResponseTooLarge},
        {"endless interims", repeated({}, "HTTP/1.1 102 Processing\r\n\r\n"), Code::ResponseTooLarge},
    };
    for (const auto &[name, bytes, code, status] : cases) {
        SCOPED_TRACE(name);
        ScriptedServer server([&bytes = bytes](ScriptedServer::Connection &connection) {
            connection.readRequest();
            connection.send(bytes);
        });
        ledger.clear();
        const Ending ending = fetch(get(server.url()));
        EXPECT_EQ(ending.error, code);
        EXPECT_EQ(ending.status, status);
        ASSERT_EQ(rows().size(), 1U);
        EXPECT_TRUE(std::holds_alternative<EgressOutcome::Failed>(rows()[0].outcome.value));
        EXPECT_FALSE(rows()[0].outcome.text().contains(u"marker"_s)); // nothing of what was sent
    }
}

TEST_F(BrokenServerTest, NoListenerAndNoName)
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

TEST_F(BrokenServerTest, AServerThatNeverAnswersAndANameThatNeverResolvesTimeOut)
{
    const auto unresolved = begin(get(QUrl(u"http://slow.test/"_s)));
    TestWait::until([] { return SocketSpy::slowLookupBegan.try_acquire(); });
    clock.advance(60s);
    TestWait::until([&] { return unresolved->isDone; });
    EXPECT_EQ(unresolved->error, Code::TimedOut);
    SocketSpy::slowLookupMayEnd.release();

    ledger.clear();
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

TEST_F(BrokenServerTest, EachByteStartsTheSilenceAnew)
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
