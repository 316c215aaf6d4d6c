#pragma once

#include <lv2/core/lv2.h>
#include <lv2/urid/urid.h>

#include <cstdint>
#include <cstring>
#include <memory>

/// What the test plug-ins have in common: a class with a constructor from sample
/// rate and features, `connect`, `run` and `extension` becomes an LV2 descriptor.
namespace testplugin
{

template <typename T>
T *feature(const LV2_Feature *const *features, const char *uri)
{
    for (; *features; ++features)
        if (std::strcmp((*features)->URI, uri) == 0)
            return static_cast<T *>((*features)->data);
    return nullptr;
}

inline LV2_URID map(const LV2_Feature *const *features, const char *uri)
{
    auto *table = feature<LV2_URID_Map>(features, LV2_URID__map);
    return table->map(table->handle, uri);
}

template <typename Plugin>
constexpr LV2_Descriptor describe(const char *uri)
{
    return {
        uri,
        [](const LV2_Descriptor *, double rate, const char *, const LV2_Feature *const *features)
            -> LV2_Handle { return std::make_unique<Plugin>(rate, features).release(); },
        [](LV2_Handle handle, std::uint32_t port, void *data) {
            static_cast<Plugin *>(handle)->connect(port, data);
        },
        nullptr,
        [](LV2_Handle handle, std::uint32_t frames) { static_cast<Plugin *>(handle)->run(frames); },
        nullptr,
        [](LV2_Handle handle) {
            const std::unique_ptr<Plugin> owner(static_cast<Plugin *>(handle));
        },
        [](const char *extension) -> const void * { return Plugin::extension(extension); }};
}

} // namespace testplugin

// The one name that a plug-in's binary shows.
#define TEST_PLUGINS(...)                                                                          \
    LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(std::uint32_t index)                    \
    {                                                                                              \
        static const LV2_Descriptor descriptors[] = {__VA_ARGS__};                                 \
        return index < sizeof descriptors / sizeof *descriptors ? &descriptors[index] : nullptr;   \
    }
