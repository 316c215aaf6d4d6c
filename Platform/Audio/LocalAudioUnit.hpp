#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Platform/LV2/HostedPlugin.hpp"
#include "Platform/LV2/PollingThread.hpp"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace platform::audio
{
class MIDIDelivery;
}

/// An LV2 plug-in in this process as an audio unit: what a unit in a process of its
/// own is compared with.
class LocalAudioUnit final : public AUAudioUnit
{
public:
    /// Loads and instantiates the component's plug-in. A `PlatformError` says why
    /// it cannot be had. Never on the audio callback.
    explicit LocalAudioUnit(const AVAudioUnitComponent &component);
    /// Waits for a handler that runs, unless called within it.
    ~LocalAudioUnit() override;

    AudioComponentDescription componentDescription() const override;
    std::string audioUnitName() const override;

    std::optional<std::string> contextName() const override;
    void setContextName(std::optional<std::string> name) override;

    std::vector<std::string> MIDIOutputNames() const override;
    void setMIDIOutputEventBlock(AUMIDIOutputEventBlock block) override;

    std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>> factoryPresets() const override;
    std::shared_ptr<AUAudioUnitPreset> currentPreset() const override;
    /// A preset that is none of the unit's is a `PlatformError`.
    void setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &preset) override;

    void requestViewController(
        std::function<void(std::shared_ptr<AUViewController>)> completion) override;

    std::uint32_t inputChannelCount() const override;
    std::uint32_t outputChannelCount() const override;

    void allocateRenderResources(double sampleRate, std::uint32_t maximumFrames) override;
    void deallocateRenderResources() override;
    bool renderResourcesAllocated() const override;
    void setRenderingOffline(bool offline) override;

    double latency() const override;

    bool scheduleMIDIEvent(std::uint32_t frameOffset, const std::uint8_t *bytes,
                           std::size_t length) override;

    REALTIME bool render(const AURenderBlock &block) noexcept override;

private:
    const AVAudioUnitComponent component_;
    // Guards everything below it against other control operations.
    mutable std::mutex mutex_;
    mutable platform::lv2::HostedPlugin hosted_; // finds its presets when asked
    const std::shared_ptr<platform::lv2::Exchange> exchange_;
    std::shared_ptr<AUAudioUnitPreset> currentPreset_;

    const bool takesMIDI_;
    bool rendersOffline_ = false;
    // The instance while render resources are allocated, for the callback.
    std::atomic<platform::lv2::Instance *> rendering_{nullptr};
    std::uint64_t eventsSeen_ = 0; // by the callback
    const std::shared_ptr<platform::audio::MIDIDelivery> delivery_;
    // Only where the plug-in emits or says something.
    std::unique_ptr<platform::lv2::PollingThread> midiThread_;
};
