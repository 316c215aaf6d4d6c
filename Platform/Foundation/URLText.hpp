#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::foundation
{

/// The parts of a URI reference as they stand in its text (RFC 3986, section 3).
struct URLParts {
    std::optional<std::string_view> scheme;    ///< before the first ":"
    std::optional<std::string_view> authority; ///< behind "//"
    std::string_view path;                     ///< always there, perhaps empty
    std::optional<std::string_view> query;     ///< behind "?"
    std::optional<std::string_view> fragment;  ///< behind "#"
};

/// Splits any text as appendix B of RFC 3986 does. The parts point into `text`.
URLParts splitURL(std::string_view text);

/// Whether `text` is a URI reference by RFC 3986 and not empty.
bool isURL(std::string_view text);

/// The host within an authority, without user, port and brackets.
std::string_view hostOfAuthority(std::string_view authority);

/// Percent-encodes every byte of a path but slashes and RFC 3986's unreserved
/// characters.
std::string encodePath(std::string_view path);

/// Replaces each escape by its byte; what is no escape stays.
std::string decodePercent(std::string_view text);

/// Percent-encodes each byte that RFC 3986 does not allow where it stands, and nothing
/// else: for locations of programs that are less strict.
std::string encodeForbidden(std::string_view text);

/// Compares ASCII text.
bool equalsIgnoringCase(std::string_view left, std::string_view right);

} // namespace platform::foundation
