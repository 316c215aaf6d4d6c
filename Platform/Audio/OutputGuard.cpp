#include "Platform/Audio/OutputGuard.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace platform::audio
{

namespace
{

// As integers, the magnitudes of floats keep their order, and all that is not
// finite lies at or above infinity: one pass of integer arithmetic finds both.
constexpr std::uint32_t magnitudeMask = 0x7FFFFFFFU;
constexpr std::uint32_t infinity = 0x7F800000U;
constexpr std::uint32_t one = 0x3F800000U;

REALTIME std::uint32_t greatestMagnitude(const float *samples, std::uint32_t count) noexcept
{
    std::uint32_t greatest = 0;
    for (std::uint32_t index = 0; index < count; ++index)
        greatest = std::max(greatest, std::bit_cast<std::uint32_t>(samples[index]) & magnitudeMask);
    return greatest;
}

} // namespace

void OutputGuard::pass(const float *const *channels, std::uint32_t channelCount,
                       std::uint32_t frames, float *samples) noexcept
{
    std::uint32_t greatest = 0;
    for (std::uint32_t channel = 0; channel < channelCount; ++channel)
        greatest = std::max(greatest, greatestMagnitude(channels[channel], frames));
    if (greatest >= infinity) {
        sawNonFinite_.store(true, std::memory_order_relaxed);
        std::fill_n(samples, static_cast<std::size_t>(frames) * channelCount, 0.0F);
        return;
    }
    const bool tooLoud = greatest > one;
    if (tooLoud)
        sawTooLoud_.store(true, std::memory_order_relaxed);
    for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
        const float *const from = channels[channel];
        float *to = samples + channel;
        for (std::uint32_t frame = 0; frame < frames; ++frame, to += channelCount)
            *to = tooLoud ? std::clamp(from[frame], -1.0F, 1.0F) : from[frame];
    }
}

} // namespace platform::audio
