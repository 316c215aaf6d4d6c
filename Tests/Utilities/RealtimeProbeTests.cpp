#include "Tests/Utilities/RealtimeProbe.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>

#include <sys/syscall.h>
#include <unistd.h>

namespace
{

using test::RealtimeProbe;

// The witness itself is tried: it must see each offence.
class RealtimeProbeTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (RealtimeProbe::obstacle() != nullptr)
            GTEST_SKIP() << RealtimeProbe::obstacle();
    }
};

TEST_F(RealtimeProbeTest, SeesNothingInPlainArithmetic)
{
    volatile double sum = 0;
    RealtimeProbe::enter();
    for (int index = 0; index < 1000; ++index)
        sum = sum + index;
    const RealtimeProbe::Counts counts = RealtimeProbe::leave();
    EXPECT_EQ(counts.allocations, 0U);
    EXPECT_EQ(counts.locks, 0U);
    EXPECT_EQ(counts.systemCalls, 0U);
}

TEST_F(RealtimeProbeTest, SeesAllocationsAndFrees)
{
    void *volatile block = nullptr; // kept from being optimised away
    RealtimeProbe::enter();
    block = std::malloc(16); // NOLINT: the allocator itself is the subject
    std::free(block);        // NOLINT
    EXPECT_EQ(RealtimeProbe::leave().allocations, 2U);
}

TEST_F(RealtimeProbeTest, SeesALockThatNobodyHolds)
{
    std::mutex mutex;
    RealtimeProbe::enter();
    mutex.lock();
    mutex.unlock();
    EXPECT_EQ(RealtimeProbe::leave().locks, 1U);
}

TEST_F(RealtimeProbeTest, SeesASystemCall)
{
    RealtimeProbe::enter();
    syscall(SYS_getppid);
    EXPECT_EQ(RealtimeProbe::leave().systemCalls, 1U);
    EXPECT_GT(syscall(SYS_getpid), 0) << "outside they pass";
}

} // namespace
