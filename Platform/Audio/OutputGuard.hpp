#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <atomic>
#include <cstdint>

namespace platform::audio
{

/// Stands before the device: what passes is finite and within -1 and 1. A block
/// with a sample that is not finite becomes silence, louder samples are limited,
/// denormal ones become zero.
class OutputGuard
{
public:
    /// Writes `frames` frames of `channels` interleaved to `samples`. The audio
    /// callback.
    REALTIME void pass(const float *const *channels, std::uint32_t channelCount,
                       std::uint32_t frames, float *samples) noexcept;

    /// Whether such a fault has happened, ever. Any thread.
    bool sawNonFinite() const { return sawNonFinite_.load(std::memory_order_relaxed); }
    bool sawTooLoud() const { return sawTooLoud_.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> sawNonFinite_{false};
    std::atomic<bool> sawTooLoud_{false};
};

} // namespace platform::audio
