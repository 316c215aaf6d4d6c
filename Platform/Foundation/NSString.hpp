#pragma once

#include <string>

/// The whole content of the file at `path`, which must be text in UTF-8. Throws a
/// `PlatformError` for one that cannot be read or is anything else. Any thread.
std::string stringWithContentsOfFile(const std::string &path);
