#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

namespace platform::effect
{

/// Time as a process lives through it that looks at the clock again and again: for how
/// long the other process has really been waited for. A signal, a debugger or the
/// machine's sleep may stop either for hours, which is nobody's fault.
class LivedTime
{
public:
    /// Measured by time that never jumps.
    using Clock = std::chrono::steady_clock;

    /// From `now` on. A gap between two looks counts as `longest` at most.
    explicit LivedTime(Clock::duration longest, Clock::time_point now = Clock::now())
        : longest_(longest), lastLook_(now)
    {
    }

    /// What has passed since the last look.
    Clock::duration look(Clock::time_point now = Clock::now())
    {
        return std::min(now - std::exchange(lastLook_, now), longest_);
    }

private:
    Clock::duration longest_;
    Clock::time_point lastLook_;
};

} // namespace platform::effect
