#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <samplerate.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace platform::audio
{

/// Changes the sample rate of a stream with libsamplerate's band-limited
/// interpolation. One thread at a time.
class RateConverter
{
public:
    /// From `sourceRate` to `destinationRate`, both in Hz. A `PlatformError` for
    /// a ratio beyond 256 either way.
    RateConverter(double sourceRate, double destinationRate, std::uint32_t channels);

    double sourceRate() const { return sourceRate_; }
    /// Frames made for each frame taken.
    double ratio() const { return ratio_; }

    struct Progress {
        std::uint32_t taken;
        std::uint32_t made;
    };

    /// Takes up to `inputFrames` frames from `inputOffset` of `input` on and makes
    /// up to `outputFrames` frames, written from `outputOffset` of `output` on.
    /// Some input stays inside for the frames to come; `end` says that none will
    /// come, so that it is given out too.
    REALTIME Progress process(const float *const *input, std::uint32_t inputOffset,
                              std::uint32_t inputFrames, float *const *output,
                              std::uint32_t outputOffset, std::uint32_t outputFrames,
                              bool end) noexcept;

    /// Forgets what was taken so far.
    void reset();

private:
    struct Deleter {
        void operator()(SRC_STATE *state) const { src_delete(state); }
    };

    double sourceRate_;
    double ratio_;
    std::uint32_t channels_;
    std::unique_ptr<SRC_STATE, Deleter> state_;
    std::vector<float> in_; // interleaved, as the library wants it
    std::vector<float> out_;
};

} // namespace platform::audio
