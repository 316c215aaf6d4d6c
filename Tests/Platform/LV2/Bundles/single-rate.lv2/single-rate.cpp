// All instances share tables for one sample rate: as long as there is one, another rate
// is refused. Tables for more than 100 kHz there are none.

#include <lv2/core/lv2.h>

#include <cstdint>

namespace
{

double rateOfTables = 0.0;
int instances = 0;

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(std::uint32_t index)
{
    static const LV2_Descriptor descriptor{"urn:test:single-rate",
                                           [](const LV2_Descriptor *, double rate, const char *,
                                              const LV2_Feature *const *) -> LV2_Handle {
                                               if (rate > 100000.0 ||
                                                   (instances > 0 && rate != rateOfTables))
                                                   return nullptr;
                                               rateOfTables = rate;
                                               ++instances;
                                               return &instances;
                                           },
                                           [](LV2_Handle, std::uint32_t, void *) {},
                                           nullptr,
                                           [](LV2_Handle, std::uint32_t) {},
                                           nullptr,
                                           [](LV2_Handle) { --instances; },
                                           nullptr};
    return index == 0 ? &descriptor : nullptr;
}
