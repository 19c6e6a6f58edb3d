#include "HttpFixture.h"
#include "SocketSpy.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Code = TransportError::Code;

namespace {

class BrokenServerTest : public HttpTest {};

TEST_F(BrokenServerTest, AHeadWithoutEndIsTooLarge)
{
    const QByteArray head = "HTTP/1.1 200 OK\r\n";
    for (const QByteArray &bytes : {
             head + ("X-Filler: " + QByteArray(1000, 'x') + "\r\n").repeated(300) + "\r\n",
             head + "X: " + QByteArray(1'000'000, 'x') + "\r\n\r\n",
             QByteArray("HTTP/1.1 102 Processing\r\n\r\n").repeated(11'000),
         }) {
        const ScriptedServer server(ScriptedServer::answering(bytes));
        EXPECT_EQ(fetch(get(server.url())).error, Code::ResponseTooLarge);
        EXPECT_TRUE(std::holds_alternative<EgressOutcome::Failed>(rows().back().outcome.value));
    }
    EXPECT_EQ(rows().size(), 3U);
}

// What it left of a refused request stands before the next one on the same connection.
TEST_F(BrokenServerTest, AServerThatRefusesBeforeItHasReadTheBodyIsAskedOnAnotherConnection)
{
    for (const QByteArray &status : {"400 Bad Request"_ba, "404 Not Found"_ba, "500 Oops"_ba, "200 OK"_ba}) {
        const bool isGood = status.startsWith('2');
        const auto nextHead = [isGood](ScriptedServer::Connection &connection) {
            const auto whole = isGood ? connection.readRequest() : std::nullopt;
            return whole ? std::optional(whole->head) : connection.readHead();
        };
        const ScriptedServer server([&](ScriptedServer::Connection &connection) {
            while (const auto head = nextHead(connection))
                connection.send(head->startsWith("POST") ? ScriptedServer::response(status, "why")
                                                         : ScriptedServer::response("400 Bad Request", {}));
        });
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(fetch(post(server.url(), "question")).body, "why") << status.constData();
        EXPECT_EQ(server.connections(), isGood ? 1 : 3) << "one that answered well is used again";
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
    EXPECT_EQ(fetch(get(QUrl(u"http://unknown.test/"_s))).error, Code::HostNotFound);
    EXPECT_EQ(textOf(rows()[1]), "unknown.test 0/0 Failed: No address was found for the server's name.");
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
