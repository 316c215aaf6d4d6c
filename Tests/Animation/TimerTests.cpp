#include "Animation/Animator.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

// These run on the real timers of the main run loop.
namespace
{

using Clock = std::chrono::steady_clock;

constexpr double patience = 10; // seconds

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool waitUntil(const std::function<bool()> &condition)
{
    return RunLoop::main().runUntil(condition, patience);
}

TEST(AnimationInTime, ARunTakesItsFramesAndOneMoreTick)
{
    const auto start = Clock::now();
    double end = 0;
    int steps = 0;
    auto animator = Animator::create(0, 1, 20, 0.005F);
    animator->onAnimation = [&](Animator &, float) { ++steps; };
    animator->onFinished = [&](Animator &, float) { end = secondsSince(start); };
    animator->start();
    const std::weak_ptr<Animator> watched = animator;
    animator = nullptr;
    ASSERT_TRUE(waitUntil([&] { return end > 0; }));
    EXPECT_EQ(steps, 20);
    EXPECT_GE(end, 21 * 0.005 - 1e-6) << "never early";
    EXPECT_TRUE(watched.expired()) << "its timer was its only hold";
}

TEST(AnimationInTime, TicksKeepTheirGrid)
{
    const auto start = Clock::now();
    std::vector<double> times;
    const auto animator = Animator::create(0, 1, 1000, 0.009F);
    animator->onAnimation = [&](Animator &, float) { times.push_back(secondsSince(start)); };
    animator->start();
    ASSERT_TRUE(waitUntil([&] { return times.size() == 30; }));
    animator->stop();
    // A tick may be late or left out, but never comes before its place.
    for (std::size_t tick = 0; tick < times.size(); ++tick)
        EXPECT_GE(times[tick], static_cast<double>(tick + 1) * static_cast<double>(0.009F) - 1e-6);
}

TEST(AnimationInTime, AnAsynchronousChainRunsItsAnimatorsOnTheirOwnTimers)
{
    const auto chain = std::make_shared<AnimatorChain>();
    chain->async = true;
    int ended = 0;
    bool chainEnded = false;
    for (int i = 0; i < 3; ++i) {
        const auto animator = Animator::create(0, 1, 10, 0.005F);
        animator->onFinished = [&](Animator &, float) {
            EXPECT_TRUE(chainEnded) << "the chain only starts them";
            ++ended;
        };
        chain->add(animator);
    }
    chain->onFinished = [&](AnimatorChain &) { chainEnded = true; };
    chain->start();
    EXPECT_TRUE(waitUntil([&] { return ended == 3; }));
}

TEST(AnimationInTime, StackSequencerAndImpulseEndByThemselves)
{
    int ended = 0;
    const auto stack = std::make_shared<AnimatorStack>();
    stack->add(Animator::create(0, 1, 3));
    stack->onFinished = [&](AnimatorStack &) { ++ended; };
    stack->start();
    const auto sequencer = std::make_shared<AnimationSequencer>();
    sequencer->add(Animator::create(0, 1, 3), 4);
    sequencer->onFinished = [&](AnimationSequencer &) { ++ended; };
    sequencer->start();
    const auto impulse = Impulse::create(1, 1, 0.005F, 0.5F);
    impulse->onFinished = [&](Impulse &) { ++ended; };
    impulse->start();
    EXPECT_TRUE(waitUntil([&] { return ended == 3; }));
}

TEST(AnimationInTime, AnIntervalOfNoneTicksAsFastAsTimersGo)
{
    bool ended = false;
    const auto animator = Animator::create(0, 1, 50, 0);
    animator->onFinished = [&](Animator &, float) { ended = true; };
    animator->start();
    EXPECT_TRUE(waitUntil([&] { return ended; }));
}

} // namespace
