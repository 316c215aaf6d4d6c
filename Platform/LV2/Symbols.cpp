#include "Platform/LV2/Symbols.hpp"

#include <lv2/atom/atom.h>
#include <lv2/midi/midi.h>
#include <lv2/state/state.h>
#include <lv2/time/time.h>

namespace platform::lv2
{

const Symbols &Symbols::shared()
{
    static const Symbols symbols = [] {
        SymbolTable &table = SymbolTable::shared();
        return Symbols{table.map(LV2_ATOM__Blank),         table.map(LV2_ATOM__Chunk),
                       table.map(LV2_ATOM__Double),        table.map(LV2_ATOM__Float),
                       table.map(LV2_ATOM__Int),           table.map(LV2_ATOM__Bool),
                       table.map(LV2_ATOM__Long),          table.map(LV2_ATOM__Object),
                       table.map(LV2_ATOM__Path),          table.map(LV2_ATOM__Sequence),
                       table.map(LV2_ATOM__String),        table.map(LV2_MIDI__MidiEvent),
                       table.map(LV2_STATE__StateChanged), table.map(LV2_TIME__Position)};
    }();
    return symbols;
}

} // namespace platform::lv2
