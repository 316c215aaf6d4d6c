#include "Platform/Foundation/ThreadPriority.hpp"

#include <gtest/gtest.h>

#include <thread>

#include <cstdint>

#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

int niceness()
{
    return ::getpriority(PRIO_PROCESS, 0);
}

/// How long the calling thread may run before another has its turn, in nanoseconds; 0
/// where the kernel does not tell.
std::uint64_t slice()
{
    // `sched_attr` as the kernel first had it; the runtime is its sixth member.
    std::uint32_t attributes[12] = {};
    if (::syscall(SYS_sched_getattr, 0, attributes, sizeof attributes, 0) != 0)
        return 0;
    return attributes[6] | std::uint64_t{attributes[7]} << 32U;
}

/// Whether the system lets a thread of this process go before others.
bool mayBeNegative()
{
    bool may = false;
    std::thread([&] { may = ::setpriority(PRIO_PROCESS, 0, -1) == 0; }).join();
    return may;
}

} // namespace

TEST(ThreadPriority, LetsAThreadRunSoonerWhereItMayAndNotTheThreadsThatItStarts)
{
    const int usual = niceness();
    int prompt = 0;
    int started = 0;
    std::thread([&] {
        platform::foundation::claimPromptness();
        prompt = niceness();
        EXPECT_EQ(::sched_getscheduler(0) & ~SCHED_RESET_ON_FORK, SCHED_OTHER);
        std::thread([&] { started = niceness(); }).join();
    }).join();
    if (mayBeNegative())
        EXPECT_LT(prompt, 0);
    else
        EXPECT_EQ(prompt, usual);
    EXPECT_GE(started, 0);
    EXPECT_EQ(niceness(), usual) << "nobody else is touched";
}

TEST(ThreadPriority, OfAThreadThatAnotherWaitsForIsTheOthersWithShorterSlices)
{
    if (slice() == 0)
        GTEST_SKIP() << "this kernel does not tell of slices";
    const std::uint64_t usual = slice();
    const int usualNiceness = niceness();
    platform::foundation::learnThreadPriority();
    const auto priority = platform::foundation::threadPriority();
    std::thread([&] {
        platform::foundation::adoptThreadPriority(priority);
        EXPECT_EQ(::sched_getscheduler(0) & ~SCHED_RESET_ON_FORK, SCHED_OTHER);
        EXPECT_EQ(niceness(), usualNiceness);
        EXPECT_LT(slice(), usual);
        std::thread([&] { EXPECT_EQ(slice(), usual) << "it is not inherited"; }).join();
    }).join();
    EXPECT_EQ(slice(), usual) << "nobody else is touched";
}

TEST(ThreadPriority, IsAdoptedWhereItMayBe)
{
    platform::foundation::ThreadPriority priority = 0;
    bool mayBeRealtime = false;
    std::thread([&] {
        sched_param parameters{};
        parameters.sched_priority = 7;
        mayBeRealtime = ::sched_setscheduler(0, SCHED_FIFO, &parameters) == 0;
        platform::foundation::learnThreadPriority();
        priority = platform::foundation::threadPriority();
    }).join();
    if (!mayBeRealtime)
        GTEST_SKIP() << "this user may not have real-time priority";
    std::thread([&] {
        platform::foundation::adoptThreadPriority(priority);
        EXPECT_EQ(::sched_getscheduler(0) & ~SCHED_RESET_ON_FORK, SCHED_FIFO);
        sched_param parameters{};
        EXPECT_EQ(::sched_getparam(0, &parameters), 0);
        EXPECT_EQ(parameters.sched_priority, 7);
    }).join();
}
