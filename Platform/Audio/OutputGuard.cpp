#include "Platform/Audio/OutputGuard.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace platform::audio
{

namespace
{

// As integers, the magnitudes of floats keep their order, and all that is not
// finite lies at or above infinity: integer arithmetic finds both.
constexpr std::int32_t magnitudeMask = 0x7FFFFFFF;
constexpr std::int32_t infinity = 0x7F800000;
constexpr std::int32_t one = 0x3F800000;
constexpr std::int32_t smallestNormal = 0x00800000;
constexpr std::int32_t signBit = ~magnitudeMask;
constexpr std::uint32_t stereo = 2;

REALTIME std::int32_t magnitude(float sample) noexcept
{
    return std::bit_cast<std::int32_t>(sample) & magnitudeMask;
}

// Zero in place of a denormal number. Calculations make none here, but a unit may
// copy one.
REALTIME float flushed(float sample) noexcept
{
    const std::int32_t isNormal = magnitude(sample) >= smallestNormal ? -1 : 0;
    return std::bit_cast<float>(std::bit_cast<std::int32_t>(sample) & (isNormal | signBit));
}

// The two loops that every block goes through answer whether a sample is out of
// range. They have no branches, so that the compiler makes vectors of them.
REALTIME bool interleaveStereo(const float *__restrict left, const float *__restrict right,
                               std::uint32_t frames, float *__restrict samples) noexcept
{
    std::int32_t outside = 0;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        outside |= magnitude(left[frame]) > one ? 1 : 0;
        outside |= magnitude(right[frame]) > one ? 1 : 0;
        samples[stereo * frame] = flushed(left[frame]);
        samples[stereo * frame + 1] = flushed(right[frame]);
    }
    return outside != 0;
}

REALTIME bool interleave(const float *const *channels, std::uint32_t channelCount,
                         std::uint32_t frames, float *samples) noexcept
{
    std::int32_t outside = 0;
    for (std::size_t channel = 0; channel < channelCount; ++channel)
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const float sample = channels[channel][frame];
            outside |= magnitude(sample) > one ? 1 : 0;
            samples[frame * channelCount + channel] = flushed(sample);
        }
    return outside != 0;
}

REALTIME bool isFinite(float sample) noexcept
{
    return magnitude(sample) < infinity;
}

} // namespace

void OutputGuard::pass(const float *const *channels, std::uint32_t channelCount,
                       std::uint32_t frames, float *samples) noexcept
{
    const bool outside = channelCount == stereo
                             ? interleaveStereo(channels[0], channels[1], frames, samples)
                             : interleave(channels, channelCount, frames, samples);
    if (!outside)
        return;
    float *const end = samples + static_cast<std::size_t>(frames) * channelCount;
    if (!std::all_of(samples, end, isFinite)) {
        sawNonFinite_.store(true, std::memory_order_relaxed);
        std::fill(samples, end, 0.0F);
        return;
    }
    sawTooLoud_.store(true, std::memory_order_relaxed);
    for (float *sample = samples; sample != end; ++sample)
        *sample = std::clamp(*sample, -1.0F, 1.0F);
}

} // namespace platform::audio
