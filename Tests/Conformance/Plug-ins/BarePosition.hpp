#pragma once

#include <lv2/atom/forge.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>

namespace conformance
{

/// Where rendering stands, in LV2's terms, at 120 beats a minute and four to the bar.
class BarePosition
{
public:
    explicit BarePosition(LV2_URID_Map &map);

    /// Goes to a frame since rendering began.
    void moveTo(std::int64_t frame, double sampleRate);

    /// The quantity of this URI; null for what is none.
    const double *value(const std::string &uri) const;
    /// A `time:Position`, valid until the next call.
    const LV2_Atom *object();

private:
    LV2_URID_Map &map_;
    LV2_Atom_Forge forge_{};
    std::map<std::string, double> values_;
    alignas(8) std::array<std::uint8_t, 512> bytes_{};
};

} // namespace conformance
