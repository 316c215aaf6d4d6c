// Refuses sample rates of more than 100 kHz, and, having refused one, whatever it is
// asked for next.

#include <lv2/core/lv2.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace
{

using Ports = std::array<float *, 5>;

// A variable of the library would be new each time that it is loaded.
constexpr const char *sulks = "SULKING_PLUGIN_SULKS";

LV2_Handle instantiate(const LV2_Descriptor *, double rate, const char *,
                       const LV2_Feature *const *)
{
    if (rate > 100000.0) {
        ::setenv(sulks, "", 1);
        return nullptr;
    }
    if (std::getenv(sulks)) {
        ::unsetenv(sulks);
        return nullptr;
    }
    return std::make_unique<Ports>().release();
}

void run(LV2_Handle handle, std::uint32_t frames)
{
    const Ports &ports = *static_cast<Ports *>(handle);
    for (std::size_t channel = 1; channel < 3; ++channel)
        std::transform(ports[channel], ports[channel] + frames, ports[channel + 2],
                       [gain = *ports[0]](float in) { return gain * in; });
}

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(std::uint32_t index)
{
    static const LV2_Descriptor descriptor{
        "urn:test:sulking",
        &instantiate,
        [](LV2_Handle handle, std::uint32_t port, void *data) {
            (*static_cast<Ports *>(handle))[port] = static_cast<float *>(data);
        },
        nullptr,
        &run,
        nullptr,
        [](LV2_Handle handle) { const std::unique_ptr<Ports> owner(static_cast<Ports *>(handle)); },
        nullptr};
    return index == 0 ? &descriptor : nullptr;
}
