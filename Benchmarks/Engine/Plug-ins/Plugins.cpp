// Two stereo plug-ins: one does nothing, one copies its input.

#include <lv2/core/lv2.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace
{

constexpr std::size_t channelCount = 2;

/// The inputs, then the outputs, as the ports are numbered.
using Ports = std::array<float *, 2 * channelCount>;

LV2_Handle instantiate(const LV2_Descriptor *, double, const char *, const LV2_Feature *const *)
{
    return std::make_unique<Ports>().release();
}

void connectPort(LV2_Handle instance, std::uint32_t port, void *data)
{
    (*static_cast<Ports *>(instance))[port] = static_cast<float *>(data);
}

void doNothing(LV2_Handle, std::uint32_t) {}

void copy(LV2_Handle instance, std::uint32_t frames)
{
    const Ports &ports = *static_cast<Ports *>(instance);
    for (std::size_t channel = 0; channel < channelCount; ++channel)
        std::copy_n(ports[channel], frames, ports[channelCount + channel]);
}

void cleanUp(LV2_Handle instance)
{
    const std::unique_ptr<Ports> owned(static_cast<Ports *>(instance));
}

constexpr LV2_Descriptor descriptor(const char *uri, void (*run)(LV2_Handle, std::uint32_t))
{
    return {uri, instantiate, connectPort, nullptr, run, nullptr, cleanUp, nullptr};
}

constexpr std::array<LV2_Descriptor, 2> descriptors{
    descriptor("urn:qrvx:benchmark:nothing", doNothing),
    descriptor("urn:qrvx:benchmark:copy", copy)};

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(std::uint32_t index)
{
    return index < descriptors.size() ? &descriptors[index] : nullptr;
}
