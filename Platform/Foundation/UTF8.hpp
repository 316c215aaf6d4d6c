#pragma once

#include <string_view>

namespace platform::foundation
{

/// Whether `text` is well-formed UTF-8 (RFC 3629): no overlong forms, surrogates
/// or numbers above U+10FFFF. Any thread.
bool isUTF8(std::string_view text) noexcept;

} // namespace platform::foundation
