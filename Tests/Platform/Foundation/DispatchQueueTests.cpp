#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>

namespace
{

using platform::foundation::isMainThread;
using platform::foundation::waitUntilSerialQueuesAreIdle;
using ::testing::ElementsAre;

constexpr double patience = 30;

std::string threadName()
{
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

bool runMainUntil(const std::function<bool()> &condition)
{
    return RunLoop::main().runUntil(condition, patience);
}

TEST(MainQueue, RunsNothingBeforeTheLoopTurns)
{
    bool hasRun = false;
    DispatchQueue::main().async([&] { hasRun = true; });
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(runMainUntil([&] { return hasRun; }));
}

TEST(MainQueue, RunsOnTheMainThread)
{
    std::optional<bool> onMain;
    std::thread([&] { DispatchQueue::main().async([&] { onMain = isMainThread(); }); }).join();
    ASSERT_TRUE(runMainUntil([&] { return onMain.has_value(); }));
    EXPECT_TRUE(*onMain);
}

TEST(MainQueue, KeepsTheOrderOfSubmission)
{
    std::vector<int> order;
    for (int i = 0; i < 1000; ++i)
        DispatchQueue::main().async([&order, i] { order.push_back(i); });
    ASSERT_TRUE(runMainUntil([&] { return order.size() == 1000; }));
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(MainQueue, DrainsOneTurnOnlyWhatWasWaiting)
{
    std::vector<std::string> events;
    DispatchQueue::main().async([&] {
        events.emplace_back("first");
        DispatchQueue::main().async([&] { events.emplace_back("submitted by the first"); });
    });
    DispatchQueue::main().async([&] { events.emplace_back("second"); });
    ASSERT_TRUE(runMainUntil([&] { return !events.empty(); }));
    EXPECT_THAT(events, ElementsAre("first", "second"));
    ASSERT_TRUE(runMainUntil([&] { return events.size() == 3; }));
    EXPECT_EQ(events.back(), "submitted by the first");
}

TEST(MainQueue, TakesTasksFromSixteenThreadsKeepingEachOnesOrder)
{
    constexpr int threadCount = 16;
    constexpr int tasksEach = 5000;
    std::array<int, threadCount> next{};
    bool inOrder = true;
    int done = 0;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < tasksEach; ++i) {
                DispatchQueue::main().async([&, thread, i] {
                    int &expected = next.at(static_cast<std::size_t>(thread));
                    inOrder = inOrder && expected == i;
                    ++expected;
                    ++done;
                });
            }
        });
    }
    EXPECT_TRUE(runMainUntil([&] { return done == threadCount * tasksEach; }));
    EXPECT_TRUE(inOrder);
    for (auto &thread : threads)
        thread.join();
}

TEST(MainQueue, WakesASleepingLoop)
{
    std::atomic<bool> loopSleeps = false;
    std::thread submitter([&] {
        while (!loopSleeps)
            std::this_thread::yield();
        DispatchQueue::main().async([] { RunLoop::main().stop(); });
    });
    DispatchQueue::main().async([&] { loopSleeps = true; });
    RunLoop::main().run();
    submitter.join();
}

TEST(MainQueue, DestroysEachTaskAsSoonAsItHasRun)
{
    auto resource = std::make_shared<int>(0);
    long usesSeenByTheSecond = 0;
    DispatchQueue::main().async([resource] {});
    DispatchQueue::main().async([&] { usesSeenByTheSecond = resource.use_count(); });
    ASSERT_TRUE(runMainUntil([&] { return usesSeenByTheSecond != 0; }));
    EXPECT_EQ(usesSeenByTheSecond, 1);
}

TEST(MainQueue, SyncFromAnotherThreadWaitsForTheTask)
{
    std::atomic<bool> hasRun = false;
    std::atomic<bool> hadRunOnReturn = false;
    std::atomic<bool> returned = false;
    std::thread caller([&] {
        DispatchQueue::main().sync([&] { hasRun = isMainThread(); });
        hadRunOnReturn = hasRun.load();
        returned = true;
        DispatchQueue::main().async([] {});
    });
    EXPECT_TRUE(runMainUntil([&] { return returned.load(); }));
    EXPECT_TRUE(hadRunOnReturn);
    caller.join();
}

