#include "Platform/Foundation/Description.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace platform::foundation
{

namespace
{

/// `largest` is where the type's whole numbers are no longer exact: from there on
/// digits before the point would pretend a precision that is not there.
template <typename T>
std::string describeNumber(T value, T largest)
{
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value < 0 ? "-inf" : "inf";
    const T size = std::abs(value);
    const bool fixed = size == 0 || (size >= static_cast<T>(1e-4) && size < largest);
    std::array<char, 64> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                      fixed ? std::chars_format::fixed : std::chars_format::scientific);
    std::string text(buffer.data(), end.ptr);
    if (fixed && text.find('.') == std::string::npos)
        text += ".0";
    return text;
}

std::string escaped(char c)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '\0':
        return "\\0";
    default:
        break;
    }
    if (byte >= 0x20 && byte != 0x7F)
        return {c};
    return {'\\', 'u', '{', digits[byte >> 4U], digits[byte & 15U], '}'};
}

} // namespace

std::string describe(double value)
{
    return describeNumber(value, 9007199254740992.0);
}

std::string describe(float value)
{
    return describeNumber(value, 16777216.0F);
}

std::string inQuotationMarks(std::string_view text)
{
    std::string result = "\"";
    for (const char c : text)
        result += escaped(c);
    return result + "\"";
}

} // namespace platform::foundation
