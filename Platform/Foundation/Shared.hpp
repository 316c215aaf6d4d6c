#pragma once

#include <mutex>
#include <utility>

/// A value that several threads read and replace. Loads copy, so it suits
/// pointers, locations and other small values. Any thread but the audio
/// callback's: a private mutex guards it.
template <typename T>
class Shared
{
public:
    Shared() = default;
    /// Holds `value` at first.
    explicit Shared(T value) : value_(std::move(value)) {}

    /// A copy of what is there.
    T load() const
    {
        const std::lock_guard lock(mutex_);
        return value_;
    }

    /// Puts `value` in its place.
    void store(T value)
    {
        // The old value is destroyed after the lock is given back: its
        // destructor may come back here.
        const std::lock_guard lock(mutex_);
        std::swap(value_, value);
    }

    /// Stores `value` and answers what was there.
    T exchange(T value)
    {
        const std::lock_guard lock(mutex_);
        std::swap(value_, value);
        return value;
    }

private:
    mutable std::mutex mutex_;
    T value_{};
};
