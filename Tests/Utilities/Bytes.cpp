#include "Tests/Utilities/Bytes.hpp"

#include <gtest/gtest.h>

#include <fstream>

namespace test
{

Bytes bytesOf(const std::filesystem::path &path)
{
    // All at once: by single bytes, large files take an unoptimised build minutes.
    Bytes bytes(std::filesystem::file_size(path));
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.read(reinterpret_cast<char *>(bytes.data()),
                          static_cast<std::streamsize>(bytes.size())))
        << path;
    return bytes;
}

} // namespace test
