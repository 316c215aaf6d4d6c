#include "Platform/Audio/RemoteAudioUnit.hpp"

#include "Platform/Audio/ComponentRegistry.hpp"
#include "Platform/Audio/EffectViewFactory.hpp"
#include "Platform/Audio/MIDIDelivery.hpp"
#include "Platform/Audio/RenderFormat.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"

#include <fmt/format.h>

#include <utility>

#include <unistd.h>

using platform::effect::EffectFault;

namespace
{

/// The effect's program as installed, or else as in the build tree, where its folder
/// is always called `libexec`.
std::string effectProgram()
{
    const std::string prefix = ProcessInfo::processInfo().installationPrefix();
    std::string program = prefix + "/" PARVANE_PROGRAM_FOLDER "/parvane-host/parvane-effect";
    if (::access(program.c_str(), X_OK) != 0)
        program = prefix + "/libexec/parvane-host/parvane-effect";
    return program;
}

} // namespace

RemoteAudioUnit::RemoteAudioUnit(const AVAudioUnitComponent &component, const Limits &limits)
    : component_(component),
      process_(effectProgram(),
               {component.pluginURI(), platform::audio::bundlesOfPlugin(component.pluginURI())},
               limits),
      output_(process_.midiOutput()),
      delivery_(std::make_shared<platform::audio::MIDIDelivery>(audioUnitName(), output_))
{
    if (!MIDIOutputNames().empty())
        // The thread may outlive the unit within a handler that lets go of it.
        midiThread_ = std::make_unique<platform::lv2::PollingThread>(
            "effect-midi", platform::audio::MIDIDelivery::interval,
            [delivery = delivery_] { delivery->deliver(); });
}

RemoteAudioUnit::~RemoteAudioUnit()
{
    delivery_->setHandler(nullptr);
}

AudioComponentDescription RemoteAudioUnit::componentDescription() const
{
    return component_.audioComponentDescription();
}

std::string RemoteAudioUnit::audioUnitName() const
{
    return process_.description().name;
}

std::optional<std::string> RemoteAudioUnit::contextName() const
{
    return process_.contextName();
}

void RemoteAudioUnit::setContextName(std::optional<std::string> name)
{
    try {
        process_.setContextName(name);
    } catch (const EffectFault &) {
        // It has been told of, and the name is there after the next start.
    }
}

std::vector<std::string> RemoteAudioUnit::MIDIOutputNames() const
{
    return process_.description().midiOutputNames;
}

void RemoteAudioUnit::setMIDIOutputEventBlock(AUMIDIOutputEventBlock block)
{
    // What nobody was there to hear is not for a later handler.
    if (midiThread_ && !delivery_->hasHandler())
        midiThread_->runNow();
    delivery_->setHandler(std::move(block));
}

std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>>
RemoteAudioUnit::factoryPresets() const
{
    const std::lock_guard lock(mutex_);
    try {
        if (!presetNames_)
            presetNames_ = process_.presets();
    } catch (const EffectFault &) {
        return std::nullopt;
    }
    if (presetNames_->empty())
        return std::nullopt;
    std::vector<std::shared_ptr<AUAudioUnitPreset>> presets;
    for (const std::string &name : *presetNames_)
        presets.push_back(
            std::make_shared<AUAudioUnitPreset>(static_cast<std::int64_t>(presets.size()), name));
    return presets;
}

std::shared_ptr<AUAudioUnitPreset> RemoteAudioUnit::currentPreset() const
{
    const std::lock_guard lock(mutex_);
    return currentPreset_;
}

void RemoteAudioUnit::setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &preset)
{
    if (preset &&
        (preset->number < 0 || !process_.loadPreset(static_cast<std::uint64_t>(preset->number))))
        throw PlatformError(fmt::format("{} has no preset {} (\"{}\").", audioUnitName(),
                                        preset->number, preset->name));
    const std::lock_guard lock(mutex_);
    currentPreset_ = preset;
}

void RemoteAudioUnit::requestViewController(
    std::function<void(std::shared_ptr<AUViewController>)> completion)
{
    // The unit may be gone by then.
    DispatchQueue::main().async([completion = std::move(completion), view = process_.view(),
                                 hasView = process_.description().hasView,
                                 controller = viewController_] {
        auto answer = controller->lock();
        // One view has one controller.
        if (!answer && hasView)
            *controller = answer = platform::audio::makeEffectViewController(view);
        completion(answer);
    });
}

std::uint32_t RemoteAudioUnit::inputChannelCount() const
{
    return process_.description().inputs;
}

std::uint32_t RemoteAudioUnit::outputChannelCount() const
{
    return process_.description().outputs;
}

void RemoteAudioUnit::allocateRenderResources(double sampleRate, std::uint32_t maximumFrames)
{
    platform::audio::requireRenderable(audioUnitName(), sampleRate, maximumFrames);
    const std::lock_guard lock(mutex_);
    sampleRate_ = 0.0;
    process_.prepare(sampleRate, maximumFrames);
    sampleRate_ = sampleRate;
}

void RemoteAudioUnit::deallocateRenderResources()
{
    const std::lock_guard lock(mutex_);
    sampleRate_ = 0.0;
    process_.unprepare();
}

bool RemoteAudioUnit::renderResourcesAllocated() const
{
    return sampleRate_ > 0.0;
}

void RemoteAudioUnit::setRenderingOffline(bool offline)
{
    rendersOffline_.store(offline, std::memory_order_relaxed);
    delivery_->setOffline(offline);
    try {
        process_.setOffline(offline);
    } catch (const EffectFault &) {
        // As with the context's name.
    }
}

double RemoteAudioUnit::latency() const
{
    const double sampleRate = sampleRate_;
    return sampleRate > 0.0 ? process_.latency() / sampleRate : 0.0;
}

bool RemoteAudioUnit::scheduleMIDIEvent(std::uint32_t frameOffset, const std::uint8_t *bytes,
                                        std::size_t length)
{
    return bytes && process_.sendMIDI(frameOffset, {bytes, length});
}

bool RemoteAudioUnit::render(const AURenderBlock &block) noexcept
{
    if (!process_.render({block.input, block.output, block.frames, block.sampleTime}))
        return false;
    // Without an event, or a handler, there is nothing that the caller could find missing.
    const std::uint64_t events = output_->count();
    if (rendersOffline_.load(std::memory_order_relaxed) && delivery_->hasHandler() && midiThread_ &&
        std::exchange(eventsSeen_, events) != events)
        midiThread_->runNow();
    return true;
}
