#include "Tests/Utilities/MainThread.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/NSTimer.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <gtest/gtest.h>

namespace test
{

namespace
{

constexpr double patience = 60; // seconds

} // namespace

bool serveMainThreadUntil(const std::function<bool()> &condition)
{
    const auto turns = NSTimer::scheduledTimer(0.005, true, [](NSTimer &) {});
    const bool held = RunLoop::main().runUntil(condition, patience);
    turns->invalidate();
    return held;
}

void drainMainQueue()
{
    bool drained = false;
    DispatchQueue::main().async([&] { drained = true; });
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return drained; }, patience));
}

} // namespace test
