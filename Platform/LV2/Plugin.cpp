#include "Platform/LV2/Plugin.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/LV2/Features.hpp"
#include "Platform/LV2/SymbolTable.hpp"
#include "Platform/LV2/TimePosition.hpp"
#include "Platform/LV2/ViewFeatures.hpp"

#include <fmt/format.h>
#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/midi/midi.h>
#include <lv2/options/options.h>
#include <lv2/port-groups/port-groups.h>
#include <lv2/port-props/port-props.h>
#include <lv2/presets/presets.h>
#include <lv2/resize-port/resize-port.h>
#include <lv2/time/time.h>
#include <lv2/ui/ui.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <tuple>

#include <dlfcn.h>

namespace platform::lv2
{

namespace
{

// LV2 allows no two calls of a binary's instantiation functions at a time.
std::mutex &instantiationMutex()
{
    static std::mutex mutex;
    return mutex;
}

// A plug-in with more ports than this does not describe one.
constexpr std::uint32_t mostPorts = 65536;
// How often a view may be kept going, in Hz.
constexpr float slowestUpdate = 1.0F;
constexpr float fastestUpdate = 60.0F;
// The largest buffer a port may ask for, in bytes.
constexpr int largestMinimumSize = 64 * 1024 * 1024;

std::string whyNotServed(const std::string &feature)
{
    return fmt::format("it needs a feature that is not offered here, <{}>", feature);
}

std::optional<std::string> filePath(const LilvNode *uri)
{
    const std::unique_ptr<char, Release<lilv_free>> path(
        uri ? lilv_file_uri_parse(lilv_node_as_uri(uri), nullptr) : nullptr);
    return path ? std::optional<std::string>(path.get()) : std::nullopt;
}

void settleRange(Port &port, float minimum, float maximum, float defaultValue)
{
    port.minimum = std::isfinite(minimum) ? minimum : 0.0F;
    port.maximum =
        std::isfinite(maximum) ? std::max(maximum, port.minimum) : std::max(port.minimum, 1.0F);
    // LV2 has the sample rate scale the range alone. Some say the default in Hz, others
    // as a multiple like the range; none is meant to lie beyond it.
    port.isDefaultUnscaled = port.isScaledBySampleRate && std::isfinite(defaultValue) &&
                             std::isfinite(maximum) && defaultValue > maximum;
    if (port.isDefaultUnscaled)
        port.defaultValue = defaultValue;
    else if (std::isfinite(minimum) && std::isfinite(maximum))
        port.defaultValue = std::isfinite(defaultValue)
                                ? std::clamp(defaultValue, port.minimum, port.maximum)
                                : port.minimum;
    else
        port.defaultValue = std::isfinite(defaultValue) ? defaultValue : port.minimum;
}

} // namespace

void ReleaseInstance::operator()(LilvInstance *instance) const
{
    const std::lock_guard lock(instantiationMutex());
    lilv_instance_free(instance);
}

Plugin::Plugin(const std::string &uri, const std::vector<std::string> &bundles)
    : world_(lilv_world_new()), uri_(uri)
{
    for (const std::string &bundle : bundles) {
        const NodePointer location(
            lilv_new_file_uri(world_.get(), nullptr, (bundle + "/").c_str()));
        lilv_world_load_bundle(world_.get(), location.get());
    }
    const NodePointer subject = node(uri.c_str());
    if (subject)
        plugin_ = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world_.get()), subject.get());
    if (!plugin_)
        throw PlatformError(fmt::format("No plug-in <{}> is installed.", uri));

    const NodePointer name(lilv_plugin_get_name(plugin_));
    name_ = name ? lilv_node_as_string(name.get()) : uri;
    readPorts();
    readRunLengths();
}

NodePointer Plugin::node(const char *uri) const
{
    return NodePointer(lilv_new_uri(world_.get(), uri));
}

std::vector<std::string> Plugin::strings(const NodesPointer &nodes) const
{
    std::vector<std::string> result;
    LILV_FOREACH(nodes, i, nodes.get())
    result.emplace_back(lilv_node_as_string(lilv_nodes_get(nodes.get(), i)));
    return result;
}

