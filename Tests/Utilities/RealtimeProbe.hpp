#pragma once

#include <cstddef>
#include <ostream>

namespace test
{

/// What a thread did between `enter` and `leave` that a real-time thread must not
/// do. The probe stands before the C library's allocator and locks, and has the
/// kernel report system calls (syscall user dispatch, Linux 5.11).
struct RealtimeProbe {
    struct Counts {
        std::size_t allocations = 0; // and frees
        std::size_t locks = 0;       // mutexes, read-write locks, conditions, semaphores
        std::size_t systemCalls = 0; // but for those that follow
        std::size_t futexCalls = 0;  // which go through, unlike the others

        Counts &operator+=(const Counts &other)
        {
            allocations += other.allocations;
            locks += other.locks;
            systemCalls += other.systemCalls;
            futexCalls += other.futexCalls;
            return *this;
        }
        bool operator==(const Counts &) const = default;
        friend std::ostream &operator<<(std::ostream &stream, const Counts &counts)
        {
            return stream << counts.allocations << " allocations, " << counts.locks << " locks, "
                          << counts.systemCalls << " system calls, " << counts.futexCalls
                          << " on futexes";
        }
    };

    /// Null when the probe can count all three here, else why it cannot: a
    /// sanitizer has taken its place, or the kernel is too old.
    static const char *obstacle();

    /// On the thread that is to be watched. Not nested.
    static void enter();
    static Counts leave();
};

} // namespace test
