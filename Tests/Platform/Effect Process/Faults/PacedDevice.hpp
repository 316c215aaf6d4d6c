#pragma once

#include "Tests/Utilities/ThreadDevice.hpp"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

/// An output at the pace of a real one, which tells what it heard and how long it was
/// kept waiting.
class PacedDevice : public test::ThreadDevice
{
public:
    static constexpr std::uint32_t framesPerBlock = 64;

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

    explicit PacedDevice(std::shared_ptr<Report> report)
        : ThreadDevice(framesPerBlock), report_(std::move(report))
    {
    }
    ~PacedDevice() override { ThreadDevice::close(); }

    void run(Source &source) override;

private:
    using Clock = std::chrono::steady_clock;

    void turn(Source &source) override;
    void playBlock(Source &source);

    const std::shared_ptr<Report> report_;
    std::array<float, std::size_t{2} * framesPerBlock> samples_{};
    Clock::time_point due_;
};