TEST(MainQueue, IsNamed)
{
    EXPECT_EQ(DispatchQueue::main().label(), "main");
    EXPECT_EQ(DispatchQueue::global().label(), "global");
}

TEST(SerialQueue, RunsTasksInOrderOnOneThread)
{
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    DispatchQueue queue("example.qrvx.order");
    for (int i = 0; i < 1000; ++i) {
        queue.async([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
        });
    }
    queue.sync([] {});
    ASSERT_EQ(order.size(), 1000U);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    for (const auto thread : threads)
        EXPECT_EQ(thread, threads.front());
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(SerialQueue, NamesItsThreadAfterTheLabelsLastComponent)
{
    std::string name;
    DispatchQueue queue("example.qrvx.AUEnginePlayer.stateQueue");
    queue.sync([&] { name = threadName(); });
    EXPECT_EQ(name, "stateQueue");
    EXPECT_EQ(queue.label(), "example.qrvx.AUEnginePlayer.stateQueue");
}

TEST(SerialQueue, CutsANameTheKernelWouldRefuse)
{
    std::string name;
    DispatchQueue queue("aLabelWithoutAnyDots");
    queue.sync([&] { name = threadName(); });
    EXPECT_EQ(name, "aLabelWithoutAn");
}

TEST(SerialQueue, AsyncReturnsWhileTheTaskStillRuns)
{
    std::promise<void> release;
    std::atomic<bool> finished = false;
    DispatchQueue queue("example.qrvx.async");
    queue.async([&] {
        release.get_future().wait();
        finished = true;
    });
    EXPECT_FALSE(finished);
    release.set_value();
    queue.sync([] {});
    EXPECT_TRUE(finished);
}

TEST(SerialQueue, SyncPassesOnAnException)
{
    DispatchQueue queue("example.qrvx.throws");
    try {
        queue.sync([] { throw std::runtime_error("out of patience"); });
        FAIL() << "sync returned";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "out of patience");
    }
    bool stillWorks = false;
    queue.sync([&] { stillWorks = true; });
    EXPECT_TRUE(stillWorks);
}

TEST(SerialQueue, SerialisesTasksOfManyThreads)
{
    constexpr int threadCount = 16;
    constexpr int tasksEach = 500;
    DispatchQueue queue("example.qrvx.many");
    int count = 0; // guarded by nothing but the queue
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < tasksEach; ++i) {
                if (i % 10 == 0)
                    queue.sync([&] { ++count; });
                else
                    queue.async([&] { ++count; });
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    queue.sync([&] { EXPECT_EQ(count, threadCount * tasksEach); });
}

TEST(SerialQueue, DestructorWaitsForWhatWasSubmitted)
{
    std::promise<void> release;
    int count = 0;
    {
        DispatchQueue queue("example.qrvx.end");
        queue.async([&] { release.get_future().wait(); });
        for (int i = 0; i < 100; ++i)
            queue.async([&] { ++count; });
        // A task of the queue may still submit another one.
        queue.async([&] { queue.async([&] { ++count; }); });
        release.set_value();
    }
    EXPECT_EQ(count, 101);
}

TEST(SerialQueue, MayBeDestroyedOnItsOwnThread)
{
    std::promise<void> last;
    auto queue = std::make_shared<DispatchQueue>("example.qrvx.own");
    DispatchQueue &reference = *queue;
    std::promise<void> handedOver;
    reference.async([&last, &handedOver, queue]() mutable {
        handedOver.get_future().wait();
        queue->async([&last] { last.set_value(); });
        queue.reset();
    });
    queue.reset();
    handedOver.set_value();
    EXPECT_EQ(last.get_future().wait_for(std::chrono::duration<double>(patience)),
              std::future_status::ready);
    waitUntilSerialQueuesAreIdle();
}

