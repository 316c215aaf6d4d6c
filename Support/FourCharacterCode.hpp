#pragma once

#include <cstdint>
#include <string>

/// The text of a four-character code, in UTF-8: the word's bytes from the highest
/// to the lowest as characters of Mac OS Roman. No byte is filtered: zeros are NUL
/// characters. "FAIL" would stand for a byte without a character, but the set
/// has one for each. Any thread.
std::string stringValue(std::uint32_t code);
