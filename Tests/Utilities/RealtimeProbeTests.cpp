#include "Tests/Utilities/RealtimeProbe.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <vector>

#include <linux/futex.h>
#include <semaphore.h>
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
    EXPECT_EQ(RealtimeProbe::leave(), RealtimeProbe::Counts{});
}

TEST_F(RealtimeProbeTest, SeesAllocationsAndFrees)
{
    void *volatile block = nullptr; // kept from being optimised away
    RealtimeProbe::enter();
    block = std::malloc(16); // NOLINT: the allocator itself is the subject
    std::free(block);        // NOLINT
    EXPECT_EQ(RealtimeProbe::leave().allocations, 2U);
}

TEST_F(RealtimeProbeTest, SeesContainersAllocate)
{
    RealtimeProbe::enter();
    {
        std::atomic<std::vector<int> *> seen{new std::vector<int>(100)};
        delete seen.load(); // NOLINT(cppcoreguidelines-owning-memory): the allocation is the test
    }
    EXPECT_GE(RealtimeProbe::leave().allocations, 4U);
}

TEST_F(RealtimeProbeTest, SeesALockThatNobodyHolds)
{
    std::mutex mutex;
    RealtimeProbe::enter();
    mutex.lock();
    mutex.unlock();
    EXPECT_EQ(RealtimeProbe::leave().locks, 1U);
}

TEST_F(RealtimeProbeTest, SeesThatAThreadIsWoken)
{
    sem_t semaphore;
    ASSERT_EQ(sem_init(&semaphore, 0, 0), 0);
    std::condition_variable_any condition;
    RealtimeProbe::enter();
    sem_post(&semaphore);
    condition.notify_one();
    EXPECT_GE(RealtimeProbe::leave().locks, 2U);
    sem_destroy(&semaphore);
}

TEST_F(RealtimeProbeTest, SeesASystemCall)
{
    RealtimeProbe::enter();
    syscall(SYS_getppid);
    EXPECT_EQ(RealtimeProbe::leave().systemCalls, 1U);
    EXPECT_GT(syscall(SYS_getpid), 0) << "outside they pass";
}

TEST_F(RealtimeProbeTest, CountsCallsOnFutexesApartAndLetsThemThrough)
{
    std::atomic<std::uint32_t> word{1};
    const timespec moment{0, 1000000};
    const auto begun = std::chrono::steady_clock::now();
    RealtimeProbe::enter();
    const long woken = syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    const long waited = syscall(SYS_futex, &word, FUTEX_WAIT, 1, &moment, nullptr, 0);
    const int error = errno;
    const long wrong = syscall(SYS_futex, &word, FUTEX_WAIT, 2, &moment, nullptr, 0);
    syscall(SYS_getppid);
    const RealtimeProbe::Counts counts = RealtimeProbe::leave();
    EXPECT_EQ(counts.futexCalls, 3U);
    EXPECT_EQ(counts.systemCalls, 1U) << "also behind them";
    EXPECT_EQ(woken, 0);
    EXPECT_EQ(waited, -1);
    EXPECT_EQ(error, ETIMEDOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(1));
    EXPECT_EQ(wrong, -1);
}

TEST_F(RealtimeProbeTest, SeesWhatIsWritten)
{
    RealtimeProbe::enter();
    const ssize_t written = write(STDERR_FILENO, "", 0);
    EXPECT_EQ(RealtimeProbe::leave().systemCalls, 1U) << written;
}

} // namespace
