#pragma once

#include "Platform/Effect Process/HostEnd.hpp"
#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/RunGate.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace platform::effect
{

/// Where the audio callback finds the link to the effect, while there is one.
/// Control operations are called one at a time.
class LinkSlot
{
public:
    /// `patience` is how long an offline block may take.
    explicit LinkSlot(std::chrono::nanoseconds patience);
    LinkSlot(const LinkSlot &) = delete;
    LinkSlot &operator=(const LinkSlot &) = delete;

    /// Blocks go over `link` from now on, `sampleRate` frames a second.
    void put(std::unique_ptr<HostEnd> link, double sampleRate);
    /// There is no link any more; on return the callback has left it.
    void clear();

    /// Whether time does not count. Any thread.
    void setOffline(bool offline) { isOffline_.store(offline, std::memory_order_relaxed); }

    /// Renders a block on the audio callback, as `EffectProcess::render`.
    REALTIME bool render(const Block &block) noexcept;

    /// Whether there is no link.
    bool isEmpty() const { return !link_; }
    /// For how long the effect has owed a block.
    std::chrono::nanoseconds overdue() const;
    /// As `HostEnd::breach`.
    const char *breach() const { return link_ ? link_->breach() : nullptr; }
    /// Frames; 0 without a link.
    double latency() const;
    /// How many blocks were asked for, over all links.
    std::uint64_t blocks() const { return blocks_.load(std::memory_order_relaxed); }
    /// How many blocks came too late, over all links.
    std::uint64_t lateBlocks() const;

private:
    REALTIME HostEnd::Clock::time_point deadline(std::uint32_t frames) const noexcept;

    const std::chrono::nanoseconds patience_;
    lv2::RunGate gate_;
    std::optional<lv2::RunGate::Closure> closure_;
    std::unique_ptr<HostEnd> link_;
    double sampleRate_ = 0.0;
    std::atomic<bool> isOffline_{false};
    std::uint64_t lateBlocksBefore_ = 0;
    std::atomic<std::uint64_t> blocks_{0}; // written by the callback alone
};

} // namespace platform::effect
