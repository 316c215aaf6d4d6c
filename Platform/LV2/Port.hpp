#pragma once

#include <cstdint>
#include <string>

namespace platform::lv2
{

enum class PortKind : std::uint8_t { audio, control, cv, atom, unknown };

/// One port of a plug-in as its data describes it.
struct Port {
    std::uint32_t index = 0;
    std::string symbol;
    std::string name;
    PortKind kind = PortKind::unknown;
    bool isInput = false;

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

    /// The least size of an atom port's buffer in bytes; 0 where none is asked.
    std::uint32_t minimumSize = 0;

    /// Of a control port: always finite and in range, whatever the data says.
    float defaultValue = 0.0F;
    float minimum = 0.0F;
    float maximum = 1.0F;
    /// The range is in multiples of the sample rate, and the default, unless that is a
    /// value by itself.
    bool isScaledBySampleRate = false;
    bool isDefaultUnscaled = false;
};

} // namespace platform::lv2
