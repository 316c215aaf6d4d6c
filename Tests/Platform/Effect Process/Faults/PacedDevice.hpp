#pragma once

#include "Platform/Audio/OutputDevice.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

/// An output at the pace of a real one, which tells what it heard and how long it was
/// kept waiting.
class PacedDevice : public platform::audio::OutputDevice
{
public:
    static constexpr std::uint32_t framesPerBlock = 64;
    static constexpr double sampleRate = 48000.0;

    /// Interleaved samples of two channels.
    using Take = std::function<void(const float *samples, std::uint32_t frames)>;

    /// What there is to know of a device that an engine owns.
    struct Report {
        std::atomic<std::uint64_t> blocks{0};
        /// Blocks that were not silent.
        std::atomic<std::uint64_t> sounding{0};
        /// The last block's first sample.
        std::atomic<float> sample{0.0F};
        std::atomic<std::chrono::nanoseconds::rep> longestCallback{0};
        /// Called before each block, and given each block. Set while it does not run.
        std::function<void()> before;
        Take take;
    };

    explicit PacedDevice(std::shared_ptr<Report> report) : report_(std::move(report)) {}
    ~PacedDevice() override { PacedDevice::close(); }

    Obtained open(const AVAudioFormat &wanted) override;
    void run(Source &source) override;
    void close() override;
    bool isAlive() const override { return true; }

private:
    void play(Source &source);
    void playBlock(Source &source, std::vector<float> &samples);

    const std::shared_ptr<Report> report_;
    std::atomic<bool> runs_{false};
    std::thread thread_;
};
