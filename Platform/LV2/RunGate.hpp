#pragma once

#include "Platform/Foundation/AsymmetricFence.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <atomic>

namespace platform::lv2
{

/// Keeps the audio callback out of a plug-in while a control operation has it.
/// The callback never waits: at a closed gate it turns back.
class RunGate
{
public:
    /// On the audio callback: whether the plug-in may be run now. When it may,
    /// `leave` must follow.
    REALTIME bool enter() noexcept
    {
        inside_.store(true, std::memory_order_relaxed);
        foundation::lightFence();
        if (!closed_.load(std::memory_order_acquire))
            return true;
        leave();
        return false;
    }
    /// After `enter` answered true: the block is done.
    REALTIME void leave() noexcept { inside_.store(false, std::memory_order_release); }

    /// Closes the gate for its lifetime; made, the callback is outside. One at a
    /// time, never on the audio callback.
    class Closure
    {
    public:
        /// Closes the gate and waits for the block under way, if there is one.
        explicit Closure(RunGate &gate);
        ~Closure();
        Closure(const Closure &) = delete;
        Closure &operator=(const Closure &) = delete;

    private:
        RunGate &gate_;
    };

private:
    // Each side stores its own, passes a fence and looks at the other's: of a
    // callback that enters and a closer, at least one sees the other.
    std::atomic<bool> inside_{false};
    std::atomic<bool> closed_{false};
};

} // namespace platform::lv2