void Plugin::readPorts()
{
    const std::uint32_t count = lilv_plugin_get_num_ports(plugin_);
    if (count > mostPorts)
        throw PlatformError(fmt::format("{} describes {} ports.", name_, count));
    std::vector<float> minima(count);
    std::vector<float> maxima(count);
    std::vector<float> defaults(count);
    lilv_plugin_get_port_ranges_float(plugin_, minima.data(), maxima.data(), defaults.data());
    for (std::uint32_t i = 0; i < count; ++i) {
        const LilvPort *port = lilv_plugin_get_port_by_index(plugin_, i);
        if (!port)
            throw PlatformError(fmt::format("{} describes no port {}.", name_, i));
        ports_.push_back(readPort(port));
        settleRange(ports_.back(), minima[i], maxima[i], defaults[i]);
        // Bounds that nobody has named are not to be kept to.
        ports_.back().hasStrictBounds &= std::isfinite(minima[i]) && std::isfinite(maxima[i]);
        // Whoever plays through a plug-in wants to hear it.
        if (ports_.back().isEnabling)
            ports_.back().defaultValue =
                std::clamp(1.0F, ports_.back().minimum, ports_.back().maximum);
    }
    shareSizes();

    if (lilv_plugin_has_latency(plugin_)) {
        const std::uint32_t index = lilv_plugin_get_latency_port_index(plugin_);
        if (index < count)
            ports_[index].isLatency = true;
    }
}

Port Plugin::readPort(const LilvPort *port) const
{
    const auto isA = [&](const char *kind) {
        return lilv_port_is_a(plugin_, port, node(kind).get());
    };
    const auto has = [&](const char *property) {
        return lilv_port_has_property(plugin_, port, node(property).get());
    };

    Port result;
    result.index = lilv_port_get_index(plugin_, port);
    result.symbol = lilv_node_as_string(lilv_port_get_symbol(plugin_, port));
    const NodePointer name(lilv_port_get_name(plugin_, port));
    result.name = name ? lilv_node_as_string(name.get()) : result.symbol;
    result.isInput = isA(LV2_CORE__InputPort);

    constexpr std::array<std::pair<const char *, PortKind>, 4> kinds{
        {{LV2_CORE__AudioPort, PortKind::audio},
         {LV2_CORE__ControlPort, PortKind::control},
         {LV2_CORE__CVPort, PortKind::cv},
         {LV2_ATOM__AtomPort, PortKind::atom}}};
    for (const auto &kind : kinds)
        if (isA(kind.first))
            result.kind = kind.second;

    result.isOptional = has(LV2_CORE__connectionOptional);
    result.isScaledBySampleRate = has(LV2_CORE__sampleRate);
    result.hasStrictBounds = has(LV2_PORT_PROPS__hasStrictBounds);
    result.hasMidi = result.kind == PortKind::atom &&
                     lilv_port_supports_event(plugin_, port, node(LV2_MIDI__MidiEvent).get());
    result.takesTime = result.kind == PortKind::atom && result.isInput &&
                       lilv_port_supports_event(plugin_, port, node(LV2_TIME__Position).get());
    result.isSideChain = result.kind == PortKind::audio && isSideChain(port, result.isInput);
    readDesignations(port, result);
    result.minimumSize = minimumSize(port);
    return result;
}

void Plugin::readDesignations(const LilvPort *port, Port &result) const
{
    const NodesPointer designations(
        lilv_port_get_value(plugin_, port, node(LV2_CORE__designation).get()));
    for (const std::string &designation : strings(designations)) {
        result.isControlDesignation |= designation == LV2_CORE__control;
        result.isFreeWheeling |= designation == LV2_CORE__freeWheeling;
        result.isEnabling |= designation == LV2_CORE__enabled;
        if (const auto quantity = timeQuantityOf(designation))
            result.timeQuantity = quantity;
    }
}

std::uint32_t Plugin::minimumSize(const LilvPort *port) const
{
    const NodePointer minimum(
        lilv_port_get(plugin_, port, node(LV2_RESIZE_PORT__minimumSize).get()));
    if (!minimum || !lilv_node_is_int(minimum.get()))
        return 0;
    const int size = lilv_node_as_int(minimum.get());
    if (size > largestMinimumSize)
        throw PlatformError(
            fmt::format("{} asks for a buffer of {} bytes for one of its ports.", name_, size));
    return static_cast<std::uint32_t>(std::max(size, 0));
}

