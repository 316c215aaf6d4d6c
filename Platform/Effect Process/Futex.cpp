#include "Platform/Effect Process/Futex.hpp"

#include <climits>
#include <ctime>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform::effect
{

namespace
{

// A wait for any bit takes its deadline as a moment of the steady clock.
void wait(const std::atomic<std::uint32_t> &word, std::uint32_t value,
          const timespec *moment) noexcept
{
    ::syscall(SYS_futex, &word, FUTEX_WAIT_BITSET, value, moment, nullptr, FUTEX_BITSET_MATCH_ANY);
}

} // namespace

void futexWait(const std::atomic<std::uint32_t> &word, std::uint32_t value,
               std::chrono::steady_clock::time_point deadline) noexcept
{
    using std::chrono::duration_cast;
    const auto since = deadline.time_since_epoch();
    const auto seconds = duration_cast<std::chrono::seconds>(since);
    const auto rest = duration_cast<std::chrono::nanoseconds>(since - seconds);
    timespec moment{};
    moment.tv_sec = seconds.count();
    moment.tv_nsec = rest.count();
    wait(word, value, &moment);
}

void futexWait(const std::atomic<std::uint32_t> &word, std::uint32_t value) noexcept
{
    wait(word, value, nullptr);
}

void futexWake(const std::atomic<std::uint32_t> &word) noexcept
{
    ::syscall(SYS_futex, &word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

} // namespace platform::effect
