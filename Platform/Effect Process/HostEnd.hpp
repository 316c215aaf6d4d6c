#pragma once

#include "Platform/Effect Process/ControllerMemory.hpp"
#include "Platform/Effect Process/LinkMemory.hpp"
#include "Platform/Effect Process/SpinBudget.hpp"
#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/EventBuffer.hpp"
#include "Platform/LV2/MidiInput.hpp"
#include "Platform/LV2/MidiOutput.hpp"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace platform::effect
{

/// One block for an effect: one pointer a channel, `frames` samples each.
struct Block {
    const float *const *input = nullptr; ///< one pointer a channel
    float *const *output = nullptr;      ///< one pointer a channel
    std::uint32_t frames = 0;            ///< samples a channel
    /// Frames rendered since rendering began.
    std::int64_t sampleTime = 0;
};

/// MIDI on its way to and from an effect; it outlives the effect's processes.
struct MidiTraffic {
    lv2::MidiInput input;         ///< to the effect, from any thread
    lv2::MidiOutput output;       ///< from the effect
    ControllerMemory controllers; ///< what an effect started again is told
};

/// The host's end of a link: hands over a block and takes it back, a moment later,
/// in the same call. Nothing that the other end writes is trusted.
class HostEnd
{
public:
    /// Waits are measured by time that never jumps.
    using Clock = std::chrono::steady_clock;

    /// The traffic outlives the end. `spin` is for how long at most it looks for an
    /// answer before it sleeps. A `PlatformError` when there is no memory.
    HostEnd(const LinkShape &shape, MidiTraffic &midi, std::chrono::nanoseconds spin = usualSpin());
    HostEnd(const HostEnd &) = delete;
    HostEnd &operator=(const HostEnd &) = delete;

    /// What the effect's end is made of.
    const LinkMemory &memory() const { return memory_; }

    /// Has the effect render a block. Answers false, with the output undefined,
    /// when it is not done at `deadline`; the answer that comes later is thrown
    /// away, but for its MIDI. The audio callback.
    REALTIME bool render(const Block &block, Clock::time_point deadline) noexcept;

    /// Takes over the delay that the effect reports before its first block. Before
    /// `render`.
    void noteLatency() noexcept { takeLatency(memory_.header().latency); }

    /// What of the effect's was not as agreed; null while all was. From then on
    /// nothing is rendered. Any thread.
    const char *breach() const noexcept { return breach_.load(std::memory_order_relaxed); }

    /// From now on nothing is waited for. Any thread.
    void abandon() noexcept;

    /// For how long the effect has owed an answer. Any thread.
    std::chrono::nanoseconds overdue() const noexcept;

    /// How many blocks came too late. Any thread.
    std::uint64_t lateBlocks() const noexcept { return late_.load(std::memory_order_relaxed); }
    /// What the effect last reported, in frames; finite and not below 0. Any thread.
    double latency() const noexcept { return latency_.load(std::memory_order_relaxed); }

private:
    REALTIME bool isAnswered() const noexcept;
    REALTIME bool awaitAnswer(Clock::time_point deadline) noexcept;
    REALTIME void sleepUntilAnswered(Clock::time_point deadline) noexcept;
    REALTIME void post(const Block &block) noexcept;
    REALTIME std::uint32_t writeEvents(std::uint32_t frames) noexcept;
    REALTIME bool takeAnswer() noexcept;
    REALTIME void takeEvents(std::uint32_t bytes) noexcept;
    REALTIME bool takeEvent(std::span<const std::byte> &events) noexcept;
    REALTIME void note(const char *breach) noexcept;
    REALTIME void takeLatency(float latency) noexcept;

    LinkMemory memory_;
    MidiTraffic &midi_;
    lv2::EventBuffer inputEvents_;
    // Events are copied before they are looked at: the effect could change them.
    std::vector<std::byte> outputEvents_;
    SpinBudget spin_;

    std::atomic<std::uint32_t> sequence_{0}; // of the block that was asked for last
    bool isTaken_ = true;                    // its answer has been
    std::int64_t postedTime_ = 0;            // of the block that was asked for last
    std::uint32_t postedFrames_ = 0;
    std::atomic<Clock::rep> postedAt_{0};
    std::atomic<bool> abandoned_{false};
    std::atomic<std::uint64_t> late_{0};
    std::atomic<float> latency_{0.0F};
    std::atomic<const char *> breach_{nullptr};
};

} // namespace platform::effect
