#include "Tests/Soak/ListeningDevice.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace soak
{

void ListeningDevice::run(OutputDevice::Source &source)
{
    source_ = &source;
    device_->run(*this);
}

void ListeningDevice::renderInterleaved(float *samples, std::uint32_t frames,
                                        std::uint32_t channels) noexcept
{
    using Clock = std::chrono::steady_clock;
    constexpr double sampleRate = 48000.0;
    Callback &callback = *callback_;
    callback.wasHeard = false;
    const auto begun = Clock::now();
    source_.load()->renderInterleaved(samples, frames, channels);
    const std::chrono::duration<double> taken = Clock::now() - begun;
    if (!callback.wasHeard)
        callback.listener.take(samples, samples + 1, frames, channels);
    if (taken.count() > frames / sampleRate)
        ++callback.overruns;
    callback.badSamples += std::count_if(samples, samples + std::size_t{frames} * channels,
                                         [](float sample) { return !(std::abs(sample) <= 1.0F); });
    callback.largestBlock = std::max<std::int64_t>(callback.largestBlock, frames);
    callback.frames += frames;
    ++callback.blocks;
}

} // namespace soak
