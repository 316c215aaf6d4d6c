#include "Platform/Audio/SampleConversion.hpp"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
}

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace platform::audio
{
namespace
{

template <typename Sample>
float toFloat(Sample sample)
{
    if constexpr (std::is_same_v<Sample, std::uint8_t>) {
        return static_cast<float>(sample - 128) / 128.0F;
    } else if constexpr (std::is_integral_v<Sample>) {
        // The most negative value is -2^(b - 1): a power of two, so that the
        // division rounds nothing.
        constexpr auto scale = -static_cast<float>(std::numeric_limits<Sample>::min());
        return static_cast<float>(sample) / scale;
    } else {
        return static_cast<float>(sample);
    }
}

template <typename Sample>
void convertPlanar(const AVFrame &frame, std::size_t first, std::size_t count,
                   float *const *channels, std::size_t offset)
{
    const auto channelCount = static_cast<std::size_t>(frame.ch_layout.nb_channels);
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        const auto *from = reinterpret_cast<const Sample *>(frame.extended_data[channel]) + first;
        if constexpr (std::is_same_v<Sample, float>)
            std::copy_n(from, count, channels[channel] + offset);
        else
            std::transform(from, from + count, channels[channel] + offset, toFloat<Sample>);
    }
}

template <typename Sample>
void convertInterleaved(const AVFrame &frame, std::size_t first, std::size_t count,
                        float *const *channels, std::size_t offset)
{
    const auto channelCount = static_cast<std::size_t>(frame.ch_layout.nb_channels);
    const auto *from =
        reinterpret_cast<const Sample *>(frame.extended_data[0]) + first * channelCount;
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        float *to = channels[channel] + offset;
        for (std::size_t i = 0; i < count; ++i)
            to[i] = toFloat(from[i * channelCount + channel]);
    }
}

} // namespace

bool convertSamples(const AVFrame &frame, std::size_t first, std::size_t count,
                    float *const *channels, std::size_t offset) noexcept
{
    switch (frame.format) {
    case AV_SAMPLE_FMT_FLTP:
        convertPlanar<float>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_FLT:
        convertInterleaved<float>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_S16P:
        convertPlanar<std::int16_t>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_S16:
        convertInterleaved<std::int16_t>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_S32P:
        convertPlanar<std::int32_t>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_S32:
        convertInterleaved<std::int32_t>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_U8P:
        convertPlanar<std::uint8_t>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_U8:
        convertInterleaved<std::uint8_t>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_DBLP:
        convertPlanar<double>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_DBL:
        convertInterleaved<double>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_S64P:
        convertPlanar<std::int64_t>(frame, first, count, channels, offset);
        return true;
    case AV_SAMPLE_FMT_S64:
        convertInterleaved<std::int64_t>(frame, first, count, channels, offset);
        return true;
    default:
        return false;
    }
}

} // namespace platform::audio