// What one port may hold, another that is to take it over must have room for.
void Plugin::shareSizes()
{
    for (Port &port : ports_) {
        const NodePointer example(lilv_port_get(plugin_,
                                                lilv_plugin_get_port_by_index(plugin_, port.index),
                                                node(LV2_RESIZE_PORT__asLargeAs).get()));
        if (!example)
            continue;
        const auto isExample = [&](const Port &each) {
            return each.symbol == lilv_node_as_string(example.get());
        };
        const auto found = std::find_if(ports_.begin(), ports_.end(), isExample);
        if (found != ports_.end())
            port.minimumSize = std::max(port.minimumSize, found->minimumSize);
    }
}

void Plugin::readRunLengths()
{
    const NodesPointer required(lilv_plugin_get_required_features(plugin_));
    const auto isRequired = [&](const char *feature) {
        return lilv_nodes_contains(required.get(), node(feature).get());
    };
    runLengths_.areFixed = isRequired(LV2_BUF_SIZE__fixedBlockLength);
    runLengths_.arePowersOfTwo = isRequired(LV2_BUF_SIZE__powerOf2BlockLength);
}

bool Plugin::isSideChain(const LilvPort *port, bool isInput) const
{
    if (lilv_port_has_property(plugin_, port, node(LV2_CORE_PREFIX "isSideChain").get()))
        return true;
    const NodePointer group(lilv_port_get(plugin_, port, node(LV2_PORT_GROUPS__group).get()));
    if (!group)
        return false;
    if (lilv_world_ask(world_.get(), group.get(), node(LV2_PORT_GROUPS__sideChainOf).get(),
                       nullptr))
        return true;
    // Where a main group is named, any other is beside it.
    const char *mainGroup = isInput ? LV2_PORT_GROUPS__mainInput : LV2_PORT_GROUPS__mainOutput;
    const NodesPointer main(lilv_plugin_get_value(plugin_, node(mainGroup).get()));
    return lilv_nodes_size(main.get()) > 0 && !lilv_nodes_contains(main.get(), group.get());
}

bool Plugin::hasFeature(const char *feature) const
{
    return lilv_plugin_has_feature(plugin_, node(feature).get());
}

void Plugin::requireServable() const
{
    const NodesPointer required(lilv_plugin_get_required_features(plugin_));
    for (const std::string &feature : strings(required))
        if (!Features::serves(feature))
            throw PlatformError(
                fmt::format("{} cannot be used: {}.", name_, whyNotServed(feature)));

    const NodesPointer options(
        lilv_plugin_get_value(plugin_, node(LV2_OPTIONS__requiredOption).get()));
    for (const std::string &option : strings(options))
        if (!Features::servesOption(option))
            throw PlatformError(
                fmt::format("{} cannot be used: it needs an option that is not offered here, <{}>.",
                            name_, option));

    for (const Port &port : ports_)
        if (port.kind == PortKind::unknown && !port.isOptional)
            throw PlatformError(fmt::format(
                "{} cannot be used: its port \"{}\" is of an unknown kind.", name_, port.name));
}

const std::vector<Plugin::Preset> &Plugin::presets()
{
    if (presetsAreLoaded_)
        return presets_;
    presetsAreLoaded_ = true;
    const NodesPointer found(lilv_plugin_get_related(plugin_, node(LV2_PRESETS__Preset).get()));
    LILV_FOREACH(nodes, i, found.get())
    {
        const LilvNode *preset = lilv_nodes_get(found.get(), i);
        lilv_world_load_resource(world_.get(), preset);
        presets_.push_back({lilv_node_as_string(preset), labelOf(preset), bankOf(preset)});
    }
    std::sort(presets_.begin(), presets_.end(), [](const Preset &left, const Preset &right) {
        return std::tie(left.bank, left.uri) < std::tie(right.bank, right.uri);
    });
    return presets_;
}

