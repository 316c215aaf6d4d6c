#include "PacedDevice.hpp"

#include <algorithm>
#include <thread>

void PacedDevice::run(Source &source)
{
    due_ = Clock::now();
    ThreadDevice::run(source);
}

void PacedDevice::turn(Source &source)
{
    constexpr std::chrono::duration<double> blockTime(framesPerBlock / sampleRate);
    if (report_->before)
        report_->before();
    playBlock(source);
    // A real one does not make up for what it missed either.
    due_ = std::max(due_ + std::chrono::duration_cast<Clock::duration>(blockTime),
                    Clock::now() - std::chrono::milliseconds(20));
    std::this_thread::sleep_until(due_);
}

void PacedDevice::playBlock(Source &source)
{
    const auto begun = Clock::now();
    source.renderInterleaved(samples_.data(), framesPerBlock, 2);
    const std::chrono::nanoseconds taken = Clock::now() - begun;
    report_->longestCallback = std::max(report_->longestCallback.load(), taken.count());
    if (std::any_of(samples_.begin(), samples_.end(), [](float sample) { return sample != 0.0F; }))
        ++report_->sounding;
    report_->sample = samples_.front();
    if (report_->take)
        report_->take(samples_.data(), framesPerBlock);
    ++report_->blocks;
}
