#include "Platform/Foundation/AsymmetricFence.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace
{

// Far enough apart for each to have its cache line.
struct alignas(64) Word {
    std::atomic<int> value{0};
};

TEST(AsymmetricFence, OfTwoThatStoreAndThenLookAtLeastOneSeesTheOther)
{
    constexpr int rounds = 5000;
    Word lightStore;
    Word heavyStore;
    Word lightRound;
    Word heavyRound;
    int seenByLight = 0;
    int missedByBoth = 0;
    // They begin each round together, so that their stores and loads cross.
    const auto meet = [](Word &own, const Word &other, int round) {
        own.value.store(round);
        for (int look = 0; other.value.load() < round; ++look)
            if (look > 10000)
                std::this_thread::yield(); // on one processor it comes to nothing
    };
    std::thread light([&] {
        for (int round = 1; round <= rounds; ++round) {
            meet(lightRound, heavyRound, 2 * round - 1);
            lightStore.value.store(round, std::memory_order_relaxed);
            platform::foundation::lightFence();
            seenByLight = heavyStore.value.load(std::memory_order_relaxed);
            meet(lightRound, heavyRound, 2 * round);
        }
    });
    for (int round = 1; round <= rounds; ++round) {
        meet(heavyRound, lightRound, 2 * round - 1);
        heavyStore.value.store(round, std::memory_order_relaxed);
        platform::foundation::heavyFence();
        const int seenByHeavy = lightStore.value.load(std::memory_order_relaxed);
        meet(heavyRound, lightRound, 2 * round);
        if (seenByHeavy != round && seenByLight != round)
            ++missedByBoth;
    }
    light.join();
    EXPECT_EQ(missedByBoth, 0);
}

} // namespace