TEST(SerialQueue, IdlenessCoversWaitingAndRunningTasksOfAllQueues)
{
    std::promise<void> release;
    std::atomic<int> count = 0;
    DispatchQueue first("example.qrvx.first");
    DispatchQueue second("example.qrvx.second");
    first.async([&] {
        release.get_future().wait();
        second.async([&] {
            first.async([&] { ++count; });
            ++count;
        });
        ++count;
    });
    release.set_value();
    waitUntilSerialQueuesAreIdle();
    EXPECT_EQ(count, 3);
}

TEST(GlobalQueue, RunsTasksSideBySideOffTheMainThread)
{
    // Each of two tasks waits for the other to begin.
    std::promise<void> firstBegan;
    std::promise<void> secondBegan;
    std::promise<bool> onMain;
    std::promise<void> end;
    DispatchQueue::global().async([&] {
        firstBegan.set_value();
        secondBegan.get_future().wait();
        onMain.set_value(isMainThread());
    });
    DispatchQueue::global().async([&] {
        secondBegan.set_value();
        firstBegan.get_future().wait();
        end.set_value();
    });
    EXPECT_FALSE(onMain.get_future().get());
    end.get_future().wait();
}

TEST(GlobalQueue, SyncWaitsAndPassesOnAnException)
{
    EXPECT_THROW(DispatchQueue::global().sync([] { throw std::logic_error("no"); }),
                 std::logic_error);
}

TEST(GlobalQueue, RunsAllOfManyTasks)
{
    constexpr int tasks = 10000;
    std::atomic<int> count = 0;
    std::promise<void> all;
    for (int i = 0; i < tasks; ++i) {
        DispatchQueue::global().async([&] {
            if (++count == tasks)
                all.set_value();
        });
    }
    EXPECT_EQ(all.get_future().wait_for(std::chrono::duration<double>(patience)),
              std::future_status::ready);
}

class QueueDeathTest : public ::testing::Test
{
protected:
    QueueDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(QueueDeathTest, SyncOnTheMainQueueFromTheMainThreadIsFatal)
{
    EXPECT_DEATH(DispatchQueue::main().sync([] {}),
                 "Fatal error: sync on the queue 'main' was called on the queue itself");
}

TEST_F(QueueDeathTest, SyncOnTheQueueItselfIsFatal)
{
    EXPECT_DEATH(
        {
            DispatchQueue queue("example.qrvx.self");
            queue.sync([&] { queue.sync([] {}); });
        },
        "Fatal error: sync on the queue 'example.qrvx.self' was called on the queue itself");
}

TEST_F(QueueDeathTest, SyncOnTheGlobalQueueFromItsPoolIsFatal)
{
    EXPECT_DEATH(DispatchQueue::global().sync([] { DispatchQueue::global().sync([] {}); }),
                 "Fatal error: sync on the queue 'global' was called on the queue itself");
}

TEST_F(QueueDeathTest, AThrowingTaskIsFatal)
{
    EXPECT_DEATH(
        {
            DispatchQueue queue("example.qrvx.throws");
            queue.async([] { throw std::runtime_error("lost"); });
            queue.sync([] {});
        },
        "Fatal error: A task on the queue 'example.qrvx.throws' threw an exception: lost");
    EXPECT_DEATH(
        {
            DispatchQueue::main().async([] { throw 1; });
            RunLoop::main().runUntil([] { return false; }, patience);
        },
        "Fatal error: A task on the queue 'main' threw an exception");
}

TEST_F(QueueDeathTest, WaitingForIdlenessOnASerialQueueIsFatal)
{
    EXPECT_DEATH(DispatchQueue("example.qrvx.idle").sync([] { waitUntilSerialQueuesAreIdle(); }),
                 "Fatal error: Waiting for the serial queues on one of them would never end");
}

} // namespace
