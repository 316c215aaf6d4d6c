#pragma once

#include "Platform/Audio/OutputDevice.hpp"

#include <atomic>
#include <cstdint>
#include <thread>

namespace test
{

/// A device with a thread of its own, which asks for stereo blocks of one length at
/// 48 kHz until it is closed. What derives from it closes it before it goes.
class ThreadDevice : public platform::audio::OutputDevice
{
public:
    static constexpr double sampleRate = 48000.0;

    Obtained open(const AVAudioFormat &wanted) override;
    void run(Source &source) override;
    void close() override;
    bool isAlive() const override { return true; }

protected:
    explicit ThreadDevice(std::uint32_t framesPerBlock) : framesPerBlock_(framesPerBlock) {}

    /// Takes one block and waits until the next is due. The device's thread.
    virtual void turn(Source &source) = 0;

private:
    const std::uint32_t framesPerBlock_;
    std::atomic<bool> runs_{false};
    std::thread thread_;
};

} // namespace test
