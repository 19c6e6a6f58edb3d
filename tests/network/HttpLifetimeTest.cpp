#include "HttpFixture.h"
#include "SocketSpy.h"

#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Code = TransportError::Code;

// Where a request stands when it is taken away.
enum class Stage { Resolving, AwaitingHead, Streaming };

class HttpLifetimeTest : public HttpTest, public testing::WithParamInterface<std::tuple<Stage, bool>> {
protected:
    static constexpr QByteArrayView firstPart{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf"};

    std::shared_ptr<Ending> reach()
    {
        const bool isResolving = stage == Stage::Resolving;
        const auto ending =
            begin(get(isResolving ? QUrl(u"http://slow.test/"_s) : server.url()), stop.get_token());
        TestWait::until([&] {
            return isResolving ? SocketSpy::slowLookupBegan.try_acquire() : server.requests().size() == 1;
        });
        if (stage == Stage::Streaming) {
            mayAnswer.release();
            TestWait::until([&] { return ending->body == "half"; });
        }
        EXPECT_FALSE(ending->isDone);
        return ending;
    }

    const Stage stage = std::get<Stage>(GetParam());
    QSemaphore mayAnswer;
    ScriptedServer server{[this](ScriptedServer::Connection &connection) {
        connection.readRequest();
        if (mayAnswer.tryAcquire(1, stage == Stage::Streaming ? 30'000 : 0))
            connection.send(firstPart);
        connection.awaitClose();
    }};
    std::stop_source stop;
};

TEST_P(HttpLifetimeTest, AStopOrTheEndOfTheSessionEndsItWithinOneTurnOfTheEventLoop)
{
    const bool isStopped = std::get<bool>(GetParam());
    const auto ending = reach();
    if (isStopped)
        stop.request_stop();
    else
        session.reset();
    ASSERT_EQ(rows().size(), 1U); // gone already
    QCoreApplication::sendPostedEvents();
    ASSERT_TRUE(ending->isDone);
    EXPECT_EQ(ending->isCancelled, isStopped);
    EXPECT_EQ(ending->error, isStopped ? std::nullopt : std::optional(Code::Cancelled));
    EXPECT_EQ(rows()[0].outcome.text(), u"Failed: The request was cancelled."_s);
    EXPECT_EQ(rows()[0].bytesSent, server.bytesReceived());
    EXPECT_EQ(rows()[0].bytesReceived, server.bytesSent());
    if (stage == Stage::Resolving)
        SocketSpy::slowLookupMayEnd.release();
    else
        TestWait::until([&] { return server.closedByPeer() == 1; });
    EXPECT_EQ(clock.pendingAlarms(), 0U); // nothing is left that could fire
}

INSTANTIATE_TEST_SUITE_P(Stages, HttpLifetimeTest,
                         testing::Combine(testing::Values(Stage::Resolving, Stage::AwaitingHead,
                                                          Stage::Streaming),
                                          testing::Bool()));

class HttpConsumerTest : public HttpTest {};

TEST_F(HttpConsumerTest, AStopBeforeTheStartConnectsNowhere)
{
    ScriptedServer server(ok(""));
    std::stop_source stop;
    stop.request_stop();
    const auto ending = begin(get(server.url()), stop.get_token());
    EXPECT_TRUE(ending->isCancelled);
    EXPECT_EQ(textOf(rows().at(0)), "127.0.0.1 0/0 Failed: The request was cancelled.");
    TestWait::settle();
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(HttpConsumerTest, TheBodyOutlivesItsSessionOnceItIsComplete)
{
    ScriptedServer server(ok("whole"));
    HttpResponse response = TestWait::await(session->send(get(server.url()), {}));
    TestWait::until([&] { return rows().size() == 1; });
    session.reset();
    EXPECT_EQ(TestWait::await(readBody(std::move(response), 5, {})), "whole");
}

// What was read off the socket stays within a bound, and waiting for the reader is no silence of the
// server's.
TEST_F(HttpConsumerTest, ASlowReaderHoldsTheSenderBack)
{
    constexpr qint64 total = 32LL * 1024 * 1024;
    ScriptedServer server([](ScriptedServer::Connection &connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(total) + "\r\n\r\n");
        const QByteArray piece(65'536, 'x');
        for (qint64 sent = 0; sent < total && connection.send(piece); sent += piece.size()) {
        }
        connection.awaitClose();
    });
    const qint64 before = SocketSpy::received();
    HttpResponse response = TestWait::await(session->send(get(server.url()), {}));
    // More than is ever read ahead lies ready in the kernel's buffers, so what stops is our reading.
    while (server.bytesSent() < 400 * 1024)
        std::this_thread::yield();
    TestWait::until([&] { return SocketSpy::received() - before > 256 * 1024; });
    TestWait::settle();
    clock.advance(10min);
    EXPECT_LT(SocketSpy::received() - before, 320 * 1024);
    EXPECT_LT(server.bytesSent(), total);

    EXPECT_EQ(TestWait::await(readBody(std::move(response), total, {})).size(), total);
    TestWait::until([&] { return rows().size() == 1; });
    EXPECT_EQ(rows()[0].bytesReceived, server.bytesSent());
}

using Code = TransportError::Code;

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
    awaitEnd(unresolved);
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
    awaitEnd(ending);
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
    awaitEnd(ending);
    EXPECT_EQ(ending->body, "abc");
}

} // namespace

} // namespace morvane
