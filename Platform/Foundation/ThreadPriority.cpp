#include "Platform/Foundation/ThreadPriority.hpp"

#include <sched.h>
#include <sys/resource.h>

namespace platform::foundation
{

namespace
{

thread_local ThreadPriority learnt = 0;

// Sound servers and their data threads take 80 to 90.
constexpr int clientPriority = 70;

// What desktops give their sound servers' helpers.
constexpr int promptNiceness = -11;

bool runAt(int priority) noexcept
{
    sched_param parameters{};
    parameters.sched_priority = priority;
    // Threads that it starts are not to inherit it.
    return ::sched_setscheduler(0, SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters) == 0;
}

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

void claimRealtimePriority() noexcept
{
    if (::sched_getscheduler(0) != SCHED_OTHER || runAt(clientPriority))
        return;
    rlimit limit{};
    if (::getrlimit(RLIMIT_RTPRIO, &limit) == 0 && limit.rlim_cur > 0 &&
        limit.rlim_cur < rlim_t{clientPriority})
        runAt(static_cast<int>(limit.rlim_cur));
}

void claimPromptness() noexcept
{
    const sched_param parameters{};
    if (::sched_getscheduler(0) != SCHED_OTHER ||
        ::sched_setscheduler(0, SCHED_OTHER | SCHED_RESET_ON_FORK, &parameters) != 0)
        return;
    if (::setpriority(PRIO_PROCESS, 0, promptNiceness) == 0)
        return;
    // The limit counts from 20 downwards.
    rlimit limit{};
    if (::getrlimit(RLIMIT_NICE, &limit) == 0 && limit.rlim_cur > 20 && limit.rlim_cur <= 40)
        ::setpriority(PRIO_PROCESS, 0, 20 - static_cast<int>(limit.rlim_cur));
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
