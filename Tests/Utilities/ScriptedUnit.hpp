#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace test
{

/// A unit within the test, which decides its rendering, faults, MIDI outputs and
/// presets. By default it multiplies its input by a gain.
class ScriptedUnit : public AUAudioUnit
{
public:
    explicit ScriptedUnit(std::uint32_t inputs = 2, std::uint32_t outputs = 2)
        : inputs_(inputs), outputs_(outputs)
    {
    }

    float gain = 2.0F;
    std::function<bool(const AURenderBlock &)> onRender; ///< instead of the gain
    std::atomic<double> delay{0.0};                      ///< seconds, as it reports it
    std::string refusal; ///< not empty: why render resources are refused
    std::vector<std::string> midiOutputs;
    std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>> knownPresets;
    std::shared_ptr<AUViewController> viewController; ///< the answer to a request

    // What it was told.
    std::optional<std::string> context;
    std::shared_ptr<AUAudioUnitPreset> current;
    AUMIDIOutputEventBlock emitMIDI;
    double sampleRate = 0;
    std::uint32_t maximumFrames = 0;
    int allocations = 0;
    bool offline = false;
    std::atomic<bool> rendering{false};
    std::atomic<int> rendersWhileUnallocated{0};

    AudioComponentDescription componentDescription() const override { return {}; }
    std::string audioUnitName() const override { return "Test"; }
    std::optional<std::string> contextName() const override { return context; }
    void setContextName(std::optional<std::string> name) override { context = std::move(name); }
    std::vector<std::string> MIDIOutputNames() const override { return midiOutputs; }
    void setMIDIOutputEventBlock(AUMIDIOutputEventBlock block) override
    {
        emitMIDI = std::move(block);
    }
    std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>> factoryPresets() const override
    {
        return knownPresets;
    }
    std::shared_ptr<AUAudioUnitPreset> currentPreset() const override { return current; }
    void setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &preset) override
    {
        current = preset;
    }
    void requestViewController(
        std::function<void(std::shared_ptr<AUViewController>)> completion) override
    {
        completion(viewController);
    }
    std::uint32_t inputChannelCount() const override { return inputs_; }
    std::uint32_t outputChannelCount() const override { return outputs_; }
    void allocateRenderResources(double rate, std::uint32_t frames) override;
    void deallocateRenderResources() override { allocated_ = false; }
    bool renderResourcesAllocated() const override { return allocated_; }
    void setRenderingOffline(bool value) override { offline = value; }
    double latency() const override { return delay; }
    bool scheduleMIDIEvent(std::uint32_t /*frameOffset*/, const std::uint8_t * /*bytes*/,
                           std::size_t /*length*/) override
    {
        return false;
    }
    bool render(const AURenderBlock &block) noexcept override;

private:
    std::uint32_t inputs_;
    std::uint32_t outputs_;
    std::atomic<bool> allocated_{false};
};

} // namespace test
