#include "Benchmarks/Engine/BareHost.hpp"

#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/parameters/parameters.h>

#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace
{

struct FreeWorld {
    void operator()(LilvWorld *world) const { lilv_world_free(world); }
};
struct FreeNode {
    void operator()(LilvNode *node) const { lilv_node_free(node); }
};
using NodePointer = std::unique_ptr<LilvNode, FreeNode>;

LilvWorld *world()
{
    static const std::unique_ptr<LilvWorld, FreeWorld> loaded = [] {
        std::unique_ptr<LilvWorld, FreeWorld> made(lilv_world_new());
        lilv_world_load_all(made.get());
        return made;
    }();
    return loaded.get();
}

const LilvPlugin *pluginOf(const std::string &uri)
{
    const NodePointer node(lilv_new_uri(world(), uri.c_str()));
    return lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world()), node.get());
}

bool isA(const LilvPlugin *plugin, const LilvPort *port, const char *kind)
{
    const NodePointer node(lilv_new_uri(world(), kind));
    return lilv_port_is_a(plugin, port, node.get());
}

} // namespace

void useOwnPlugins()
{
    setenv("LV2_PATH", BENCHMARK_LV2_DIR, 1);
}

void useAllPlugins()
{
    setenv("LV2_PATH",
           BENCHMARK_LV2_DIR ":" PARVANE_LV2_DIR
                             ":/usr/lib/lv2:/usr/lib/x86_64-linux-gnu/lv2:/usr/local/lib/lv2",
           1);
}

bool isInstalled(const std::string &pluginURI)
{
    return pluginOf(pluginURI) != nullptr;
}

void BareHost::FreeInstance::operator()(LilvInstance *instance) const
{
    lilv_instance_deactivate(instance);
    lilv_instance_free(instance);
}

BareHost::BareHost(const std::string &pluginURI, double sampleRate, std::uint32_t maximumFrames)
    : sampleRate_(static_cast<float>(sampleRate)),
      maximumFrames_(static_cast<std::int32_t>(maximumFrames))
{
    const LilvPlugin *const plugin = pluginOf(pluginURI);
    if (plugin == nullptr)
        throw std::runtime_error(pluginURI + " is not installed");
    LV2_URID_Map mapping{this, [](LV2_URID_Map_Handle host, const char *uri) {
                             return static_cast<BareHost *>(host)->map(uri);
                         }};
    const auto option = [this](const char *key, const char *type, const void *value) {
        return LV2_Options_Option{LV2_OPTIONS_INSTANCE, 0, map(key), 4, map(type), value};
    };
    std::array<LV2_Options_Option, 4> options{
        option(LV2_BUF_SIZE__maxBlockLength, LV2_ATOM__Int, &maximumFrames_),
        option(LV2_BUF_SIZE__nominalBlockLength, LV2_ATOM__Int, &maximumFrames_),
        option(LV2_PARAMETERS__sampleRate, LV2_ATOM__Float, &sampleRate_), LV2_Options_Option{}};
    const LV2_Feature mapFeature{LV2_URID__map, &mapping};
    const LV2_Feature optionsFeature{LV2_OPTIONS__options, options.data()};
    const LV2_Feature boundedFeature{LV2_BUF_SIZE__boundedBlockLength, nullptr};
    const std::array<const LV2_Feature *, 4> features{&mapFeature, &optionsFeature, &boundedFeature,
                                                      nullptr};
    instance_.reset(lilv_plugin_instantiate(plugin, sampleRate, features.data()));
    if (!instance_)
        throw std::runtime_error(pluginURI + " cannot be instantiated");
    sequence_ = map(LV2_ATOM__Sequence);
    chunk_ = map(LV2_ATOM__Chunk);
    connectPorts(plugin, maximumFrames);
    lilv_instance_activate(instance_.get());
}

LV2_URID BareHost::map(const char *uri)
{
    return urids_.emplace(uri, static_cast<LV2_URID>(urids_.size() + 1)).first->second;
}

void BareHost::connectPorts(const LilvPlugin *plugin, std::uint32_t maximumFrames)
{
    const std::uint32_t count = lilv_plugin_get_num_ports(plugin);
    values_.resize(count);
    lilv_plugin_get_port_ranges_float(plugin, nullptr, nullptr, values_.data());
    output_.reserve(count); // what is connected stays where it is
    for (std::uint32_t index = 0; index < count; ++index) {
        const LilvPort *const port = lilv_plugin_get_port_by_index(plugin, index);
        const bool isInput = isA(plugin, port, LV2_CORE__InputPort);
        void *data = nullptr;
        if (isA(plugin, port, LV2_CORE__AudioPort)) {
            if (isInput)
                inputs_.push_back(index);
            else
                data = output_.emplace_back(maximumFrames).data();
        } else if (isA(plugin, port, LV2_CORE__ControlPort)) {
            if (std::isnan(values_[index]))
                values_[index] = 0;
            data = &values_[index];
        } else if (isA(plugin, port, LV2_ATOM__AtomPort)) {
            auto &buffers = isInput ? eventInputs_ : eventOutputs_;
            data = buffers.emplace_back(std::make_unique<EventBuffer>())->data();
        }
        lilv_instance_connect_port(instance_.get(), index, data);
    }
}

void BareHost::run(const float *const *input, std::uint32_t frames)
{
    for (const std::uint32_t port : inputs_)
        lilv_instance_connect_port(instance_.get(), port, const_cast<float *>(*input++));
    for (const auto &buffer : eventInputs_)
        *reinterpret_cast<LV2_Atom_Sequence *>(buffer->data()) = {
            {sizeof(LV2_Atom_Sequence_Body), sequence_}, {0, 0}};
    for (const auto &buffer : eventOutputs_)
        *reinterpret_cast<LV2_Atom *>(buffer->data()) = {sizeof(EventBuffer) - sizeof(LV2_Atom),
                                                         chunk_};
    lilv_instance_run(instance_.get(), frames);
}
