#pragma once

#include "Platform/LV2/Log.hpp"
#include "Platform/LV2/MidiInput.hpp"
#include "Platform/LV2/MidiOutput.hpp"
#include "Platform/LV2/ScratchFolder.hpp"

#include <string>
#include <utility>

namespace platform::lv2
{

/// What stands between a plug-in and the host and outlives its instances: when
/// one is replaced by another at a new sample rate, no message is lost and the
/// threads at the other end need not know.
struct Exchange {
    /// `scratchFolder` as for `ScratchFolder`.
    explicit Exchange(std::string pluginName, std::string scratchFolder = {})
        : log(std::move(pluginName)), files(std::move(scratchFolder))
    {
    }

    MidiInput midiInput;   ///< to the plug-in, from any thread
    MidiOutput midiOutput; ///< from the plug-in
    Log log;               ///< what it has to say
    ScratchFolder files;   ///< where its state puts files
};

} // namespace platform::lv2
