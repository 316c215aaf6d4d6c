#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A stereo unit within the test: multiplies by a gain, emits MIDI when told to
/// and has the presets it is given.
class GainUnit : public AUAudioUnit
{
public:
    explicit GainUnit(float factor) : gain(factor) {}

    AudioComponentDescription componentDescription() const override { return {}; }
    std::string audioUnitName() const override { return "gain"; }
    std::optional<std::string> contextName() const override { return context; }
    void setContextName(std::optional<std::string> name) override { context = std::move(name); }
    std::vector<std::string> MIDIOutputNames() const override { return outputs; }
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
        completion(nullptr);
    }
    std::uint32_t inputChannelCount() const override { return 2; }
    std::uint32_t outputChannelCount() const override { return 2; }
    void allocateRenderResources(double /*sampleRate*/, std::uint32_t /*maximumFrames*/) override
    {
        allocated = true;
    }
    void deallocateRenderResources() override { allocated = false; }
    bool renderResourcesAllocated() const override { return allocated; }
    double latency() const override { return 0; }
    bool scheduleMIDIEvent(std::uint32_t /*frameOffset*/, const std::uint8_t * /*bytes*/,
                           std::size_t /*length*/) override
    {
        return false;
    }
    bool render(const AURenderBlock &block) noexcept override
    {
        for (std::uint32_t channel = 0; channel < 2; ++channel) {
            for (std::uint32_t i = 0; i < block.frames; ++i)
                block.output[channel][i] = block.input[channel][i] * gain;
        }
        return true;
    }

    float gain;
    bool allocated = false;
    std::optional<std::string> context;
    std::vector<std::string> outputs;
    AUMIDIOutputEventBlock emitMIDI;
    std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>> knownPresets;
    std::shared_ptr<AUAudioUnitPreset> current;
};
