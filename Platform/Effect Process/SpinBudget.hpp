#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <chrono>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace platform::effect
{

/// How long to look again and again for what the other process is about to do,
/// before the kernel is asked to wait. That pays where the wait is shorter than
/// what sleeping and waking take, and costs the wait itself in processor time; so
/// it follows how long the last waits were.
class SpinBudget
{
public:
    /// Never spins for longer than `most`; 0 never spins.
    explicit SpinBudget(std::chrono::nanoseconds most) : most_(most) {}

    /// Looks whether `isDone()` until it is, or the budget is spent. Answers
    /// whether it is.
    template <typename IsDone>
    REALTIME bool spin(IsDone isDone) const noexcept
    {
        if (isDone())
            return true;
        if (average_ > most_)
            return false;
        const auto end = std::chrono::steady_clock::now() + most_;
        do {
            for (int i = 0; i < looksPerGlance; ++i) {
                if (isDone())
                    return true;
                relax();
            }
        } while (std::chrono::steady_clock::now() < end);
        return isDone();
    }

    /// Notes how long a wait was in the end.
    REALTIME void learn(std::chrono::nanoseconds waited) noexcept
    {
        average_ += (waited - average_) / 8;
    }

private:
    // The clock is read after so many looks.
    static constexpr int looksPerGlance = 8;

    static void relax() noexcept
    {
#if defined(__SSE2__)
        _mm_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }

    std::chrono::nanoseconds most_;
    std::chrono::nanoseconds average_{0};
};

/// What spinning may take on this machine: nothing where the other process could
/// not run meanwhile.
std::chrono::nanoseconds usualSpin();

} // namespace platform::effect
