#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"

#include <atomic>
#include <functional>
#include <string>

namespace test
{

/// A unit whose rendering and faults a test decides. What a block does is a
/// function of the test's; by default it doubles the input.
class TestUnit : public AUAudioUnit
{
public:
    explicit TestUnit(std::uint32_t inputs = 2, std::uint32_t outputs = 2)
        : inputs_(inputs), outputs_(outputs)
    {
    }

    std::function<bool(const AURenderBlock &)> onRender;
    std::string refusal; ///< not empty: why render resources are refused
    double sampleRate = 0;
    std::uint32_t maximumFrames = 0;
    int allocations = 0;
    bool offline = false;
    std::atomic<bool> rendering{false};
    std::atomic<int> rendersWhileUnallocated{0};

    AudioComponentDescription componentDescription() const override { return {}; }
    std::string audioUnitName() const override { return "Test"; }
    std::optional<std::string> contextName() const override { return {}; }
    void setContextName(std::optional<std::string>) override {}
    std::vector<std::string> MIDIOutputNames() const override { return {}; }
    void setMIDIOutputEventBlock(AUMIDIOutputEventBlock) override {}
    std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>> factoryPresets() const override
    {
        return {};
    }
    std::shared_ptr<AUAudioUnitPreset> currentPreset() const override { return {}; }
    void setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &) override {}
    void requestViewController(std::function<void(std::shared_ptr<AUViewController>)>) override {}
    std::uint32_t inputChannelCount() const override { return inputs_; }
    std::uint32_t outputChannelCount() const override { return outputs_; }
    void allocateRenderResources(double rate, std::uint32_t frames) override;
    void deallocateRenderResources() override { allocated_ = false; }
    bool renderResourcesAllocated() const override { return allocated_; }
    void setRenderingOffline(bool value) override { offline = value; }
    double latency() const override { return 0; }
    bool scheduleMIDIEvent(std::uint32_t, const std::uint8_t *, std::size_t) override
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
