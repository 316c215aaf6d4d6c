#include "Tests/Utilities/Bytes.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace test
{

Bytes bytesOf(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

} // namespace test
