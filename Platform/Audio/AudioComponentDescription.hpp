#pragma once

#include <cstdint>
#include <string>

/// The key under which an audio component is registered. Codes are four ASCII
/// characters in a word, the first in the highest byte.
struct AudioComponentDescription {
    std::uint32_t componentType = 0;         ///< 'aumf', 'aufx', 'aumu', 'augn' or 'aumi'
    std::uint32_t componentSubType = 0;      ///< which of its manufacturer's
    std::uint32_t componentManufacturer = 0; ///< who made it
    std::uint32_t componentFlags = 0;        ///< 2: safe in a sandbox
    /// In a search: which flags count.
    std::uint32_t componentFlagsMask = 0;

    /// Whether all fields are the same.
    friend bool operator==(const AudioComponentDescription &,
                           const AudioComponentDescription &) = default;

    /// The record's name and its fields in decimal.
    std::string description() const;
};

namespace platform::audio
{

/// The word of a code written as four characters, e.g. `fourCharacterCode("aumf")`.
constexpr std::uint32_t fourCharacterCode(const char (&text)[5])
{
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = (code << 8U) | static_cast<unsigned char>(text[i]);
    return code;
}

} // namespace platform::audio
