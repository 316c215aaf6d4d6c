#pragma once

#include "Platform/Audio/OutputDevice.hpp"

#include <atomic>
#include <cstdint>
#include <thread>

namespace test
{

/// A device whose every block runs under the real-time probe, on a thread of its own:
/// 256 frames of 48 kHz stereo, somewhat faster than real time.
class WatchedDevice : public platform::audio::OutputDevice
{
public:
    struct Findings {
        std::atomic<std::uint64_t> blocks{0};
        std::atomic<std::uint64_t> allocations{0};
        std::atomic<std::uint64_t> locks{0};
        std::atomic<std::uint64_t> systemCalls{0};
        std::atomic<std::uint64_t> futexCalls{0};
    };

    /// `findings` outlive the device.
    explicit WatchedDevice(Findings &findings) : findings_(findings) {}
    ~WatchedDevice() override;

    Obtained open(const AVAudioFormat &wanted) override;
    void run(Source &source) override;
    void close() override;
    bool isAlive() const override { return true; }

private:
    void play(Source &source);

    Findings &findings_;
    std::atomic<bool> runs_{false};
    std::thread thread_;
};

} // namespace test
