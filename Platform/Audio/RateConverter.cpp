#include "Platform/Audio/RateConverter.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>
#include <cstddef>
#include <string>

namespace platform::audio
{

namespace
{

// Frames that pass through the interleaved buffers at a time.
constexpr std::uint32_t chunkFrames = 1024;

} // namespace

RateConverter::RateConverter(double sourceRate, double destinationRate, std::uint32_t channels)
    : sourceRate_(sourceRate), ratio_(destinationRate / sourceRate), channels_(channels),
      in_(static_cast<std::size_t>(chunkFrames) * channels),
      out_(static_cast<std::size_t>(chunkFrames) * channels)
{
    if (src_is_valid_ratio(ratio_) == 0)
        throw PlatformError("The sample rate cannot be converted: the ratio is out of range");
    int error = 0;
    state_.reset(src_new(SRC_SINC_MEDIUM_QUALITY, static_cast<int>(channels), &error));
    if (!state_)
        throw PlatformError(std::string("The sample rate cannot be converted: ") +
                            src_strerror(error));
}

RateConverter::Progress RateConverter::process(const float *const *input, std::uint32_t inputOffset,
                                               std::uint32_t inputFrames, float *const *output,
                                               std::uint32_t outputOffset,
                                               std::uint32_t outputFrames, bool end) noexcept
{
    Progress progress{0, 0};
    for (;;) {
        const std::uint32_t give = std::min(inputFrames - progress.taken, chunkFrames);
        const std::uint32_t want = std::min(outputFrames - progress.made, chunkFrames);
        for (std::uint32_t channel = 0; channel < channels_; ++channel) {
            const float *const from = input[channel] + inputOffset + progress.taken;
            for (std::uint32_t frame = 0; frame < give; ++frame)
                in_[static_cast<std::size_t>(frame) * channels_ + channel] = from[frame];
        }
        SRC_DATA data{};
        data.data_in = in_.data();
        data.data_out = out_.data();
        data.input_frames = static_cast<long>(give);
        data.output_frames = static_cast<long>(want);
        data.end_of_input = end && progress.taken + give == inputFrames ? 1 : 0;
        data.src_ratio = ratio_;
        if (src_process(state_.get(), &data) != 0)
            return progress;
        const auto made = static_cast<std::uint32_t>(data.output_frames_gen);
        for (std::uint32_t channel = 0; channel < channels_; ++channel) {
            float *const to = output[channel] + outputOffset + progress.made;
            for (std::uint32_t frame = 0; frame < made; ++frame)
                to[frame] = out_[static_cast<std::size_t>(frame) * channels_ + channel];
        }
        progress.taken += static_cast<std::uint32_t>(data.input_frames_used);
        progress.made += made;
        if (data.input_frames_used == 0 && made == 0)
            return progress;
        if (progress.made == outputFrames || (progress.taken == inputFrames && !end && made < want))
            return progress;
    }
}

void RateConverter::reset()
{
    src_reset(state_.get());
}

} // namespace platform::audio
