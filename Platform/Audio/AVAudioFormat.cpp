#include "Platform/Audio/AVAudioFormat.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <fmt/format.h>

namespace
{
constexpr double highestSampleRate = 768'000.0;
// Samplers with an output for each instrument have a hundred.
constexpr std::uint32_t mostChannels = 256;
} // namespace

AVAudioFormat::AVAudioFormat(double sampleRate, std::uint32_t channelCount)
    : sampleRate_(sampleRate), channelCount_(channelCount)
{
    // Written so that a rate that is not a number fails too.
    if (!(sampleRate >= 1.0 && sampleRate <= highestSampleRate))
        throw PlatformError(fmt::format("A sample rate of {} Hz is not supported", sampleRate));
    if (channelCount < 1 || channelCount > mostChannels)
        throw PlatformError(fmt::format("Audio with {} channels is not supported", channelCount));
}

std::string AVAudioFormat::description() const
{
    return fmt::format("{} Hz, {} {}", sampleRate_, channelCount_,
                       channelCount_ == 1 ? "channel" : "channels");
}
