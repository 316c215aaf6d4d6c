#include "Platform/Audio/LocalAudioUnit.hpp"

#include "Platform/Audio/ComponentRegistry.hpp"
#include "Platform/Audio/MIDIDelivery.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <fmt/format.h>
#include <lv2/log/log.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using platform::lv2::Instance;
using platform::lv2::Port;
using platform::lv2::PortKind;

namespace
{

// Whatever a unit is connected to, it is most likely this.
const Instance::Settings likelySettings{48000.0, 4096, false, std::nullopt};

constexpr std::uint32_t mostFrames = 1U << 20U;

// The callback wakes nobody: MIDI waits for the thread to look, this long at most.
constexpr std::chrono::milliseconds deliveryInterval{5};

} // namespace

LocalAudioUnit::LocalAudioUnit(const AVAudioUnitComponent &component)
    : component_(component),
      plugin_(std::make_unique<platform::lv2::Plugin>(
          component.pluginURI(), platform::audio::bundlesOfPlugin(component.pluginURI()))),
      exchange_(std::make_shared<platform::lv2::Exchange>(plugin_->name())),
      instance_(std::make_unique<Instance>(*plugin_, *exchange_, likelySettings)),
      delivery_(std::make_shared<platform::audio::MIDIDelivery>(plugin_->name(), exchange_))
{
    const auto &ports = plugin_->ports();
    takesMIDI_ = std::any_of(ports.begin(), ports.end(),
                             [](const Port &port) { return port.hasMidi && port.isInput; });
    if (!MIDIOutputNames().empty() || plugin_->hasFeature(LV2_LOG__log))
        // The thread may outlive the unit within a handler that lets go of it.
        midiThread_ = std::make_unique<platform::lv2::PollingThread>(
            "effect-midi", deliveryInterval, [delivery = delivery_] { delivery->deliver(); });
}

LocalAudioUnit::~LocalAudioUnit()
{
    delivery_->setHandler(nullptr);
}

AudioComponentDescription LocalAudioUnit::componentDescription() const
{
    return component_.audioComponentDescription();
}

std::string LocalAudioUnit::audioUnitName() const
{
    return plugin_->name();
}

std::optional<std::string> LocalAudioUnit::contextName() const
{
    const std::lock_guard lock(mutex_);
    return instance_->settings().contextName;
}

void LocalAudioUnit::setContextName(std::optional<std::string> name)
{
    const std::lock_guard lock(mutex_);
    instance_->setContextName(name);
}

std::vector<std::string> LocalAudioUnit::MIDIOutputNames() const
{
    std::vector<std::string> names;
    for (const Port &port : plugin_->ports())
        if (port.hasMidi && !port.isInput)
            names.push_back(port.name);
    return names;
}

void LocalAudioUnit::setMIDIOutputEventBlock(AUMIDIOutputEventBlock block)
{
    delivery_->setHandler(std::move(block));
}

std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>>
LocalAudioUnit::factoryPresets() const
{
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<AUAudioUnitPreset>> presets;
    for (const auto &preset : plugin_->presets())
        presets.push_back(std::make_shared<AUAudioUnitPreset>(
            static_cast<std::int64_t>(presets.size()), preset.label));
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
        const auto &presets = plugin_->presets();
        const auto number = static_cast<std::size_t>(preset->number);
        if (preset->number < 0 || number >= presets.size() ||
            !instance_->loadState(presets[number].uri))
            throw PlatformError(fmt::format("{} has no preset {} (\"{}\").", plugin_->name(),
                                            preset->number, preset->name));
    }
    currentPreset_ = preset;
}

void LocalAudioUnit::requestViewController(
    std::function<void(std::shared_ptr<AUViewController>)> completion)
{
    DispatchQueue::main().async([completion = std::move(completion)] { completion(nullptr); });
}

std::uint32_t LocalAudioUnit::mainChannelCount(bool ofInput) const
{
    const auto &ports = plugin_->ports();
    return static_cast<std::uint32_t>(
        std::count_if(ports.begin(), ports.end(), [&](const Port &port) {
            return port.kind == PortKind::audio && !port.isSideChain && port.isInput == ofInput;
        }));
}

std::uint32_t LocalAudioUnit::inputChannelCount() const
{
    return mainChannelCount(true);
}

std::uint32_t LocalAudioUnit::outputChannelCount() const
{
    return mainChannelCount(false);
}

void LocalAudioUnit::allocateRenderResources(double sampleRate, std::uint32_t maximumFrames)
{
    if (!std::isfinite(sampleRate) || sampleRate <= 0.0 || maximumFrames == 0 ||
        maximumFrames > mostFrames)
        throw PlatformError(fmt::format("{} cannot render blocks of {} frames at {} Hz.",
                                        plugin_->name(), maximumFrames, sampleRate));
    const std::lock_guard lock(mutex_);
    rendering_.store(nullptr);
    Instance::Settings settings = instance_->settings();
    if (settings.sampleRate != sampleRate || settings.maximumFrames < maximumFrames) {
        settings.sampleRate = sampleRate;
        settings.maximumFrames = maximumFrames;
        replaceInstance(settings);
    }
    rendering_.store(instance_.get());
}

void LocalAudioUnit::replaceInstance(const Instance::Settings &settings)
{
    const platform::lv2::State state = instance_->save();
    auto replacement = std::make_unique<Instance>(*plugin_, *exchange_, settings, &state);
    instance_ = std::move(replacement);
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
    instance_->setOffline(offline);
}

double LocalAudioUnit::latency() const
{
    const std::lock_guard lock(mutex_);
    if (!renderResourcesAllocated())
        return 0.0;
    return std::max(0.0, instance_->latency()) / instance_->settings().sampleRate;
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
    // Without an event there is nothing that the caller could find missing.
    const std::uint64_t events = exchange_->midiOutput.count();
    if (rendersOffline_ && midiThread_ && std::exchange(eventsSeen_, events) != events)
        midiThread_->runNow();
    return true;
}
