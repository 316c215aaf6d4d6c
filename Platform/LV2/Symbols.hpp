#pragma once

#include "Platform/LV2/SymbolTable.hpp"

namespace platform::lv2
{

/// Numbers that the host itself uses, looked up once.
struct Symbols {
    ///@{
    /// The number of the URI of that name.
    LV2_URID atomBlank; ///< what objects were called before
    LV2_URID atomChunk;
    LV2_URID atomDouble;
    LV2_URID atomFloat;
    LV2_URID atomInt;
    LV2_URID atomBool;
    LV2_URID atomLong;
    LV2_URID atomObject;
    LV2_URID atomPath;
    LV2_URID atomSequence;
    LV2_URID atomString;
    LV2_URID midiEvent;
    LV2_URID stateChanged;
    LV2_URID timePosition;
    ///@}

    /// Any thread. The first call must not be on the audio callback.
    static const Symbols &shared();
};

} // namespace platform::lv2
