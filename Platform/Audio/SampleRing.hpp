#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <boost/lockfree/spsc_queue.hpp>

#include <cstdint>
#include <deque>

namespace platform::audio
{

/// Frames on their way from one writing thread to one reading thread, without
/// locks. One queue a channel; both ends take the channels in the same order, so
/// the last channel says how many whole frames there are.
class SampleRing
{
public:
    /// Room for `capacity` frames of `format`.
    SampleRing(const AVAudioFormat &format, std::uint32_t capacity);

    const AVAudioFormat &format() const { return format_; }
    std::uint32_t capacity() const { return capacity_; }

    /// Frames that can be read now. Either end.
    REALTIME std::uint32_t available() const noexcept;
    /// Frames that can be written now. The writer.
    std::uint32_t space() const;

    /// Writes up to `frames` frames of `channels`, from `offset` on; answers how
    /// many. The writer.
    std::uint32_t write(const float *const *channels, std::uint32_t offset, std::uint32_t frames);

    /// Reads up to `frames` frames to the start of `channels`; answers how many.
    /// The reader.
    REALTIME std::uint32_t read(float *const *channels, std::uint32_t frames) noexcept;

private:
    using Queue = boost::lockfree::spsc_queue<float>;

    AVAudioFormat format_;
    std::uint32_t capacity_;
    std::deque<Queue> queues_; // a deque, since the queues cannot be moved
};

} // namespace platform::audio
