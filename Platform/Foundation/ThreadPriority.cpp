#include "Platform/Foundation/ThreadPriority.hpp"

#include <sched.h>

namespace platform::foundation
{

namespace
{

thread_local ThreadPriority learnt = 0;

} // namespace

void learnThreadPriority() noexcept
{
    const int policy = ::sched_getscheduler(0);
    sched_param parameters{};
    if (policy < 0 || ::sched_getparam(0, &parameters) != 0)
        return;
    const auto withoutFlags = static_cast<ThreadPriority>(policy & ~SCHED_RESET_ON_FORK);
    learnt = (withoutFlags + 1) << 16U | static_cast<ThreadPriority>(parameters.sched_priority);
}

ThreadPriority threadPriority() noexcept
{
    return learnt;
}

void adoptThreadPriority(ThreadPriority priority) noexcept
{
    if (priority == 0)
        return;
    const auto policy = static_cast<int>((priority >> 16U) - 1);
    sched_param parameters{};
    parameters.sched_priority = static_cast<int>(priority & 0xFFFFU);
    // Threads that it starts are not to inherit it.
    ::sched_setscheduler(0, policy | SCHED_RESET_ON_FORK, &parameters);
}

} // namespace platform::foundation
