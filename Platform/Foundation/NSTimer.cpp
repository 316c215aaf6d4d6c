#include "Platform/Foundation/NSTimer.hpp"

#include <algorithm>
#include <utility>

namespace
{

constexpr double shortestInterval = 0.0001;
// Some thirty years: an infinite wait that drivers can still count in
// nanoseconds.
constexpr double longestInterval = 1e9;

double usableInterval(double interval)
{
    // Not-a-number is not above zero either.
    return interval > 0 ? std::min(interval, longestInterval) : shortestInterval;
}

} // namespace

std::shared_ptr<NSTimer> NSTimer::scheduledTimer(double interval, bool repeats,
                                                 std::function<void(NSTimer &)> block)
{
    auto timer = std::make_shared<NSTimer>(Private(), repeats, std::move(block));
    timer->schedule_ =
        TimerDriver::installed().schedule(usableInterval(interval), [timer] { timer->fire(); });
    return timer;
}

NSTimer::NSTimer(Private /*key*/, bool repeats, std::function<void(NSTimer &)> block)
    : repeats_(repeats), block_(std::move(block))
{
}

void NSTimer::invalidate()
{
    // Giving these up may give up the last hold on this timer.
    const auto self = shared_from_this();
    const auto schedule = std::move(schedule_);
    block_ = nullptr;
}

void NSTimer::fire()
{
    const auto self = shared_from_this();
    const auto block = block_;
    if (!repeats_)
        invalidate();
    block(*this);
}
