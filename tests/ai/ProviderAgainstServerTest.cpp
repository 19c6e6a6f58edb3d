// The provider through the real HTTP client against the real model server: what a broken or hostile server
// does to a reply, to the memory and to the time that a stop takes.

#include "ai/ReplyReading.h"
#include "ai/contract/ProviderError.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ManualClock.h"
#include "support/ModelServer.h"
#include "support/ProcessMemory.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <array>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = ProviderError::Plain;

namespace {

class ProviderAgainstServerTest : public testing::Test {
protected:
    AsyncStream<AIStreamEvent> ask(const QString &model, const QString &text = u"hi"_s,
                                   std::vector<AITool> tools = {})
    {
        configuration.model = model;
        return provider.streamReply({{AIMessage::Role::user, text}}, configuration, std::move(tools));
    }
    Reply replyOf(const QString &model) { return readReply(ask(model)); }

    // Lets what was stopped or is still on its way come to its end.
    void TearDown() override
    {
        TestWait::settle();
        server.awaitEnded(server.requests().size());
        TestWait::settle();
    }

    ModelServer server;
    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    OpenAICompatibleProvider provider{network};
    AIConfiguration configuration = [this] {
        AIConfiguration c;
        c.baseURLString = server.baseUrl();
        c.maxOutputTokens = 100;
        return c;
    }();
};

TEST_F(ProviderAgainstServerTest, EveryHonestShapeOfAReplyBecomesTheSameText)
{
    for (const char *model :
         {"practice-fast", "keep-alive-comments", "crlf", "usage-chunks", "no-done", "json-despite-stream",
          "thinking-fields", "empty-choices", "redirect-other", "no-last-line-end", "garbage-lines"}) {
        const Reply reply = replyOf(QString::fromLatin1(model));
        EXPECT_TRUE(reply.text().contains(u"You wrote: “hi”."_s)) << model << reply.text().toStdString();
        EXPECT_EQ(reply.error, std::nullopt) << model;
    }
    // Each request ends as a complete one, also where the sentinel came before the end of the body.
    const std::size_t sent = server.requests().size();
    TestWait::until([&] { return ledger.snapshot().entries.size() == sent; });
    for (const NetworkLedger::Entry &row : ledger.snapshot().entries)
        EXPECT_TRUE(std::holds_alternative<EgressOutcome::Completed>(row.outcome.value))
            << row.outcome.text().toStdString();

    EXPECT_EQ(replyOf(u"drip"_s).text(), u"Drop by drop, é and 👻 too, from the practice server."_s);
    EXPECT_EQ(replyOf(u"pieces-2000"_s).events.size(), 2000U);
}

TEST_F(ProviderAgainstServerTest, ALimitedReplyGoesOnAndToolCallsComeWhole)
{
    const Reply cut = replyOf(u"length"_s);
    EXPECT_TRUE(std::holds_alternative<AIStream::TruncatedByTokenLimit>(cut.events.back()));
    const QString goOn = u"Continue your previous answer exactly where it stopped."_s;
    EXPECT_EQ(readReply(ask(u"length"_s, goOn)).text(),
              u"and this is the rest of it, from the practice server."_s);

    const std::vector<AIToolCall> call{{u"call_practice"_s, u"look"_s, u"{\"text\":\"practice é\"}"_s}};
    for (const char *model : {"tool-call-whole", "tool-call-split"}) {
        const Reply reply = readReply(ask(QString::fromLatin1(model), {}, {{u"look"_s}}));
        ASSERT_EQ(reply.events.size(), 1U) << model;
        EXPECT_EQ(reply.events[0], AIStreamEvent(AIStream::ToolCalls{call})) << model;
    }
    const Reply two = readReply(ask(u"tool-calls-two"_s, {}, {{u"look"_s}}));
    const QString arguments = call.front().argumentsJSON;
    EXPECT_EQ(two.events, (std::vector<AIStreamEvent>{AIStream::ToolCalls{
                              {{u"call_0"_s, u"look"_s, arguments}, {u"call_1"_s, u"look"_s, arguments}}}}));
    EXPECT_TRUE(replyOf(u"tool-call-nameless"_s).events.empty());
    const auto rejected = readReply(ask(u"reject-tools"_s, {}, {{u"look"_s}})).error;
    EXPECT_TRUE(rejected && rejected->isToolRejection());
}

TEST_F(ProviderAgainstServerTest, EveryBrokenServerEndsInItsError)
{
    const ProviderError serverError(ProviderError::ServerError{500});
    const std::vector<std::tuple<const char *, QString, ProviderError>> cases{
        {"cut-mid-character", u"The practice server begins, "_s, {Plain::networkUnavailable}},
        {"cut-mid-json", u"The practice server begins, "_s, {Plain::networkUnavailable}},
        {"cut-between-events", u"The practice server begins, "_s, {Plain::networkUnavailable}},
        {"garbage", {}, {Plain::malformedResponse}},
        {"not-http", {}, {Plain::networkUnavailable}},
        {"redirect-file", {}, {Plain::networkUnavailable}},
        {"redirect-loop", {}, {Plain::networkUnavailable}},
        {"empty", {}, {Plain::malformedResponse}},
        {"done-only", {}, {Plain::malformedResponse}},
        {"error-object-in-200", {}, {Plain::malformedResponse}},
        {"status-401", {}, {Plain::authenticationFailed}},
        {"status-429", {}, {Plain::rateLimited}},
        {"status-500", {}, serverError},
    };
    for (const auto &[model, text, error] : cases) {
        const Reply reply = replyOf(QString::fromLatin1(model));
        EXPECT_EQ(reply.text(), text) << model;
        EXPECT_EQ(reply.error, error) << model;
    }
    EXPECT_EQ(replyOf(u"fail-once"_s).error, ProviderError(ProviderError::ServerError{503}));
    EXPECT_EQ(replyOf(u"fail-once"_s).error, std::nullopt);
}

TEST_F(ProviderAgainstServerTest, AKeyGoesToItsOwnServerOnly)
{
    configuration.apiKey = u"secret"_s;
    replyOf(u"redirect-other"_s);
    ASSERT_EQ(server.requests().size(), 2U);
    EXPECT_EQ(server.requests()[0].headers["Authorization"_L1].toString(), u"Bearer secret"_s);
    EXPECT_EQ(server.requests()[1].target, "/elsewhere/v1/chat/completions");
    EXPECT_FALSE(server.requests()[1].headers.contains("Authorization"_L1));
    EXPECT_EQ(server.requests()[1].json(), server.requests()[0].json());

    ModelServer locked({u"--require-key"_s, u"secret"_s});
    configuration.baseURLString = locked.baseUrl();
    configuration.model = u"practice-fast"_s;
    EXPECT_EQ(TestWait::await(provider.testConnection(configuration, {})), u"ok, says the practice server"_s);
    configuration.apiKey = u"wrong"_s;
    EXPECT_EQ(replyOf(u"practice-fast"_s).error, ProviderError(Plain::authenticationFailed));
}

TEST_F(ProviderAgainstServerTest, SilenceEndsInATimeout)
{
    std::size_t request = 0;
    for (const char *model : {"stall-before-headers", "stall-mid-stream"}) {
        const auto reply = std::make_shared<TestWait::Outcome<Reply>>();
        TestWait::collect(readReplyTask(ask(QString::fromLatin1(model))), reply);
        server.awaitRequests(++request);
        while (!reply->done) {
            TestWait::settle();
            clock.advance(121s);
        }
        EXPECT_EQ(reply->value->error, ProviderError(Plain::networkTimeout)) << model;
        server.awaitEnded(request);
        EXPECT_TRUE(server.requests()[request - 1].clientLeft);
    }
}

// A port whose queue of connections is full: connecting to it never ends.
class UnansweredPort {
public:
    UnansweredPort()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *general = reinterpret_cast<sockaddr *>(&address);
        socklen_t length = sizeof(address);
        bind(m_sockets[0], general, length);
        listen(m_sockets[0], 0);
        getsockname(m_sockets[0], general, &length);
        for (std::size_t i = 1; i < m_sockets.size(); ++i)
            connect(m_sockets[i], general, length);
        m_port = ntohs(address.sin_port);
    }
    ~UnansweredPort()
    {
        for (const int descriptor : m_sockets)
            close(descriptor);
    }
    UnansweredPort(const UnansweredPort &) = delete;
    UnansweredPort &operator=(const UnansweredPort &) = delete;

