#pragma once

#include "Platform/Audio/AudioComponentDescription.hpp"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace platform::audio
{

/// The description of a plug-in that says nothing about it, but for the type (0),
/// which is in its ports. Flags are 0.
///
/// Subtype: the FNV-1a hash (64 bits) of the plug-in's URI, taken modulo 62^4 and
/// written with four digits of the alphabet 0-9, A-Z, a-z, the highest first.
/// Manufacturer: the same hash of the URI's authority, taken modulo 26^4 and
/// written as one capital and three small letters. The authority is what stands
/// before the third slash of a hierarchical URI, before the second colon of a URN
/// and, where there is neither, the whole URI.
AudioComponentDescription derivedDescription(std::string_view pluginURI);

/// Whether some URI could be given these codes, 0 standing for any: a search for
/// others need not look at plug-ins that say nothing.
bool mayBeDerived(const AudioComponentDescription &key);

/// Tells types from ports: 'aumf' has audio in and out and MIDI in, 'aufx' audio
/// in and out, 'aumu' MIDI in and audio out, 'augn' audio out alone, 'aumi' MIDI
/// alone. What is left, such as a meter that only listens, counts as 'aufx'.
class DerivedTypes
{
public:
    /// Reads the files that describe the plug-in, each once in this object's life.
    std::uint32_t typeOf(const std::string &pluginURI, const std::vector<std::string> &dataFiles);

private:
    struct Ports {
        bool audioIn = false;
        bool audioOut = false;
        bool midiIn = false;
        bool midiOut = false;
    };
    using PortsByPlugin = std::map<std::string, Ports>;

    static PortsByPlugin readFile(const std::string &path);
    const PortsByPlugin &file(const std::string &path);

    std::map<std::string, PortsByPlugin> files_;
};

} // namespace platform::audio
