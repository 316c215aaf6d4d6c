#include "Platform/Foundation/UTF8.hpp"

#include <cstddef>
#include <cstdint>

namespace platform::foundation
{

namespace
{

struct Lead {
    std::size_t followers;
    std::uint8_t leastSecond; // rules out overlong forms
    std::uint8_t mostSecond;  // rules out surrogates and what is too large
};

/// What may follow a first byte; nothing may follow one that is no first byte.
bool leadOf(std::uint8_t byte, Lead &lead) noexcept
{
    if (byte < 0x80)
        lead = {0, 0, 0};
    else if (byte >= 0xC2 && byte < 0xE0)
        lead = {1, 0x80, 0xBF};
    else if (byte >= 0xE0 && byte < 0xF0)
        lead = {2, static_cast<std::uint8_t>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<std::uint8_t>(byte == 0xED ? 0x9F : 0xBF)};
    else if (byte >= 0xF0 && byte < 0xF5)
        lead = {3, static_cast<std::uint8_t>(byte == 0xF0 ? 0x90 : 0x80),
                static_cast<std::uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
    else
        return false;
    return true;
}

} // namespace

bool isUTF8(std::string_view text) noexcept
{
    const auto byteAt = [&](std::size_t index) { return static_cast<std::uint8_t>(text[index]); };
    for (std::size_t i = 0; i < text.size();) {
        Lead lead{};
        if (!leadOf(byteAt(i), lead) || text.size() - i <= lead.followers)
            return false;
        for (std::size_t k = 1; k <= lead.followers; ++k) {
            const std::uint8_t least = k == 1 ? lead.leastSecond : 0x80;
            const std::uint8_t most = k == 1 ? lead.mostSecond : 0xBF;
            if (byteAt(i + k) < least || byteAt(i + k) > most)
                return false;
        }
        i += 1 + lead.followers;
    }
    return true;
}

} // namespace platform::foundation
