#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cstdint>

namespace platform::foundation
{

/// A thread's scheduling policy and priority as one word: policy + 1 in the upper
/// half, so that 0 stands for "not known".
using ThreadPriority = std::uint32_t;

/// Asks the kernel for the calling thread's and remembers it for that thread. For
/// whoever owns a real-time thread, when it begins.
void learnThreadPriority() noexcept;

/// Has the calling thread run before all that need not be in time, if it may and does
/// not already: for whoever owns the audio callback's thread, when that begins and its
/// library has not seen to it. Below what sound servers run at.
void claimRealtimePriority() noexcept;

/// Has the calling thread run sooner than the work beside it, if it may: for one that
/// prepares what a real-time thread takes. Threads that it starts do not inherit it. It
/// has to share the processor still, since it may run what others have written.
void claimPromptness() noexcept;

/// What the calling thread learnt last; does not ask the kernel.
REALTIME ThreadPriority threadPriority() noexcept;

/// Gives the calling thread the priority of one that waits for what it does, if it may
/// have it; else it stays as it is. Where priority is not real-time, it asks for the
/// shortest slices of the processor too: it runs as soon as it is woken then, in place
/// of whoever woke it and before work that goes on for longer. Linux 6.12 and later heed
/// that.
void adoptThreadPriority(ThreadPriority priority) noexcept;

} // namespace platform::foundation
