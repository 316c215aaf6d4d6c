#include "Tests/Conformance/Plug-ins/BarePosition.hpp"

#include <lv2/time/time.h>

#include <cmath>

namespace conformance
{

BarePosition::BarePosition(LV2_URID_Map &map) : map_(map)
{
    lv2_atom_forge_init(&forge_, &map);
}

void BarePosition::moveTo(std::int64_t frame, double sampleRate)
{
    const double beat = static_cast<double>(frame) / sampleRate * 2.0;
    const double bar = std::floor(beat / 4.0);
    values_ = {{LV2_TIME__frame, static_cast<double>(frame)},
               {LV2_TIME__framesPerSecond, sampleRate},
               {LV2_TIME__speed, 1.0},
               {LV2_TIME__bar, bar},
               {LV2_TIME__barBeat, beat - 4.0 * bar},
               {LV2_TIME__beat, beat},
               {LV2_TIME__beatUnit, 4.0},
               {LV2_TIME__beatsPerBar, 4.0},
               {LV2_TIME__beatsPerMinute, 120.0}};
}

const double *BarePosition::value(const std::string &uri) const
{
    const auto found = values_.find(uri);
    return found == values_.end() ? nullptr : &found->second;
}

const LV2_Atom *BarePosition::object()
{
    lv2_atom_forge_set_buffer(&forge_, bytes_.data(), bytes_.size());
    LV2_Atom_Forge_Frame frame;
    lv2_atom_forge_object(&forge_, &frame, 0, map_.map(map_.handle, LV2_TIME__Position));
    for (const auto &[uri, value] : values_) {
        lv2_atom_forge_key(&forge_, map_.map(map_.handle, uri.c_str()));
        if (uri == LV2_TIME__frame || uri == LV2_TIME__bar)
            lv2_atom_forge_long(&forge_, static_cast<std::int64_t>(value));
        else if (uri == LV2_TIME__beatUnit)
            lv2_atom_forge_int(&forge_, static_cast<std::int32_t>(value));
        else if (uri == LV2_TIME__beat)
            lv2_atom_forge_double(&forge_, value);
        else
            lv2_atom_forge_float(&forge_, static_cast<float>(value));
    }
    lv2_atom_forge_pop(&forge_, &frame);
    return reinterpret_cast<const LV2_Atom *>(bytes_.data());
}

} // namespace conformance
