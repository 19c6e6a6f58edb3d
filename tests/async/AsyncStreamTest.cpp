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

struct Reading {
    std::vector<int> events;
    std::string end;
};

// Reads to the end and notes how it came: "finished", "cancelled" or the error's words.
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
    void start(Stream stream) { readAll(std::move(stream), reading, stop.get_token()); }

    std::shared_ptr<Reading> reading = std::make_shared<Reading>();
    std::stop_source stop;
};

TEST_F(AsyncStreamTest, DeliversInOrderWhetherYieldedBeforeOrAfterTheWaitBegan)
{
    auto [stream, producer] = Stream::make();
    producer.yield(1);
    start(std::move(stream));
    producer.yield(2);
    producer.yield(3);
    producer.finish();
    producer.yield(4); // behind the end: dropped
    TestWait::settle();
    EXPECT_EQ(reading->events, (std::vector{1, 2, 3}));
    EXPECT_EQ(reading->end, "finished");
}

TEST_F(AsyncStreamTest, SeveralEventsInOneGoDoNotEndTheNextWait)
{
    auto [stream, producer] = Stream::make();
    start(std::move(stream));
    producer.yield(1);
    producer.yield(2);
    TestWait::settle();
    EXPECT_EQ(reading->end, "");
    producer.yield(3);
    producer.finish();
    TestWait::settle();
    EXPECT_EQ(reading->events, (std::vector{1, 2, 3}));
    EXPECT_EQ(reading->end, "finished");
}

TEST_F(AsyncStreamTest, NeverResumesTheConsumerInsideYield)
{
    auto [stream, producer] = Stream::make();
    start(std::move(stream));
    producer.yield(1);
    EXPECT_TRUE(reading->events.empty());
    TestWait::settle();
    EXPECT_EQ(reading->events.size(), 1U);
    producer.finish();
    TestWait::settle();
}

TEST_F(AsyncStreamTest, ErrorComesAfterTheEventsBeforeIt)
{
    auto [stream, producer] = Stream::make();
    producer.yield(7);
    producer.fail(std::make_exception_ptr(std::runtime_error("broken")));
    start(std::move(stream));
    TestWait::settle();
    EXPECT_EQ(reading->events, std::vector{7});
    EXPECT_EQ(reading->end, "broken");
}

TEST_F(AsyncStreamTest, StopReachesAWaitingConsumerAndDropsTheProducer)
{
    auto [stream, producer] = Stream::make();
    start(std::move(stream));
    stop.request_stop();
    TestWait::settle();
    EXPECT_EQ(reading->end, "cancelled");
    EXPECT_TRUE(producer.stopToken().stop_requested());
}

TEST_F(AsyncStreamTest, StopOutrunsBufferedEvents)
{
    auto [stream, producer] = Stream::make();
    producer.yield(1);
    stop.request_stop();
    start(std::move(stream));
    TestWait::settle();
    EXPECT_TRUE(reading->events.empty());
    EXPECT_EQ(reading->end, "cancelled");
}

TEST_F(AsyncStreamTest, AProducerThatVanishesEndsTheStream)
{
    {
        auto [stream, producer] = Stream::make();
        start(std::move(stream));
        const auto copy = producer;
    }
    TestWait::settle();
    EXPECT_EQ(reading->end, "cancelled");
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
