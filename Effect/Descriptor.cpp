#include "Effect/Plugin.hpp"

#include <lv2/core/lv2.h>
#include <lv2/core/lv2_util.h>

#include <exception>
#include <memory>

// The plug-in's entry point and the functions of its C interface. No exception
// leaves them: the host need not be C++.
namespace
{

LV2_Handle instantiate(const LV2_Descriptor * /*descriptor*/, double sampleRate,
                       const char * /*bundlePath*/, const LV2_Feature *const *features)
{
    using effect::Plugin;
    if (features == nullptr || !(sampleRate >= Plugin::lowestRate) ||
        !(sampleRate <= Plugin::highestRate)) {
        return nullptr;
    }
    const auto *map = static_cast<const LV2_URID_Map *>(lv2_features_data(features, LV2_URID__map));
    if (map == nullptr) {
        return nullptr;
    }
    try {
        return std::make_unique<Plugin>(sampleRate, *map).release();
    } catch (const std::exception &) {
        return nullptr;
    }
}

void connectPort(LV2_Handle instance, std::uint32_t port, void *data)
{
    static_cast<effect::Plugin *>(instance)->connectPort(port, data);
}

void activate(LV2_Handle instance)
{
    static_cast<effect::Plugin *>(instance)->activate();
}

void run(LV2_Handle instance, std::uint32_t frames)
{
    static_cast<effect::Plugin *>(instance)->run(frames);
}

void cleanup(LV2_Handle instance)
{
    // Takes back what `instantiate` released.
    const std::unique_ptr<effect::Plugin> plugin(static_cast<effect::Plugin *>(instance));
}

const LV2_Descriptor descriptor{
    effect::Plugin::uri, instantiate, connectPort, activate, run, nullptr, cleanup, nullptr};

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(std::uint32_t index)
{
    return index == 0 ? &descriptor : nullptr;
}
