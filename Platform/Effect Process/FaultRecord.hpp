#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

namespace platform::effect
{

/// Decides whether an effect that failed is worth another start: not after too
/// many faults in too short a time.
class FaultRecord
{
public:
    /// Faults are counted by time that never jumps.
    using Clock = std::chrono::steady_clock;

    /// How many faults are too many.
    struct Limit {
        /// The fault that is one too many; 0 for no limit.
        std::size_t faults = 3;
        /// Only faults so short a time apart count together.
        std::chrono::seconds within{60};
    };

    /// A record without faults.
    explicit FaultRecord(Limit limit) : limit_(limit) {}

    /// Notes a fault and answers whether it was one too many.
    bool note(Clock::time_point now)
    {
        faults_.push_back(now);
        while (faults_.front() + limit_.within < now)
            faults_.pop_front();
        return limit_.faults > 0 && faults_.size() >= limit_.faults;
    }

    /// Forgets all faults.
    void clear() { faults_.clear(); }

private:
    Limit limit_;
    std::deque<Clock::time_point> faults_;
};

} // namespace platform::effect
