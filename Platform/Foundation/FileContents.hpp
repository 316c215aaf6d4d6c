#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace platform::foundation
{

/// The bytes of the file at `path`. Throws a `PlatformError` with the system's
/// reason. Any thread.
std::vector<std::byte> fileContents(const std::string &path);

} // namespace platform::foundation
