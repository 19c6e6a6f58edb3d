#include "async/Work.h"

#include "async/TaskHandle.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <latch>
#include <semaphore>
#include <thread>

namespace morvane {

using namespace std::chrono_literals;

namespace {

struct WorkTest : testing::Test {
    ManualClock clock;
    Work work{clock};
};

TEST_F(WorkTest, AnswersFromAnotherThreadAndPassesErrorsOn)
{
    const auto here = std::this_thread::get_id();
    EXPECT_NE(TestWait::await(work.run([] { return std::this_thread::get_id(); })), here);
    bool done = false;
    TestWait::await(work.run([&done] { done = true; }));
    EXPECT_TRUE(done);
    EXPECT_THROW(TestWait::await(work.run([]() -> int { throw std::runtime_error("broken"); })),
                 std::runtime_error);
}

TEST_F(WorkTest, ReportsArriveInOrderAndThenTheEnd)
{
    auto results = work.start<int>([](const Work::Report<int> &report, const std::stop_token &) {
        for (int i = 0; i < 100; ++i)
            report(i);
    });
    const auto readAll = [](Work::Results<int> *from) -> QCoro::Task<std::vector<int>> {
        std::vector<int> read;
        while (const auto each = co_await from->next())
            read.push_back(*each);
        co_return read;
    };
    const std::vector<int> read = TestWait::await(readAll(&results));
    ASSERT_EQ(read.size(), 100U);
    EXPECT_TRUE(std::is_sorted(read.begin(), read.end()));
}

TEST_F(WorkTest, OnlySoManyThreadsRunAtOnce)
{
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    std::counting_semaphore<> gate(0);
    const auto job = [&] {
        const int now = ++running;
        for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
        }
        gate.acquire();
        --running;
    };
    std::vector<QCoro::Task<>> tasks;
    for (int i = 0; i < 3 * Work::mostThreads; ++i)
        tasks.push_back(work.run(job));
    gate.release(3 * Work::mostThreads);
    for (auto &task : tasks)
        TestWait::await(std::move(task));
    EXPECT_LE(most, Work::mostThreads);
}

QCoro::Task<> noteCancelled(QCoro::Task<> task, bool *wasCancelled)
{
    try {
        co_await std::move(task);
    } catch (const CancelledError &) {
        *wasCancelled = true;
    }
}

TEST_F(WorkTest, StoppingOrDroppingTheCallerEndsItsWaitAndTellsTheWork)
{
    for (const bool isDropped : {false, true}) {
        std::binary_semaphore began(0);
        std::atomic<bool> wasTold = false;
        std::latch ended(1);
        bool cancelled = false;
        const auto task = [&](const std::stop_token &stopped) {
            began.release();
            while (!stopped.stop_requested())
                std::this_thread::yield();
            wasTold = true;
            ended.count_down();
        };
        auto caller = TaskHandle::start(
            [&](std::stop_token stop) { return noteCancelled(work.run(task, std::move(stop)), &cancelled); });
        began.acquire();
        if (isDropped)
            caller = {};
        else
            caller.requestStop();
        TestWait::until([&] { return cancelled; });
        ended.wait();
        EXPECT_TRUE(wasTold);
    }
}

TEST_F(WorkTest, TheEndStopsWhatRunsWaitsForItAndRefusesTheRest)
{
    std::counting_semaphore<> began(0);
    std::atomic<int> ended = 0;
    std::atomic<int> late = 0;
    std::vector<QCoro::Task<>> tasks;
    for (int i = 0; i < Work::mostThreads; ++i)
        tasks.push_back(work.run([&](const std::stop_token &stopped) {
            began.release();
            while (!stopped.stop_requested())
                std::this_thread::yield();
            ++ended;
        }));
    for (int i = 0; i < Work::mostThreads; ++i)
        began.acquire();
    tasks.push_back(work.run([&late] { ++late; })); // waits for a thread
    work.end();
    EXPECT_EQ(ended, Work::mostThreads);
    EXPECT_EQ(late, 0);
    EXPECT_THROW(TestWait::await(std::move(tasks.back())), CancelledError);
    EXPECT_THROW(TestWait::await(work.run([] { return 1; })), CancelledError);
    EXPECT_THROW(TestWait::await(work.ask<int>([] { return 1; }, 1s, {})), CancelledError);
}

// What a hanging question touches stays alive by itself, as the contract asks.
TEST_F(WorkTest, AQuestionThatHangsIsLeftBehind)
{
    const auto gate = std::make_shared<std::counting_semaphore<>>(0);
    const std::function<int()> hang = [gate] {
        gate->acquire();
        return 1;
    };
    std::vector<QCoro::Task<std::optional<int>>> asked;
    for (int i = 0; i < Work::mostQuestions; ++i)
        asked.push_back(work.ask<int>(hang, 5s, {}));
    EXPECT_EQ(TestWait::await(work.ask<int>([] { return 2; }, 5s, {})), std::nullopt); // too many are out
    EXPECT_EQ(TestWait::await(work.ask<int>([] { return 3; }, 5s, {}, Work::Outside::Files)), 3);
    clock.advance(5s);
    for (auto &each : asked)
        EXPECT_EQ(TestWait::await(std::move(each)), std::nullopt);
    work.end();
    gate->release(Work::mostQuestions);
}

TEST_F(WorkTest, AQuestionThatIsAnsweredInTimeGivesItsPlaceFree)
{
    for (int i = 0; i < 3 * Work::mostQuestions; ++i) {
        std::optional<int> answer;
        TestWait::until([&] { // the thread may still be on its way out
            answer = TestWait::await(work.ask<int>([i] { return i; }, 5s, {}));
            return answer.has_value();
        });
        EXPECT_EQ(answer, i);
    }
}

} // namespace

} // namespace morvane