std::string Plugin::labelOf(const LilvNode *subject) const
{
    const NodePointer label(
        lilv_world_get(world_.get(), subject, node(LILV_NS_RDFS "label").get(), nullptr));
    return lilv_node_as_string(label ? label.get() : subject);
}

std::string Plugin::bankOf(const LilvNode *preset) const
{
    const NodePointer bank(
        lilv_world_get(world_.get(), preset, node(LV2_PRESETS__bank).get(), nullptr));
    if (!bank)
        return {};
    if (lilv_node_is_uri(bank.get()))
        lilv_world_load_resource(world_.get(), bank.get());
    return labelOf(bank.get());
}

StatePointer Plugin::loadState(const std::string &uri)
{
    const NodePointer subject = node(uri.c_str());
    if (!subject)
        return nullptr;
    if (uri != uri_)
        lilv_world_load_resource(world_.get(), subject.get());
    return StatePointer(
        lilv_state_new_from_world(world_.get(), SymbolTable::shared().mapFeature(), subject.get()));
}

std::optional<ViewDescription> Plugin::x11View() const
{
    const std::unique_ptr<LilvUIs, Release<lilv_uis_free>> views(lilv_plugin_get_uis(plugin_));
    const NodePointer x11 = node(LV2_UI__X11UI);
    LILV_FOREACH(uis, i, views.get())
    {
        const LilvUI *view = lilv_uis_get(views.get(), i);
        if (!lilv_ui_is_a(view, x11.get()))
            continue;
        if (auto description = describeView(view))
            return description;
    }
    return std::nullopt;
}

std::optional<ViewDescription> Plugin::describeView(const LilvUI *view) const
{
    const LilvNode *subject = lilv_ui_get_uri(view);
    // What it needs may stand in a file of its own.
    lilv_world_load_resource(world_.get(), subject);
    const auto binary = filePath(lilv_ui_get_binary_uri(view));
    const auto bundle = filePath(lilv_ui_get_bundle_uri(view));
    if (!binary || !bundle || !canServe(view))
        return std::nullopt;
    ViewDescription description{lilv_node_as_uri(subject), *binary, *bundle};
    const NodePointer rate(
        lilv_world_get(world_.get(), subject, node(LV2_UI__updateRate).get(), nullptr));
    if (rate && (lilv_node_is_float(rate.get()) || lilv_node_is_int(rate.get())))
        description.updateRate =
            std::clamp(lilv_node_as_float(rate.get()), slowestUpdate, fastestUpdate);
    for (const char *kind : {LV2_CORE__requiredFeature, LV2_CORE__optionalFeature})
        for (const char *fixed : {LV2_UI__fixedSize, LV2_UI__noUserResize})
            if (lilv_world_ask(world_.get(), subject, node(kind).get(), node(fixed).get()))
                description.isResizable = false;
    return description;
}

bool Plugin::canServe(const LilvUI *view) const
{
    const NodesPointer required(lilv_world_find_nodes(
        world_.get(), lilv_ui_get_uri(view), node(LV2_CORE__requiredFeature).get(), nullptr));
    const auto features = strings(required);
    return std::all_of(features.begin(), features.end(), ViewFeatures::serves);
}

// Never unloaded: a thread of the plug-in's own may still be at its last instructions
// when the instance has gone.
void Plugin::keepBinary() const
{
    const auto binary = filePath(lilv_plugin_get_library_uri(plugin_));
    if (!binary)
        throw PlatformError(fmt::format("{} cannot be loaded: it names no binary.", name_));
    if (::dlopen(binary->c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
        return;
    const char *reason = ::dlerror();
    throw PlatformError(fmt::format("{} cannot be loaded: {}.", name_, reason ? reason : *binary));
}

InstancePointer Plugin::instantiate(double sampleRate, const LV2_Feature *const *features) const
{
    const std::lock_guard lock(instantiationMutex());
    // lilv opens it again, but of a failure it would not say why.
    keepBinary();
    InstancePointer instance(lilv_plugin_instantiate(plugin_, sampleRate, features));
    if (!instance)
        throw PlatformError(fmt::format("{} refuses to be used at {} Hz.", name_, sampleRate));
    return instance;
}

} // namespace platform::lv2
