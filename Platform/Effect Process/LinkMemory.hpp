#pragma once

#include "Platform/Effect Process/FileDescriptor.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace platform::effect
{

/// What a link carries, agreed before it is made.
struct LinkShape {
    std::uint32_t inputs = 0;        ///< channels to the effect
    std::uint32_t outputs = 0;       ///< channels from the effect
    std::uint32_t maximumFrames = 0; ///< of a block
    /// How many outputs of MIDI the effect has.
    std::uint32_t midiOutputs = 0;
};

/// The beginning of a link's memory. Each side writes its own half only, and each
/// half has cache lines of its own.
struct LinkHeader {
    // Written by the host.
    alignas(64) std::atomic<std::uint32_t> request; ///< counts the blocks asked for
    std::atomic<std::uint32_t> hostSleeps;          ///< on `answer`
    std::atomic<std::uint32_t> priority;            ///< of the host's thread
    std::atomic<int> hostProcessor;                 ///< that it asked from
    std::int64_t sampleTime;                        ///< frames since rendering began
    std::uint32_t frames;                           ///< of the block
    std::uint32_t inputEventBytes;                  ///< used of `inputEvents`

    // Written by the effect.
    alignas(64) std::atomic<std::uint32_t> answer; ///< the last block that is done
    std::atomic<std::uint32_t> effectSleeps;       ///< on `request`
    std::atomic<int> effectProcessor;              ///< that it took the last block on
    // Each is read once: it could be another the next time.
    std::atomic<std::uint32_t> isRendered;       ///< 0 or 1
    std::atomic<std::uint32_t> outputEventBytes; ///< used of `outputEvents`
    std::atomic<std::uint32_t> lostEvents;       ///< that found no room this time
    std::atomic<float> latency;                  ///< frames, from 0 to `longestLatency`
};

/// A delay beyond this is a mistake: a minute and a half at 48 kHz, in frames.
inline constexpr float longestLatency = 1U << 22U;

/// Memory that the host and one effect share: a header, MIDI both ways, and one
/// buffer a channel. It cannot be resized, so neither side can take it from under
/// the other.
class LinkMemory
{
public:
    /// Room for one direction's MIDI in a block.
    static constexpr std::size_t eventCapacity = 65536;

    /// New memory, all zeros. A `PlatformError` when the system gives none.
    explicit LinkMemory(const LinkShape &shape);
    /// The memory that another process made in the same shape. A `PlatformError`
    /// when it is not that.
    LinkMemory(FileDescriptor descriptor, const LinkShape &shape);

    /// What the memory was made for.
    const LinkShape &shape() const { return shape_; }
    /// To be handed to the other process.
    int descriptor() const { return descriptor_.get(); }

    /// The words by which both sides tell each other what is ready.
    LinkHeader &header() const { return *reinterpret_cast<LinkHeader *>(base()); }
    /// Room for the MIDI of a block to the effect.
    std::span<std::byte> inputEvents() const { return {base() + eventsOffset(), eventCapacity}; }
    /// Room for the MIDI of a block from the effect.
    std::span<std::byte> outputEvents() const
    {
        return {base() + eventsOffset() + eventCapacity, eventCapacity};
    }
    /// One pointer a channel.
    ///@{
    /// One pointer a channel.
    float *const *inputs() const { return channels_.data(); }
    float *const *outputs() const { return channels_.data() + shape_.inputs; }
    ///@}

private:
    struct Unmap {
        std::size_t size;
        void operator()(std::byte *address) const noexcept;
    };

    static std::size_t eventsOffset() { return sizeof(LinkHeader); }
    std::size_t channelStride() const;
    std::size_t size() const;
    std::byte *base() const { return mapping_.get(); }
    void map();

    LinkShape shape_;
    FileDescriptor descriptor_;
    std::unique_ptr<std::byte, Unmap> mapping_;
    std::vector<float *> channels_;
};

} // namespace platform::effect
