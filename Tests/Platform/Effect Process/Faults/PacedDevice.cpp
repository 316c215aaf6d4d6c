#include "PacedDevice.hpp"

#include <algorithm>

using Clock = std::chrono::steady_clock;

PacedDevice::Obtained PacedDevice::open(const AVAudioFormat & /*wanted*/)
{
    return {AVAudioFormat(sampleRate, 2), framesPerBlock};
}

void PacedDevice::run(Source &source)
{
    runs_ = true;
    thread_ = std::thread([this, &source] { play(source); });
}

void PacedDevice::play(Source &source)
{
    constexpr std::chrono::duration<double> blockTime(framesPerBlock / sampleRate);
    std::vector<float> samples(std::size_t{2} * framesPerBlock);
    auto due = Clock::now();
    while (runs_) {
        if (report_->before)
            report_->before();
        playBlock(source, samples);
        // A real one does not make up for what it missed either.
        due = std::max(due + std::chrono::duration_cast<Clock::duration>(blockTime),
                       Clock::now() - std::chrono::milliseconds(20));
        std::this_thread::sleep_until(due);
    }
}

void PacedDevice::playBlock(Source &source, std::vector<float> &samples)
{
    const auto begun = Clock::now();
    source.renderInterleaved(samples.data(), framesPerBlock, 2);
    const std::chrono::nanoseconds taken = Clock::now() - begun;
    report_->longestCallback = std::max(report_->longestCallback.load(), taken.count());
    if (std::any_of(samples.begin(), samples.end(), [](float sample) { return sample != 0.0F; }))
        ++report_->sounding;
    report_->sample = samples.front();
    if (report_->take)
        report_->take(samples.data(), framesPerBlock);
    ++report_->blocks;
}

void PacedDevice::close()
{
    runs_ = false;
    if (thread_.joinable())
        thread_.join();
}
