#pragma once

#include <string>

namespace test
{

// The only two paths that are compiled in: with one in every test's command, a compiler
// cache would know nothing of what it compiled in another clone.

/// A file or folder of the sources, by its path from their root.
std::string sourcePath(const std::string &path);

/// A file or folder of the build that this program is of, by its path from there.
std::string buildPath(const std::string &path);

} // namespace test
