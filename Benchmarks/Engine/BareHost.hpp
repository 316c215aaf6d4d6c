#pragma once

#include <lilv/lilv.h>
#include <lv2/options/options.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Sets the LV2 path to the benchmarks' own plug-ins, or to those, the stand-in
/// effect and the machine's. Before anything looks for plug-ins.
void useOwnPlugins();
void useAllPlugins();

/// Whether the plug-in is installed.
bool isInstalled(const std::string &pluginURI);

/// A stereo plug-in run with lilv alone, in the least that any host does: move the
/// inputs along, offer the buffers for events anew, run. Parameters stay at their
/// defaults.
class BareHost
{
public:
    /// A `std::runtime_error` when the plug-in is not to be had.
    BareHost(const std::string &pluginURI, double sampleRate, std::uint32_t maximumFrames);
    BareHost(const BareHost &) = delete;
    BareHost &operator=(const BareHost &) = delete;

    /// Renders a block; `input` has one pointer a channel.
    void run(const float *const *input, std::uint32_t frames);

    /// What the last block came to.
    const std::vector<std::vector<float>> &output() const { return output_; }

private:
    struct FreeInstance {
        void operator()(LilvInstance *instance) const;
    };
    using EventBuffer = std::array<std::uint64_t, 4096>;

    void connectPorts(const LilvPlugin *plugin, std::uint32_t maximumFrames);
    LV2_URID map(const char *uri);

    std::map<std::string, LV2_URID> urids_;
    float sampleRate_;
    std::int32_t maximumFrames_;
    std::vector<float> values_;
    std::vector<std::uint32_t> inputs_; // ports
    std::vector<std::vector<float>> output_;
    std::vector<std::unique_ptr<EventBuffer>> eventInputs_;
    std::vector<std::unique_ptr<EventBuffer>> eventOutputs_;
    LV2_URID sequence_ = 0;
    LV2_URID chunk_ = 0;
    std::unique_ptr<LilvInstance, FreeInstance> instance_;
};
