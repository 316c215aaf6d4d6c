#pragma once

#include "Platform/LV2/Exchange.hpp"
#include "Platform/LV2/Instance.hpp"
#include "Platform/LV2/Plugin.hpp"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform::lv2
{

/// A plug-in and its one instance, which is replaced, its state carried over, when
/// the sample rate changes or blocks become longer. One thread at a time.
class HostedPlugin
{
public:
    /// Loads the plug-in `uri` from the bundles at these paths and instantiates it
    /// in the state `restored`, else in its default one. `scratchFolder` is where
    /// it may put files: empty for a folder of its own. A `PlatformError` says why
    /// it cannot be had.
    HostedPlugin(const std::string &uri, const std::vector<std::string> &bundles,
                 const Instance::Settings &settings, const State *restored = nullptr,
                 const std::string &scratchFolder = {});

    ///@{
    /// The plug-in's data.
    Plugin &plugin() { return *plugin_; }
    const Plugin &plugin() const { return *plugin_; }
    ///@}
    /// May outlive the plug-in.
    const std::shared_ptr<Exchange> &exchange() const { return exchange_; }
    /// The running plug-in. A `PlatformError` while there is none, since `prepare` has
    /// failed and could not undo it.
    Instance &instance();
    /// What the instance is made for, or the next one will be.
    const Instance::Settings &settings() const { return settings_; }

    /// Audio ports of the main signal; 0 where there are none.
    std::uint32_t inputChannelCount() const { return mainChannelCount(true); }
    /// Audio ports of the main signal; 0 where there are none.
    std::uint32_t outputChannelCount() const { return mainChannelCount(false); }
    /// Whether a port takes MIDI.
    bool takesMIDI() const;
    /// The names of the ports that emit MIDI, in their order.
    std::vector<std::string> MIDIOutputNames() const;
    /// Whether it has something to say on the audio callback that waits to be
    /// written out.
    bool logs() const;

    /// Whether the instance is fit for such blocks as it is.
    bool isPrepared(double sampleRate, std::uint32_t maximumFrames) const;
    /// Makes the instance fit for blocks of up to `maximumFrames` frames at
    /// `sampleRate` Hz. A `PlatformError`, with the instance as it was, when the
    /// plug-in refuses; with none, until the next `prepare`, when it refuses that
    /// again, too. Not while the instance may run.
    void prepare(double sampleRate, std::uint32_t maximumFrames);

    ///@{
    /// As those of the instance; the next one has it in any case.
    void setContextName(const std::optional<std::string> &name);
    void setOffline(bool offline);
    ///@}

    /// For how long its worker has been at one piece of work; 0 while it does nothing.
    std::chrono::nanoseconds workingFor() const
    {
        return instance_ ? instance_->workingFor() : std::chrono::nanoseconds(0);
    }

    /// The state of the instance, or what the next one will have.
    State save() { return instance_ ? instance_->save() : state_; }

    /// As that of the instance; none has nothing to say.
    bool takeStateChange() { return instance_ && instance_->takeStateChange(); }

    /// Brings the plug-in into the state of a preset, counted from 0. Answers false
    /// when there is none of that number.
    bool loadPreset(std::size_t number);

private:
    std::uint32_t mainChannelCount(bool ofInput) const;
    void makeInstance(const Instance::Settings &settings);
    void makeFormerInstance();

    std::unique_ptr<Plugin> plugin_;
    std::shared_ptr<Exchange> exchange_;
    Instance::Settings settings_;
    State state_; // for the next instance, while there is none
    std::unique_ptr<Instance> instance_;
};

} // namespace platform::lv2
