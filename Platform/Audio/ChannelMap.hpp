#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cstdint>
#include <vector>

namespace platform::audio
{

/// How the channels of one format become those of another.
///
/// Equal counts go straight through. One channel goes to both sides. Three to
/// eight channels in the usual order (left, right, centre, low-frequency effects,
/// surrounds) are mixed down to stereo as ITU-R BS.775-3 table 2 says: centre and
/// surrounds at 1/sqrt(2), low-frequency effects left out. To one channel, the
/// stereo mix is averaged. In all other cases channels keep their places and what
/// has none is left out or silent.
class ChannelMap
{
public:
    ChannelMap(std::uint32_t sources, std::uint32_t destinations);

    bool isIdentity() const { return identity_; }

    /// The share of `source` in `destination`.
    float gain(std::uint32_t destination, std::uint32_t source) const;

    /// Writes `frames` frames; the buffers must not overlap.
    REALTIME void apply(const float *const *source, float *const *destination,
                        std::uint32_t frames) const noexcept;

private:
    void set(std::uint32_t destination, std::uint32_t source, float gain);
    void mixDown();

    std::uint32_t sources_;
    std::uint32_t destinations_;
    bool identity_ = false;
    std::vector<float> gains_; // destination by destination
};

} // namespace platform::audio
