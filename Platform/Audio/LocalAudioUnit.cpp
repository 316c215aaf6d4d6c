#include "Platform/Audio/LocalAudioUnit.hpp"

#include "Platform/Audio/ComponentRegistry.hpp"
#include "Platform/Audio/MIDIDelivery.hpp"
#include "Platform/Audio/RenderFormat.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

using platform::lv2::Instance;

namespace
{

// Whatever a unit is connected to, it is most likely this.
const Instance::Settings likelySettings{48000.0, 4096, false, std::nullopt};

} // namespace

LocalAudioUnit::LocalAudioUnit(const AVAudioUnitComponent &component)
    : component_(component),
      hosted_(component.pluginURI(), platform::audio::bundlesOfPlugin(component.pluginURI()),
              likelySettings),
      exchange_(hosted_.exchange()), takesMIDI_(hosted_.takesMIDI()),
      delivery_(std::make_shared<platform::audio::MIDIDelivery>(
          hosted_.plugin().name(),
          std::shared_ptr<platform::lv2::MidiOutput>(exchange_, &exchange_->midiOutput)))
{
    if (!hosted_.MIDIOutputNames().empty() || hosted_.logs())
        // The thread may outlive the unit within a handler that lets go of it.
        midiThread_ = std::make_unique<platform::lv2::PollingThread>(
            "effect-midi", platform::audio::MIDIDelivery::interval,
            [delivery = delivery_, exchange = exchange_] {
                delivery->deliver();
                exchange->log.writeOut();
            });
}

LocalAudioUnit::~LocalAudioUnit()
{
    delivery_->setHandler(nullptr);
    // What was said last.
    if (midiThread_)
        midiThread_->runNow();
}

AudioComponentDescription LocalAudioUnit::componentDescription() const
{
    return component_.audioComponentDescription();
}

std::string LocalAudioUnit::audioUnitName() const
{
    return hosted_.plugin().name();
}

std::optional<std::string> LocalAudioUnit::contextName() const
{
    const std::lock_guard lock(mutex_);
    return hosted_.settings().contextName;
}

void LocalAudioUnit::setContextName(std::optional<std::string> name)
{
    const std::lock_guard lock(mutex_);
    hosted_.setContextName(name);
}

std::vector<std::string> LocalAudioUnit::MIDIOutputNames() const
{
    return hosted_.MIDIOutputNames();
}

void LocalAudioUnit::setMIDIOutputEventBlock(AUMIDIOutputEventBlock block)
{
    // What nobody was there to hear is not for a later handler.
    if (midiThread_ && !delivery_->hasHandler())
        midiThread_->runNow();
    delivery_->setHandler(std::move(block));
}

std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>>
LocalAudioUnit::factoryPresets() const
{
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<AUAudioUnitPreset>> presets;
    for (const auto &preset : hosted_.plugin().presets())
        presets.push_back(std::make_shared<AUAudioUnitPreset>(
            static_cast<std::int64_t>(presets.size()), preset.name()));
    if (presets.empty())
        return std::nullopt;
    return presets;
}

std::shared_ptr<AUAudioUnitPreset> LocalAudioUnit::currentPreset() const
{
    const std::lock_guard lock(mutex_);
    return currentPreset_;
}

void LocalAudioUnit::setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &preset)
{
    const std::lock_guard lock(mutex_);
    if (preset) {
        if (preset->number < 0 || !hosted_.loadPreset(static_cast<std::size_t>(preset->number)))
            throw PlatformError(fmt::format("{} has no preset {} (\"{}\").",
                                            hosted_.plugin().name(), preset->number, preset->name));
    }
    currentPreset_ = preset;
}

void LocalAudioUnit::requestViewController(
    std::function<void(std::shared_ptr<AUViewController>)> completion)
{
    DispatchQueue::main().async([completion = std::move(completion)] { completion(nullptr); });
}

std::uint32_t LocalAudioUnit::inputChannelCount() const
{
    return hosted_.inputChannelCount();
}

std::uint32_t LocalAudioUnit::outputChannelCount() const
{
    return hosted_.outputChannelCount();
}

void LocalAudioUnit::allocateRenderResources(double sampleRate, std::uint32_t maximumFrames)
{
    platform::audio::requireRenderable(hosted_.plugin().name(), sampleRate, maximumFrames);
    const std::lock_guard lock(mutex_);
    rendering_.store(nullptr);
    hosted_.prepare(sampleRate, maximumFrames);
    rendering_.store(&hosted_.instance());
}

void LocalAudioUnit::deallocateRenderResources()
{
    const std::lock_guard lock(mutex_);
    rendering_.store(nullptr);
}

bool LocalAudioUnit::renderResourcesAllocated() const
{
    return rendering_.load() != nullptr;
}

void LocalAudioUnit::setRenderingOffline(bool offline)
{
    const std::lock_guard lock(mutex_);
    rendersOffline_ = offline;
    delivery_->setOffline(offline);
    hosted_.setOffline(offline);
}

double LocalAudioUnit::latency() const
{
    const std::lock_guard lock(mutex_);
    if (!renderResourcesAllocated())
        return 0.0;
    return std::max(0.0, rendering_.load()->latency()) / hosted_.settings().sampleRate;
}

bool LocalAudioUnit::scheduleMIDIEvent(std::uint32_t frameOffset, const std::uint8_t *bytes,
                                       std::size_t length)
{
    return takesMIDI_ && bytes && exchange_->midiInput.push(frameOffset, {bytes, length});
}

bool LocalAudioUnit::render(const AURenderBlock &block) noexcept
{
    Instance *instance = rendering_.load(std::memory_order_acquire);
    if (!instance || !instance->run(block.input, block.output, block.frames, block.sampleTime))
        return false;
    // Without an event, or a handler, there is nothing that the caller could find missing.
    const std::uint64_t events = exchange_->midiOutput.count();
    if (rendersOffline_ && delivery_->hasHandler() && midiThread_ &&
        std::exchange(eventsSeen_, events) != events)
        midiThread_->runNow();
    return true;
}
