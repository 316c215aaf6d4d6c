#pragma once

#include "Platform/Foundation/AsymmetricFence.hpp"
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
/// more (a hazard pointer for one reader). The reader never waits, and pays for no
/// fence: it looks for each block, while replacements are rare.
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
        T *old = current_.exchange(next.release(), std::memory_order_acq_rel);
        if (old == nullptr)
            return nullptr;
        // Of the reader that announces and looks again, and this, one sees the other.
        foundation::heavyFence();
        while (inUse_.load(std::memory_order_acquire) == old)
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        return std::unique_ptr<T>(old);
    }

    /// The object in place, or null; it stays valid until `release`. The reader.
    REALTIME T *acquire() noexcept
    {
        T *seen = current_.load(std::memory_order_acquire);
        for (;;) {
            // Whoever sees this sees that the reader is done with what it had before.
            inUse_.store(seen, std::memory_order_release);
            foundation::lightFence();
            T *const again = current_.load(std::memory_order_acquire);
            if (again == seen)
                return seen;
            seen = again;
        }
    }

    REALTIME void release() noexcept { inUse_.store(nullptr, std::memory_order_release); }

    /// The object in place, held by the reader for this object's lifetime.
    class Use
    {
    public:
        REALTIME explicit Use(Published &published) noexcept
            : published_(published), object_(published.acquire())
        {
        }
        REALTIME ~Use() { published_.release(); }
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;

        REALTIME explicit operator bool() const noexcept { return object_ != nullptr; }
        REALTIME T *operator->() const noexcept { return object_; }
        REALTIME T &operator*() const noexcept { return *object_; }

    private:
        Published &published_;
        T *object_;
    };

    /// The object in place, for the control thread that put it there.
    T *get() const { return current_.load(); }

private:
    std::atomic<T *> current_{nullptr};
    std::atomic<T *> inUse_{nullptr};
};

} // namespace platform::audio
