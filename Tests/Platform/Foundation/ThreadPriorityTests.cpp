#include "Platform/Foundation/ThreadPriority.hpp"

#include <gtest/gtest.h>

#include <thread>

#include <sched.h>
#include <sys/resource.h>

namespace
{

int niceness()
{
    return ::getpriority(PRIO_PROCESS, 0);
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
