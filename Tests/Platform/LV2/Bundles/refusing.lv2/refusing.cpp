#include <lv2/core/lv2.h>

#include <cstdint>

LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(std::uint32_t index)
{
    static const LV2_Descriptor descriptor{
        "urn:test:refusing",
        [](const LV2_Descriptor *, double, const char *, const LV2_Feature *const *) -> LV2_Handle {
            return nullptr;
        },
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr};
    return index == 0 ? &descriptor : nullptr;
}
