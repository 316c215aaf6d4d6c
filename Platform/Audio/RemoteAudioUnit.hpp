#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Platform/Effect Process/EffectProcess.hpp"
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

/// An LV2 plug-in in a process of its own as an audio unit. What fails there is told
/// on standard error and mended as `EffectProcess` says; towards the host the unit is
/// silent for as long as that takes, and nothing else.
class RemoteAudioUnit final : public AUAudioUnit
{
public:
    /// How long the effect may owe an answer, and how often it may fail.
    using Limits = platform::effect::EffectProcess::Limits;

    /// Starts the process and instantiates the component's plug-in there. A
    /// `PlatformError` says why it cannot be had. Never on the audio callback.
    explicit RemoteAudioUnit(const AVAudioUnitComponent &component, const Limits &limits = {});
    /// Waits for a handler that runs, unless called within it, and half a second at
    /// most for the effect.
    ~RemoteAudioUnit() override;

    AudioComponentDescription componentDescription() const override;
    std::string audioUnitName() const override;

    std::optional<std::string> contextName() const override;
    void setContextName(std::optional<std::string> name) override;

    std::vector<std::string> MIDIOutputNames() const override;
    void setMIDIOutputEventBlock(AUMIDIOutputEventBlock block) override;

    /// As they were last known, while the effect cannot be asked.
    std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>> factoryPresets() const override;
    std::shared_ptr<AUAudioUnitPreset> currentPreset() const override;
    /// A preset that is none of the unit's, and an effect that fails over it, is a
    /// `PlatformError`.
    void setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &preset) override;

    void requestViewController(
        std::function<void(std::shared_ptr<AUViewController>)> completion) override;

    std::uint32_t inputChannelCount() const override;
    std::uint32_t outputChannelCount() const override;

    /// Live, an effect that is not ready soon (`Limits::preparation`) is silent until it
    /// is, and not waited for.
    void allocateRenderResources(double sampleRate, std::uint32_t maximumFrames) override;
    void deallocateRenderResources() override;
    bool renderResourcesAllocated() const override;
    void setRenderingOffline(bool offline) override;

    /// They wait half a second more at most.
    void hurry() override { process_.hurry(); }

    double latency() const override;

    bool scheduleMIDIEvent(std::uint32_t frameOffset, const std::uint8_t *bytes,
                           std::size_t length) override;

    REALTIME bool render(const AURenderBlock &block) noexcept override;

    /// Where the effect lives.
    platform::effect::EffectProcess &process() { return process_; }

private:
    const AVAudioUnitComponent component_;
    mutable platform::effect::EffectProcess process_;

    // Guards what is below it against other control operations.
    mutable std::mutex mutex_;
    mutable std::optional<std::vector<std::string>> presetNames_;
    std::shared_ptr<AUAudioUnitPreset> currentPreset_;
    // 0 without render resources. Read without the mutex, which is held while the
    // effect is waited for.
    std::atomic<double> sampleRate_{0.0};

    // The one that was handed out, as long as somebody has it. Main thread.
    const std::shared_ptr<std::weak_ptr<AUViewController>> viewController_ =
        std::make_shared<std::weak_ptr<AUViewController>>();

    std::atomic<bool> rendersOffline_{false};
    std::uint64_t eventsSeen_ = 0; // by the callback
    const std::shared_ptr<platform::lv2::MidiOutput> output_;
    const std::shared_ptr<platform::audio::MIDIDelivery> delivery_;
    // Only where the effect emits MIDI.
    std::unique_ptr<platform::lv2::PollingThread> midiThread_;
};
