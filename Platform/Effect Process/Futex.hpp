#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace platform::effect
{

static_assert(std::atomic<std::uint32_t>::is_always_lock_free &&
                  sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t),
              "words in shared memory are what the kernel waits on");

/// Sleeps while `word` holds `value`, until somebody wakes it or `deadline` has
/// come; may return early. The word may be shared with other processes. It is the
/// one system call of the audio callback, and bounded by the deadline.
REALTIME void futexWait(const std::atomic<std::uint32_t> &word, std::uint32_t value,
                        std::chrono::steady_clock::time_point deadline) noexcept;

/// The same without a deadline.
void futexWait(const std::atomic<std::uint32_t> &word, std::uint32_t value) noexcept;

/// Wakes whoever sleeps on `word`, in any process.
REALTIME void futexWake(const std::atomic<std::uint32_t> &word) noexcept;

} // namespace platform::effect
