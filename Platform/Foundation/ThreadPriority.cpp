#include "Platform/Foundation/ThreadPriority.hpp"

#include <cstdint>

#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform::foundation
{

namespace
{

thread_local ThreadPriority learnt = 0;

// Sound servers and their data threads take 80 to 90.
constexpr int clientPriority = 70;

// What desktops give their sound servers' helpers.
constexpr int promptNiceness = -11;

// The least that the kernel gives.
constexpr std::uint64_t shortestSlice = 100'000; // nanoseconds

/// `sched_attr` as the kernel first had it: its own header cannot be included beside
/// the C library's, and not every C library has it.
struct SchedulingAttributes {
    std::uint32_t size = sizeof(SchedulingAttributes);
    std::uint32_t policy = SCHED_OTHER;
    std::uint64_t flags = 0;
    std::int32_t niceness = 0;
    std::uint32_t priority = 0;
    std::uint64_t runtime = 0; // nanoseconds
    std::uint64_t deadline = 0;
    std::uint64_t period = 0;
};

// Threads that it starts are not to inherit it.
constexpr std::uint64_t resetOnFork = 1; // SCHED_FLAG_RESET_ON_FORK

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
    SchedulingAttributes attributes;
    attributes.policy = (priority >> 16U) - 1;
    attributes.flags = resetOnFork;
    attributes.niceness = ::getpriority(PRIO_PROCESS, 0);
    attributes.priority = priority & 0xFFFFU;
    attributes.runtime = shortestSlice;
    ::syscall(SYS_sched_setattr, 0, &attributes, 0);
}

} // namespace platform::foundation
