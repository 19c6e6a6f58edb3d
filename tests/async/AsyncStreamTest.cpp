#include "async/AsyncStream.h"

#include "async/TaskHandle.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <vector>

namespace morvane {

using namespace std::chrono_literals;

namespace {

using Stream = AsyncStream<int>;
using Events = std::vector<int>;

// What was read, and how it ended: "finished", "cancelled" or the error's words; empty while it goes on.
struct Reading {
    Events events;
    std::string end;
};

QCoro::Task<> readAll(Stream stream, std::shared_ptr<Reading> reading, std::stop_token stop)
{
    try {
        while (const auto event = co_await stream.next(stop))
            reading->events.push_back(*event);
        reading->end = "finished";
    } catch (const CancelledError &) {
        reading->end = "cancelled";
    } catch (const std::exception &error) {
        reading->end = error.what();
    }
}

class AsyncStreamTest : public testing::Test {
protected:
    void start() { readAll(std::move(ends->first), reading, stop.get_token()); }
    void expect(const Events &events, const std::string &end)
    {
        TestWait::settle();
        EXPECT_EQ(reading->events, events);
        EXPECT_EQ(reading->end, end);
    }

    std::optional<std::pair<Stream, Stream::Producer>> ends = Stream::make();
    Stream::Producer *producer = &ends->second;
    std::shared_ptr<Reading> reading = std::make_shared<Reading>();
    std::stop_source stop;
};

TEST_F(AsyncStreamTest, DeliversInOrderWhetherYieldedBeforeOrAfterTheWaitBegan)
{
    producer->yield(1);
    start();
    producer->yield(2);
    producer->yield(3);
    EXPECT_LE(reading->events.size(), 1U); // never inside yield()
    expect({1, 2, 3}, "");
    producer->yield(4);
    EXPECT_EQ(reading->events.size(), 3U);
    producer->finish();
    producer->yield(5); // behind the end: dropped
    expect({1, 2, 3, 4}, "finished");
}

TEST_F(AsyncStreamTest, ErrorComesAfterTheEventsBeforeIt)
{
    producer->yield(7);
    producer->fail(std::make_exception_ptr(std::runtime_error("broken")));
    start();
    expect({7}, "broken");
}

TEST_F(AsyncStreamTest, StopOutrunsBufferedEventsAndReachesAWaitingConsumerAndTheProducer)
{
    start();
    stop.request_stop();
    expect({}, "cancelled");
    EXPECT_TRUE(producer->stopToken().stop_requested());

    ends = Stream::make();
    ends->second.yield(1);
    start();
    expect({}, "cancelled");
}

TEST_F(AsyncStreamTest, AProducerThatVanishesEndsTheStream)
{
    start();
    std::optional copy = *producer;
    ends.reset();
    expect({}, "");
    copy.reset();
    expect({}, "cancelled");
}

QCoro::Task<> sleepThenMark(ManualClock *clock, std::shared_ptr<bool> woke, std::stop_token stop)
{
    co_await pause(*clock, 100ms, stop);
    *woke = true;
}

TEST(TaskHandleTest, DestroyingTheHandleStopsItsTask)
{
    ManualClock clock;
    const auto woke = std::make_shared<bool>(false);
    const auto run = [&] {
        return TaskHandle::start([&](std::stop_token stop) { return sleepThenMark(&clock, woke, stop); });
    };
    {
        const auto handle = run();
        clock.advance(99ms);
        EXPECT_TRUE(handle.isRunning());
    }
    TestWait::settle();
    clock.advance(1s);
    EXPECT_FALSE(*woke);
    EXPECT_EQ(clock.pendingAlarms(), 0U);

    const auto handle = run();
    clock.advance(100ms);
    EXPECT_TRUE(*woke);
    EXPECT_FALSE(handle.isRunning());
}

} // namespace

} // namespace morvane
