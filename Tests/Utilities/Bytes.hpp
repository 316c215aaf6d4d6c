#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace test
{

using Bytes = std::vector<std::uint8_t>;

/// All of a file. One that cannot be read fails the test.
Bytes bytesOf(const std::filesystem::path &path);

} // namespace test
