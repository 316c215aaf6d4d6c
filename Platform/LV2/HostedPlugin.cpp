#include "Platform/LV2/HostedPlugin.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <fmt/format.h>
#include <lv2/log/log.h>

#include <algorithm>
#include <utility>

namespace platform::lv2
{

HostedPlugin::HostedPlugin(const std::string &uri, const std::vector<std::string> &bundles,
                           const Instance::Settings &settings, const State *restored,
                           const std::string &scratchFolder)
    : plugin_(std::make_unique<Plugin>(uri, bundles)),
      exchange_(std::make_shared<Exchange>(plugin_->name(), scratchFolder)), settings_(settings),
      instance_(std::make_unique<Instance>(*plugin_, *exchange_, settings, restored))
{
}

Instance &HostedPlugin::instance()
{
    if (!instance_)
        throw PlatformError(
            fmt::format("{} refuses to be made again, and is not there until it is prepared anew.",
                        plugin_->name()));
    return *instance_;
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
    return plugin_->hasFeature(LV2_LOG__log) || settings_.checksBounds;
}

bool HostedPlugin::isPrepared(double sampleRate, std::uint32_t maximumFrames) const
{
    // Where runs have one length it is to be that of the blocks.
    const bool isLongEnough = plugin_->runLengths().areFixed
                                  ? settings_.maximumFrames == maximumFrames
                                  : settings_.maximumFrames >= maximumFrames;
    return instance_ && settings_.sampleRate == sampleRate && isLongEnough;
}

void HostedPlugin::prepare(double sampleRate, std::uint32_t maximumFrames)
{
    if (isPrepared(sampleRate, maximumFrames))
        return;
    Instance::Settings settings = settings_;
    settings.sampleRate = sampleRate;
    // What was promised once stands: some refuse to be used in very short blocks alone.
    settings.maximumFrames = plugin_->runLengths().areFixed
                                 ? maximumFrames
                                 : std::max(settings_.maximumFrames, maximumFrames);
    state_ = save();
    // Never two at a time: some plug-ins share tables for one sample rate among their
    // instances, and refuse another beside it or play with the wrong ones.
    instance_.reset();
    try {
        makeInstance(settings);
    } catch (const PlatformError &) {
        makeFormerInstance();
        throw;
    }
    settings_ = settings;
}

void HostedPlugin::makeInstance(const Instance::Settings &settings)
{
    instance_ = std::make_unique<Instance>(*plugin_, *exchange_, settings, &state_);
    state_ = {};
}

void HostedPlugin::makeFormerInstance()
{
    try {
        makeInstance(settings_);
    } catch (const PlatformError &) {
        // Whoever wants to use it is told.
    }
}

void HostedPlugin::setContextName(const std::optional<std::string> &name)
{
    settings_.contextName = name;
    if (instance_)
        instance_->setContextName(name);
}

void HostedPlugin::setOffline(bool offline)
{
    settings_.isOffline = offline;
    if (instance_)
        instance_->setOffline(offline);
}

bool HostedPlugin::loadPreset(std::size_t number)
{
    const auto &presets = plugin_->presets();
    return number < presets.size() && instance().loadState(presets[number].uri);
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
