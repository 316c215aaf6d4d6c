#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <atomic>

namespace platform::foundation
{

/// Whether `heavyFence` reaches the other threads; settled before `main`.
extern const bool heavyFenceIsShared;

/// The two halves of a fence between a thread that passes it all the time and one
/// that does so now and then: when each stores, passes its half and then loads what
/// the other stores, at least one sees the other's store. That takes a fence of
/// dozens of nanoseconds on both sides, or else one side that has the kernel put a
/// fence into all running threads of this process (membarrier(2)): then the other
/// only keeps the compiler from reordering.
///
/// The light half is the audio callback's.
REALTIME inline void lightFence() noexcept
{
    if (heavyFenceIsShared)
        std::atomic_signal_fence(std::memory_order_seq_cst);
    else
        std::atomic_thread_fence(std::memory_order_seq_cst);
}

/// The heavy half takes some microseconds. Never on the audio callback.
void heavyFence() noexcept;

} // namespace platform::foundation
