#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace platform::audio
{

/// An object that control threads replace while one real-time reader uses it.
///
/// The reader announces what it uses before it trusts it, so a replaced object
/// is handed back to the control side only when the reader cannot reach it any
/// more (a hazard pointer for one reader). The reader never waits.
template <typename T>
class Published
{
public:
    Published() = default;
    ~Published() { exchange(nullptr); }
    Published(const Published &) = delete;
    Published &operator=(const Published &) = delete;

    /// Puts `next` in place and answers what was there, once the reader has let
    /// go of it: after at most one block. Control threads, one at a time; not
    /// between `acquire` and `release` of the reader's own thread.
    std::unique_ptr<T> exchange(std::unique_ptr<T> next)
    {
        T *old = current_.exchange(next.release());
        while (old != nullptr && inUse_.load() == old)
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        return std::unique_ptr<T>(old);
    }

    /// The object in place, or null; it stays valid until `release`. The reader.
    REALTIME T *acquire() noexcept
    {
        T *seen = current_.load();
        for (;;) {
            inUse_.store(seen);
            T *const again = current_.load();
            if (again == seen)
                return seen;
            seen = again;
        }
    }

    REALTIME void release() noexcept { inUse_.store(nullptr, std::memory_order_release); }

    /// The object in place, for the control thread that put it there.
    T *get() const { return current_.load(); }

private:
    std::atomic<T *> current_{nullptr};
    std::atomic<T *> inUse_{nullptr};
};

} // namespace platform::audio
