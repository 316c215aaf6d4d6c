#pragma once

#include <cstddef>

struct AVFrame;

namespace platform::audio
{

/// Writes `count` frames of `frame`, from its `first` on, to `channels` at
/// `offset`, as float. Integers of b bits are scaled by 1 / 2^(b - 1). Answers
/// false for a sample format that FFmpeg has and this does not know.
bool convertSamples(const AVFrame &frame, std::size_t first, std::size_t count,
                    float *const *channels, std::size_t offset) noexcept;

} // namespace platform::audio
