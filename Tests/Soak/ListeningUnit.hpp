#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"
#include "Tests/Soak/ListeningDevice.hpp"

#include <memory>
#include <utility>

namespace soak
{

/// An audio unit whose input is listened to; all else is the unit's own doing.
class ListeningUnit final : public AUAudioUnit
{
public:
    ListeningUnit(std::shared_ptr<AUAudioUnit> unit, std::shared_ptr<Callback> callback)
        : unit_(std::move(unit)), callback_(std::move(callback))
    {
    }

    REALTIME bool render(const AURenderBlock &block) noexcept override
    {
        callback_->wasHeard = true;
        callback_->listener.take(block.input[0], block.input[1], block.frames, 1);
        return unit_->render(block);
    }

    AudioComponentDescription componentDescription() const override
    {
        return unit_->componentDescription();
    }
    std::string audioUnitName() const override { return unit_->audioUnitName(); }
    std::optional<std::string> contextName() const override { return unit_->contextName(); }
    void setContextName(std::optional<std::string> name) override
    {
        unit_->setContextName(std::move(name));
    }
    std::vector<std::string> MIDIOutputNames() const override { return unit_->MIDIOutputNames(); }
    void setMIDIOutputEventBlock(AUMIDIOutputEventBlock block) override
    {
        unit_->setMIDIOutputEventBlock(std::move(block));
    }
    std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>> factoryPresets() const override
    {
        return unit_->factoryPresets();
    }
    std::shared_ptr<AUAudioUnitPreset> currentPreset() const override
    {
        return unit_->currentPreset();
    }
    void setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &preset) override
    {
        unit_->setCurrentPreset(preset);
    }
    void requestViewController(
        std::function<void(std::shared_ptr<AUViewController>)> completion) override
    {
        unit_->requestViewController(std::move(completion));
    }
    std::uint32_t inputChannelCount() const override { return unit_->inputChannelCount(); }
    std::uint32_t outputChannelCount() const override { return unit_->outputChannelCount(); }
    void allocateRenderResources(double sampleRate, std::uint32_t maximumFrames) override
    {
        unit_->allocateRenderResources(sampleRate, maximumFrames);
    }
    void deallocateRenderResources() override { unit_->deallocateRenderResources(); }
    bool renderResourcesAllocated() const override { return unit_->renderResourcesAllocated(); }
    void setRenderingOffline(bool offline) override { unit_->setRenderingOffline(offline); }
    void hurry() override { unit_->hurry(); }
    double latency() const override { return unit_->latency(); }
    bool scheduleMIDIEvent(std::uint32_t frameOffset, const std::uint8_t *bytes,
                           std::size_t length) override
    {
        return unit_->scheduleMIDIEvent(frameOffset, bytes, length);
    }

private:
    const std::shared_ptr<AUAudioUnit> unit_;
    const std::shared_ptr<Callback> callback_;
};

} // namespace soak
