#include "Platform/Effect Process/ScratchFolderName.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string_view>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace platform::effect
{

namespace
{

/// What the names of folders begin with that are this namespace's of processes: in
/// others, which may share the folder, numbers mean other processes.
std::string namePrefix()
{
    struct stat status {
    };
    const std::uint64_t space = ::stat("/proc/self/ns/pid", &status) == 0 ? status.st_ino : 0;
    return fmt::format("parvane-host-{:x}-", space);
}

/// The process that a folder of this name belongs to; 0 where it names none.
pid_t ownerOf(std::string_view name, std::string_view prefix)
{
    if (name.substr(0, prefix.size()) != prefix)
        return 0;
    pid_t owner = 0;
    constexpr pid_t largest = 1 << 22; // the kernel's own limit
    for (const char digit : name.substr(prefix.size())) {
        if (digit == '-')
            return owner;
        if (digit < '0' || digit > '9' || owner > largest)
            return 0;
        owner = owner * 10 + (digit - '0');
    }
    return 0;
}

bool isGone(pid_t process)
{
    return ::kill(process, 0) != 0 && errno == ESRCH;
}

bool isOwnFolder(const std::filesystem::path &path)
{
    struct stat status {
    };
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid();
}

} // namespace

std::string newScratchFolderName()
{
    std::random_device random;
    const auto number = std::uint64_t{random()} << 32U | random();
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    return (folder / fmt::format("{}{}-{:016x}", namePrefix(), ::getpid(), number)).string();
}

void removeAbandonedScratchFolders()
{
    const std::string prefix = namePrefix();
    std::error_code error;
    std::filesystem::directory_iterator each(std::filesystem::temp_directory_path(error), error);
    for (; !error && each != std::filesystem::directory_iterator(); each.increment(error)) {
        const std::filesystem::path path = each->path();
        const pid_t owner = ownerOf(path.filename().native(), prefix);
        std::error_code ignored;
        if (owner > 0 && isGone(owner) && isOwnFolder(path))
            std::filesystem::remove_all(path, ignored);
    }
}

} // namespace platform::effect
