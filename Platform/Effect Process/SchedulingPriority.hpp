#pragma once

#include <cstdint>

namespace platform::effect
{

/// A thread's scheduling policy and priority as one word: policy + 1 in the upper
/// half, so that 0 stands for "not known".
std::uint32_t schedulingPriorityOfThisThread() noexcept;

/// Gives it to the calling thread, if it may have it; else the thread stays as it
/// is.
void adoptSchedulingPriority(std::uint32_t priority) noexcept;

} // namespace platform::effect
