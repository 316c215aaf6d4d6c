#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace platform::audio
{

/// The text of a regular file of at most `largest` bytes. None when there is no
/// such file; one that is longer is answered with its size in `tooLarge`.
std::optional<std::string> readTextFile(const std::string &path, std::size_t largest,
                                        std::size_t &tooLarge);

} // namespace platform::audio