    [[nodiscard]] int number() const { return m_port; }

private:
    static int open() { return socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0); }

    std::array<int, 4> m_sockets{open(), open(), open(), open()};
    int m_port = 0;
};

QCoro::Task<> readUntilStopped(AsyncStream<AIStreamEvent> stream, std::shared_ptr<int> events,
                               std::stop_token stop)
{
    while (const auto event = co_await stream.next(stop))
        ++*events;
}

class StopTest : public ProviderAgainstServerTest {
protected:
    // Reads until the request is where the test wants it, stops, and says how long the reader took to end.
    template <typename Reached>
    qint64 millisecondsToStop(const QString &model, Reached reached)
    {
        std::stop_source stop;
        const auto events = std::make_shared<int>(0);
        const auto outcome = std::make_shared<TestWait::Outcome<void>>();
        TestWait::collect(readUntilStopped(ask(model), events, stop.get_token()), outcome);
        TestWait::until([&] { return reached(*events); });
        QElapsedTimer timer;
        timer.start();
        stop.request_stop();
        TestWait::until([&] { return outcome->done; });
        return timer.elapsed();
    }
};

TEST_F(StopTest, AnswersWithinATenthOfASecondAtEachStage)
{
    EXPECT_LT(
        millisecondsToStop(u"stall-before-headers"_s, [&](int) { return server.requests().size() == 1; }),
        100);
    EXPECT_LT(millisecondsToStop(u"stall-mid-stream"_s, [](int events) { return events == 4; }), 100);
    EXPECT_LT(millisecondsToStop(u"pieces-100000"_s, [](int events) { return events > 10; }), 100);
    EXPECT_LT(millisecondsToStop(u"huge-error-body"_s, [&](int) { return server.requests().size() == 4; }),
              100);
    server.awaitEnded(4); // each of them heard that its client had left
    for (const std::size_t stalled : {0U, 1U})
        EXPECT_TRUE(server.requests()[stalled].clientLeft);

    const UnansweredPort port;
    configuration.baseURLString = u"http://127.0.0.1:%1/v1"_s.arg(port.number());
    EXPECT_LT(millisecondsToStop(u"practice"_s, [](int) { return true; }), 100);
}

TEST_F(ProviderAgainstServerTest, HugeAnswersCostLittleMemory)
{
    if (ProcessMemory::isInstrumented())
        GTEST_SKIP() << "the sanitizer keeps freed memory";
    EXPECT_LT(ProcessMemory::peakMebibytes([&] {
                  const Reply reply = replyOf(u"huge-line"_s);
                  EXPECT_EQ(reply.error, ProviderError(Plain::malformedResponse));
                  EXPECT_EQ(reply.text(), u"The practice server begins, "_s);
              }),
              50);
    EXPECT_LT(ProcessMemory::peakMebibytes([&] {
                  EXPECT_EQ(replyOf(u"huge-error-body"_s).error,
                            ProviderError(ProviderError::ServerError{500}));
              }),
              50);
    configuration.preferStreaming = false;
    EXPECT_LT(ProcessMemory::peakMebibytes(
                  [&] { EXPECT_EQ(replyOf(u"huge-body"_s).error, ProviderError(Plain::malformedResponse)); }),
              50);
}

} // namespace

} // namespace morvane
