#pragma once

#include "Platform/Audio/AVAudioPCMBuffer.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <atomic>
#include <cstdint>
#include <vector>

namespace platform::audio
{

/// Frames on their way from one writing thread to one reading thread, without
/// locks. Both use frames where they lie: a decoder may write them there, and a
/// block that goes on at the start is completed behind the end, so that the reader
/// has it in one piece.
class SampleRing
{
public:
    /// Room for at least `capacity` frames of `format`, to be read in blocks of up to
    /// `largestBlock` frames.
    SampleRing(const AVAudioFormat &format, std::uint32_t capacity, std::uint32_t largestBlock);

    const AVAudioFormat &format() const { return samples_.format(); }
    std::uint32_t capacity() const { return capacity_; }
    std::uint32_t largestBlock() const { return largestBlock_; }

    /// Frames that can be read now. Either end.
    REALTIME std::uint32_t available() const noexcept;
    /// Frames that can be written now. The writer.
    std::uint32_t space() const { return capacity_ - available(); }

    /// Writes up to `frames` frames of `channels`, from `offset` on; answers how
    /// many. The writer.
    std::uint32_t write(const float *const *channels, std::uint32_t offset, std::uint32_t frames);

    /// Room that can be written in one piece. The writer.
    struct Room {
        float *const *channels; // one pointer each
        std::uint32_t frames;
    };
    Room back();
    /// Hands over the first `frames` frames of that room. The writer.
    void add(std::uint32_t frames);

    /// The next `frames` frames to be read, one pointer a channel; no more than are
    /// available, and at most a block. They stay until they are taken. The reader.
    REALTIME const float *const *front(std::uint32_t frames) noexcept;
    /// Makes room of `frames` frames, no more than are available. The reader.
    REALTIME void take(std::uint32_t frames) noexcept;

private:
    /// Frames that one end has passed on, and where in the ring it stands.
    struct End {
        std::atomic<std::uint64_t> frames{0};
        std::uint32_t place = 0; // the end's own

        REALTIME void moveOn(std::uint32_t count, std::uint32_t capacity) noexcept
        {
            place += count;
            if (place >= capacity)
                place -= capacity;
            frames.store(frames.load(std::memory_order_relaxed) + count, std::memory_order_release);
        }
    };
    // What is to be read runs over the end by so many frames.
    REALTIME void completeBehindTheEnd(std::uint32_t frames) noexcept;

    std::uint32_t capacity_;
    std::uint32_t largestBlock_;
    AVAudioPCMBuffer samples_; // the capacity, then the largest block
    std::vector<float *> back_;
    std::vector<const float *> front_;
    // On cache lines of their own, since each end writes one of them.
    alignas(64) End written_;
    alignas(64) End taken_;
};

} // namespace platform::audio
