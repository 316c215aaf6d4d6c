#pragma once

#include "Tests/Utilities/ThreadDevice.hpp"

#include <array>
#include <atomic>
#include <cstdint>

namespace test
{

/// A device whose every block runs under the real-time probe, on a thread of its own:
/// 256 frames of 48 kHz stereo, somewhat faster than real time.
class WatchedDevice : public ThreadDevice
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
    explicit WatchedDevice(Findings &findings) : ThreadDevice(framesPerBlock), findings_(findings)
    {
    }
    ~WatchedDevice() override { ThreadDevice::close(); }

private:
    static constexpr std::uint32_t framesPerBlock = 256;

    void turn(Source &source) override;

    Findings &findings_;
    std::array<float, std::size_t{2} * framesPerBlock> block_{};
};

} // namespace test
