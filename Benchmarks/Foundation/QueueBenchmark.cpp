// Handing empty tasks to another thread's loop in bursts of a thousand, and waiting
// until the last has run: microseconds a burst are nanoseconds a task.

#include "LoopMain.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"

#include <benchmark/benchmark.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <atomic>
#include <thread>

#include <glib.h>

namespace
{

constexpr int burstLength = 1'000;

/// Told by the last task of a burst.
std::atomic<bool> burstHasRun = false;

void endBurst()
{
    burstHasRun.store(true, std::memory_order_release);
}

/// Without sleeping, since waking would be timed as well; but when the loop does not
/// get on, it may be waiting for this very processor.
void waitForTheLast()
{
    constexpr int longest = 5'000; // some 100 us
    for (int turn = 0; !burstHasRun.load(std::memory_order_acquire); ++turn) {
        if (turn < longest)
            __builtin_ia32_pause();
        else
            std::this_thread::yield();
    }
}

/// Times bursts whose tasks `post(isLast)` submits.
template <typename Post>
void timeBursts(benchmark::State &state, Post post)
{
    for (auto _ : state) {
        burstHasRun.store(false, std::memory_order_relaxed);
        for (int i = 1; i < burstLength; ++i)
            post(false);
        post(true);
        waitForTheLast();
    }
    state.SetItemsProcessed(state.iterations() * burstLength);
}

void mainQueue(benchmark::State &state)
{
    timeBursts(state, [](bool isLast) {
        if (isLast)
            DispatchQueue::main().async(endBurst);
        else
            DispatchQueue::main().async([] {});
    });
}
BENCHMARK(mainQueue)->Unit(benchmark::kMicrosecond)->UseRealTime();

void glibIdle(benchmark::State &state)
{
    timeBursts(state, [](bool isLast) {
        const GSourceFunc last = [](gpointer) -> gboolean {
            endBurst();
            return G_SOURCE_REMOVE;
        };
        g_idle_add(
            isLast ? last : [](gpointer) -> gboolean { return G_SOURCE_REMOVE; }, nullptr);
    });
}
BENCHMARK(glibIdle)->Unit(benchmark::kMicrosecond)->UseRealTime();

void asioPost(benchmark::State &state)
{
    // One thread runs it, which the hint lets it make use of.
    boost::asio::io_context loop(1);
    const auto work = boost::asio::make_work_guard(loop);
    std::thread consumer([&] { loop.run(); });
    timeBursts(state, [&](bool isLast) {
        if (isLast)
            boost::asio::post(loop, endBurst);
        else
            boost::asio::post(loop, [] {});
    });
    loop.stop();
    consumer.join();
}
BENCHMARK(asioPost)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace

int main(int argc, char **argv)
{
    return runBenchmarksBesideTheLoop(argc, argv);
}
