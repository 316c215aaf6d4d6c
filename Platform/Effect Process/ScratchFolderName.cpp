#include "Platform/Effect Process/ScratchFolderName.hpp"

#include <fmt/format.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <system_error>

namespace platform::effect
{

std::string newScratchFolderName()
{
    std::random_device random;
    const auto number = std::uint64_t{random()} << 32U | random();
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    return (folder / fmt::format("parvane-host-{:016x}", number)).string();
}

} // namespace platform::effect
