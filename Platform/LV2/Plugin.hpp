#pragma once

#include "Platform/LV2/Lilv.hpp"
#include "Platform/LV2/Port.hpp"
#include "Platform/LV2/RunLengths.hpp"
#include "Platform/LV2/ViewDescription.hpp"

#include <lv2/core/lv2.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform::lv2
{

/// The data of one plug-in, and the way to instances of it. One thread at a time.
class Plugin
{
public:
    /// A preset that the bundles hold for the plug-in.
    struct Preset {
        std::string uri;   ///< to load it by
        std::string label; ///< what people read
        std::string bank;  ///< the name of the bank that it belongs to; empty for none

        /// What tells it from the presets of other banks.
        std::string name() const { return bank.empty() ? label : bank + ": " + label; }
    };

    /// Reads the data of the plug-in `uri` from the bundles at these paths: its
    /// own, and any that hold presets for it. A `PlatformError` when none
    /// describes it or the data makes no sense.
    Plugin(const std::string &uri, const std::vector<std::string> &bundles);

    /// What the plug-in is known by.
    const std::string &uri() const { return uri_; }
    /// What people call it.
    const std::string &name() const { return name_; }
    /// All ports in the order of their indices.
    const std::vector<Port> &ports() const { return ports_; }

    /// Whether the data names the feature, as required or as optional.
    bool hasFeature(const char *feature) const;
    /// The lengths of run that it requires.
    const RunLengths &runLengths() const { return runLengths_; }

    /// Throws a `PlatformError` that says what the plug-in needs and this host
    /// does not offer. Decided from data alone.
    void requireServable() const;

    /// Presets bank by bank, those without one first, and within a bank in the order
    /// of their URIs: the same from run to run. Loads what describes them at the first
    /// call.
    const std::vector<Preset> &presets();
    /// The settings of a preset, or of the plug-in's default state by its own
    /// URI. None where there are none.
    StatePointer loadState(const std::string &uri);

    /// The plug-in's view for the X Window System; none where it has none that this
    /// host can show.
    std::optional<ViewDescription> x11View() const;

    /// A new instance; `features` ends with null. A `PlatformError` when the
    /// binary does not load or the plug-in refuses.
    InstancePointer instantiate(double sampleRate, const LV2_Feature *const *features) const;

private:
    NodePointer node(const char *uri) const;
    std::vector<std::string> strings(const NodesPointer &nodes) const;
    void readPorts();
    void readRunLengths();
    Port readPort(const LilvPort *port) const;
    void readDesignations(const LilvPort *port, Port &result) const;
    std::uint32_t minimumSize(const LilvPort *port) const;
    void shareSizes();
    bool isSideChain(const LilvPort *port, bool isInput) const;
    std::string labelOf(const LilvNode *subject) const;
    std::string bankOf(const LilvNode *preset) const;
    std::optional<ViewDescription> describeView(const LilvUI *view) const;
    bool canServe(const LilvUI *view) const;
    void keepBinary() const;

    WorldPointer world_;
    const LilvPlugin *plugin_ = nullptr;
    std::string uri_;
    std::string name_;
    std::vector<Port> ports_;
    RunLengths runLengths_;
    std::vector<Preset> presets_;
    bool presetsAreLoaded_ = false;
};

} // namespace platform::lv2
