#pragma once

#include "Platform/LV2/TimeQuantity.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace platform::lv2
{

/// What flows through a port; unknown ones can only be left unconnected.
enum class PortKind : std::uint8_t { audio, control, cv, atom, unknown };

/// One port of a plug-in as its data describes it.
struct Port {
    std::uint32_t index = 0;           ///< among all ports
    std::string symbol;                ///< unique within the plug-in
    std::string name;                  ///< what people read
    PortKind kind = PortKind::unknown; ///< what flows through it
    bool isInput = false;              ///< into the plug-in

    /// May be left unconnected.
    bool isOptional = false;
    /// Audio beside the main signal, such as a compressor's key input.
    bool isSideChain = false;
    /// Carries MIDI (atom ports).
    bool hasMidi = false;
    /// Where the host is to send what has no other place (`lv2:control`).
    bool isControlDesignation = false;
    /// Reports the plug-in's delay in frames.
    bool isLatency = false;
    /// Tells the plug-in that rendering is not bound to time.
    bool isFreeWheeling = false;
    /// Switches the plug-in's effect on, and off for a bypass of its own.
    bool isEnabling = false;
    /// Takes `time:Position` events (atom ports).
    bool takesTime = false;
    /// What of the position it is to be told (control inputs).
    std::optional<TimeQuantity> timeQuantity;

    /// The least size of an atom port's buffer in bytes; 0 where none is asked.
    std::uint32_t minimumSize = 0;

    /// Of a control or CV port: always finite and in range, whatever the data says.
    float defaultValue = 0.0F;
    ///@{
    /// Of a control port: what people may set.
    float minimum = 0.0F;
    float maximum = 1.0F;
    ///@}
    /// The range is in multiples of the sample rate, and the default, unless that is a
    /// value by itself.
    bool isScaledBySampleRate = false;
    bool isDefaultUnscaled = false; ///< see above
    /// Values beyond the range are not to reach the plug-in.
    bool hasStrictBounds = false;
};

} // namespace platform::lv2
