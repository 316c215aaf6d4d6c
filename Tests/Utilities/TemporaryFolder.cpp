#include "Tests/Utilities/TemporaryFolder.hpp"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

namespace test
{

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "parvane-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder: " + pattern);
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace test
