#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace platform::audio
{

class FFmpegStream;

/// The first frames of a stream, kept decoded in memory. Grows by blocks, so that
/// nothing is copied twice and a length that a file merely claims costs nothing.
class SampleCache
{
public:
    explicit SampleCache(int channelCount);

    /// How many frames of the stream are here.
    std::int64_t frames() const { return frames_; }
    std::int64_t bytes() const;

    /// Reads on from `stream`, which stands at `frames()`, up to `frame`. Answers
    /// false when the stream has ended before.
    bool extend(FFmpegStream &stream, std::int64_t frame);

    /// Copies `count` frames from `first` on, all of which are here.
    void copy(std::int64_t first, std::int64_t count, float *const *channels) const;

private:
    std::size_t channelCount_;
    std::int64_t frames_ = 0;
    std::vector<std::unique_ptr<float[]>> blocks_;
    std::vector<float *> channels_;
};

} // namespace platform::audio
