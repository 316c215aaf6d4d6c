#include "Tests/Utilities/Places.hpp"

namespace test
{

std::string sourcePath(const std::string &path)
{
    return SOURCE_FOLDER "/" + path;
}

std::string buildPath(const std::string &path)
{
    return BUILD_FOLDER "/" + path;
}

} // namespace test
