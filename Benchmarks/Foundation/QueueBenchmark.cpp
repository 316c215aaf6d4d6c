// Handing empty tasks to another thread's loop in bursts of a thousand, and waiting
// until the last has run: microseconds a burst are nanoseconds a task.

#include "LoopMain.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"

#include <benchmark/benchmark.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <array>
#include <atomic>
#include <thread>

#include <glib.h>
#include <sched.h>

namespace
{

constexpr int burstLength = 1'000;

/// Told by the last task of a burst.
std::atomic<bool> burstHasRun = false;

void endBurst()
{
    burstHasRun.store(true, std::memory_order_release);
}

/// Two processors to measure on, the same one twice where there is no other.
std::array<int, 2> processors()
{
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    sched_getaffinity(0, sizeof allowed, &allowed);
    std::array<int, 2> found{};
    std::size_t count = 0;
    for (int i = 0; i < CPU_SETSIZE && count < found.size(); ++i) {
        if (CPU_ISSET(i, &allowed))
            found.at(count++) = i;
    }
    if (count == 1)
        found[1] = found[0];
    return found;
}

const std::array<int, 2> producerAndLoop = processors();

/// Left to itself, the system puts both threads on one processor now and then, and
/// two quite different things are timed.
void keepThreadOn(int processor)
{
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(processor, &only);
    sched_setaffinity(0, sizeof only, &only);
}

/// Without sleeping, since waking would be timed as well.
void waitForTheLast()
{
    while (!burstHasRun.load(std::memory_order_acquire)) {
        if (producerAndLoop[0] == producerAndLoop[1])
            std::this_thread::yield();
        else
            __builtin_ia32_pause();
    }
}

/// Times bursts whose tasks `post(isLast)` submits.
template <typename Post>
void timeBursts(benchmark::State &state, Post post)
{
    keepThreadOn(producerAndLoop[0]);
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
    std::thread consumer([&] {
        keepThreadOn(producerAndLoop[1]);
        loop.run();
    });
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
    keepThreadOn(producerAndLoop[1]);
    return runBenchmarksBesideTheLoop(argc, argv);
}
