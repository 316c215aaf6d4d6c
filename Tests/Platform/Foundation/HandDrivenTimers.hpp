#pragma once

#include "Platform/Foundation/TimerDriver.hpp"

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

/// Timers on a clock that the test turns by hand. Install one, make timers, then
/// `advance`. Time is counted in whole microseconds so that sums are exact.
class HandDrivenTimers final : public TimerDriver
{
public:
    HandDrivenTimers() = default;
    /// Timers that are still valid, and what they keep alive, end with their clock.
    ~HandDrivenTimers() override
    {
        for (const auto &timer : std::exchange(*timers_, {}))
            timer->tick = nullptr;
    }
    HandDrivenTimers(const HandDrivenTimers &) = delete;
    HandDrivenTimers &operator=(const HandDrivenTimers &) = delete;

    std::unique_ptr<Schedule> schedule(double interval, std::function<void()> tick) override
    {
        auto timer = std::make_shared<Timer>();
        timer->interval = std::llround(interval * 1e6);
        timer->due = now_ + timer->interval;
        timer->tick = std::move(tick);
        timers_->push_back(timer);
        intervals.push_back(interval);
        return std::make_unique<Claim>(timers_, timer);
    }

    /// Lets `seconds` pass and calls what falls due, in the order of time.
    void advance(double seconds)
    {
        const std::int64_t end = now_ + std::llround(seconds * 1e6);
        while (const auto timer = firstDue(end)) {
            now_ = timer->due;
            timer->due += timer->interval;
            timer->tick();
        }
        now_ = end;
    }

    std::size_t running() const { return timers_->size(); }

    /// What was asked for, in seconds.
    std::vector<double> intervals;

private:
    struct Timer {
        std::int64_t interval = 0;
        std::int64_t due = 0;
        std::function<void()> tick;
    };
    using Timers = std::vector<std::shared_ptr<Timer>>;

    struct Claim final : Schedule {
        Claim(std::shared_ptr<Timers> all, std::shared_ptr<Timer> one)
            : timers(std::move(all)), timer(std::move(one))
        {
        }
        ~Claim() override { std::erase(*timers, timer); }
        Claim(const Claim &) = delete;
        Claim &operator=(const Claim &) = delete;

        std::shared_ptr<Timers> timers;
        std::shared_ptr<Timer> timer;
    };

    std::shared_ptr<Timer> firstDue(std::int64_t end) const
    {
        std::shared_ptr<Timer> first;
        for (const auto &timer : *timers_) {
            if (timer->due <= end && (!first || timer->due < first->due))
                first = timer;
        }
        return first;
    }

    std::int64_t now_ = 0;
    std::shared_ptr<Timers> timers_ = std::make_shared<Timers>();
};
