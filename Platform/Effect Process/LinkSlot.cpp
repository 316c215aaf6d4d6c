#include "Platform/Effect Process/LinkSlot.hpp"

#include <utility>

namespace platform::effect
{

namespace
{

// Of the time that a block sounds; the rest is for what comes after the effect.
constexpr double shareOfBlock = 0.75;

} // namespace

LinkSlot::LinkSlot(std::chrono::nanoseconds patience) : patience_(patience)
{
    closure_.emplace(gate_);
}

void LinkSlot::put(std::unique_ptr<HostEnd> link, double sampleRate)
{
    clear();
    link_ = std::move(link);
    link_->noteLatency();
    sampleRate_ = sampleRate;
    closure_.reset();
}

void LinkSlot::clear()
{
    if (!link_)
        return;
    link_->abandon();
    closure_.emplace(gate_);
    lateBlocksBefore_ += link_->lateBlocks();
    link_.reset();
}

bool LinkSlot::render(const Block &block) noexcept
{
    if (!gate_.enter())
        return false;
    blocks_.store(blocks_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    const bool isRendered = link_->render(block, deadline(block.frames));
    gate_.leave();
    return isRendered;
}

HostEnd::Clock::time_point LinkSlot::deadline(std::uint32_t frames) const noexcept
{
    using Seconds = std::chrono::duration<double>;
    const auto now = HostEnd::Clock::now();
    if (isOffline_.load(std::memory_order_relaxed))
        return now + patience_;
    return now + std::chrono::duration_cast<HostEnd::Clock::duration>(
                     Seconds(shareOfBlock * frames / sampleRate_));
}

std::chrono::nanoseconds LinkSlot::overdue() const
{
    return link_ ? link_->overdue() : std::chrono::nanoseconds(0);
}

double LinkSlot::latency() const
{
    return link_ ? link_->latency() : 0.0;
}

std::uint64_t LinkSlot::lateBlocks() const
{
    return lateBlocksBefore_ + (link_ ? link_->lateBlocks() : 0);
}

} // namespace platform::effect
