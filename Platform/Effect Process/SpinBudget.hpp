#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <chrono>

#include <sched.h>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace platform::effect
{

/// How long to look again and again for what the other process is about to do,
/// before the kernel is asked to wait. That pays where it happens within the time
/// that sleeping and waking would take, and is lost processor time where it does
/// not: so it is done for as long as it mostly succeeds, and tried again from time
/// to time.
class SpinBudget
{
public:
    /// Never spins for longer than `most`; 0 never spins.
    explicit SpinBudget(std::chrono::nanoseconds most) : most_(most) {}

    /// Looks whether `isDone()` until it is, or the budget is spent. Answers
    /// whether it is.
    template <typename IsDone>
    REALTIME bool spin(IsDone isDone) noexcept
    {
        if (isDone())
            return true;
        if (!isWorthwhile())
            return false;
        const bool isInTime = look(isDone);
        score_ += isInTime ? (fullScore - score_) / memory : -score_ / memory;
        return isInTime;
    }

    /// As `spin`, for something done on `processor`; where that is the calling thread's
    /// own, looking would only keep it from being done: it does not look then.
    template <typename IsDone>
    REALTIME bool spinBeside(int processor, IsDone isDone) noexcept
    {
        return processor != ::sched_getcpu() && spin(isDone);
    }

private:
    // The clock is read after so many looks.
    static constexpr int looksPerGlance = 8;
    // How many waits are skipped before spinning is tried again.
    static constexpr int skipped = 64;
    // The score moves by one part in so many.
    static constexpr int memory = 8;
    static constexpr int fullScore = 1024;

    bool isWorthwhile() noexcept
    {
        if (most_.count() == 0)
            return false;
        if (score_ >= fullScore / 2)
            return true;
        if (++skips_ < skipped)
            return false;
        skips_ = 0;
        return true;
    }

    template <typename IsDone>
    bool look(IsDone isDone) const noexcept
    {
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

    static void relax() noexcept
    {
#if defined(__SSE2__)
        _mm_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }

    std::chrono::nanoseconds most_;
    int score_ = fullScore;
    int skips_ = 0;
};

/// For ends that render block after block as fast as they can: each is about to act
/// while the other looks. Nothing where the two could not run at a time.
std::chrono::nanoseconds usualSpin();

} // namespace platform::effect
