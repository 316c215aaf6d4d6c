#pragma once

#include "Platform/Audio/OutputDevice.hpp"
#include "Tests/Soak/LoopListener.hpp"

#include <atomic>
#include <cstdint>
#include <memory>

namespace soak
{

/// What the audio callback does, as seen from where it is called.
struct Callback {
    LoopListener listener;
    /// Whether the block went through the effect, whose input was listened to.
    bool wasHeard = false;
    std::atomic<std::int64_t> frames{0};
    std::atomic<std::int64_t> blocks{0};
    /// Blocks that took longer to render than they sound.
    std::atomic<std::int64_t> overruns{0};
    std::atomic<std::int64_t> largestBlock{0};
    /// Samples beyond full scale or that are no numbers.
    std::atomic<std::int64_t> badSamples{0};
};

/// A device that is listened to. It asks the effect's listener first: what has been
/// through an effect tells no places any more.
class ListeningDevice final : public platform::audio::OutputDevice,
                              private platform::audio::OutputDevice::Source
{
public:
    ListeningDevice(std::unique_ptr<platform::audio::OutputDevice> device,
                    std::shared_ptr<Callback> callback)
        : device_(std::move(device)), callback_(std::move(callback))
    {
    }

    Obtained open(const AVAudioFormat &wanted) override { return device_->open(wanted); }
    void run(OutputDevice::Source &source) override;
    void close() override { device_->close(); }
    bool isAlive() const override { return device_->isAlive(); }

private:
    REALTIME void renderInterleaved(float *samples, std::uint32_t frames,
                                    std::uint32_t channels) noexcept override;

    const std::unique_ptr<platform::audio::OutputDevice> device_;
    const std::shared_ptr<Callback> callback_;
    std::atomic<OutputDevice::Source *> source_{nullptr};
};

} // namespace soak
