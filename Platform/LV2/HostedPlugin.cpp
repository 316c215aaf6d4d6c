#include "Platform/LV2/HostedPlugin.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <lv2/log/log.h>

#include <algorithm>
#include <utility>

namespace platform::lv2
{

HostedPlugin::HostedPlugin(const std::string &uri, const std::vector<std::string> &bundles,
                           const Instance::Settings &settings, const State *restored,
                           const std::string &scratchFolder)
    : plugin_(std::make_unique<Plugin>(uri, bundles)),
      exchange_(std::make_shared<Exchange>(plugin_->name(), scratchFolder)),
      instance_(std::make_unique<Instance>(*plugin_, *exchange_, settings, restored))
{
}

bool HostedPlugin::takesMIDI() const
{
    const auto &ports = plugin_->ports();
    return std::any_of(ports.begin(), ports.end(),
                       [](const Port &port) { return port.hasMidi && port.isInput; });
}

std::vector<std::string> HostedPlugin::MIDIOutputNames() const
{
    std::vector<std::string> names;
    for (const Port &port : plugin_->ports())
        if (port.hasMidi && !port.isInput)
            names.push_back(port.name);
    return names;
}

bool HostedPlugin::logs() const
{
    return plugin_->hasFeature(LV2_LOG__log) || instance_->settings().checksBounds;
}

bool HostedPlugin::isPrepared(double sampleRate, std::uint32_t maximumFrames) const
{
    const Instance::Settings &settings = instance_->settings();
    // Where runs have one length it is to be that of the blocks.
    const bool isLongEnough = plugin_->runLengths().areFixed
                                  ? settings.maximumFrames == maximumFrames
                                  : settings.maximumFrames >= maximumFrames;
    return settings.sampleRate == sampleRate && isLongEnough;
}

void HostedPlugin::prepare(double sampleRate, std::uint32_t maximumFrames)
{
    if (isPrepared(sampleRate, maximumFrames))
        return;
    const Instance::Settings before = instance_->settings();
    Instance::Settings settings = before;
    settings.sampleRate = sampleRate;
    // What was promised once stands: some refuse to be used in very short blocks alone.
    settings.maximumFrames = plugin_->runLengths().areFixed
                                 ? maximumFrames
                                 : std::max(before.maximumFrames, maximumFrames);
    const State state = instance_->save();
    // Never two at a time: some plug-ins share tables for one sample rate among their
    // instances, and refuse another beside it or play with the wrong ones.
    instance_.reset();
    try {
        instance_ = std::make_unique<Instance>(*plugin_, *exchange_, settings, &state);
    } catch (const PlatformError &) {
        instance_ = std::make_unique<Instance>(*plugin_, *exchange_, before, &state);
        throw;
    }
}

bool HostedPlugin::loadPreset(std::size_t number)
{
    const auto &presets = plugin_->presets();
    return number < presets.size() && instance_->loadState(presets[number].uri);
}

std::uint32_t HostedPlugin::mainChannelCount(bool ofInput) const
{
    const auto &ports = plugin_->ports();
    return static_cast<std::uint32_t>(
        std::count_if(ports.begin(), ports.end(), [&](const Port &port) {
            return port.kind == PortKind::audio && !port.isSideChain && port.isInput == ofInput;
        }));
}

} // namespace platform::lv2
