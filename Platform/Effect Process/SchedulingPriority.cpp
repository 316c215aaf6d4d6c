#include "Platform/Effect Process/SchedulingPriority.hpp"

#include <sched.h>

namespace platform::effect
{

std::uint32_t schedulingPriorityOfThisThread() noexcept
{
    const int policy = ::sched_getscheduler(0);
    sched_param parameters{};
    if (policy < 0 || ::sched_getparam(0, &parameters) != 0)
        return 0;
    const auto withoutFlags = static_cast<std::uint32_t>(policy & ~SCHED_RESET_ON_FORK);
    return (withoutFlags + 1) << 16U | static_cast<std::uint32_t>(parameters.sched_priority);
}

void adoptSchedulingPriority(std::uint32_t priority) noexcept
{
    if (priority == 0)
        return;
    const auto policy = static_cast<int>((priority >> 16U) - 1);
    sched_param parameters{};
    parameters.sched_priority = static_cast<int>(priority & 0xFFFFU);
    // Threads that the plug-in starts are not to inherit it.
    ::sched_setscheduler(0, policy | SCHED_RESET_ON_FORK, &parameters);
}

} // namespace platform::effect
