#include "Platform/Foundation/ProcessInfo.hpp"

#include "Platform/Foundation/FatalError.hpp"

#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace
{

/// Where the executable lies, also after it has been replaced on the disk.
std::filesystem::path executable()
{
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    if (error)
        fatalError("The program cannot find its own executable: " + error.message());
    constexpr std::string_view mark = " (deleted)";
    if (path.ends_with(mark) && !std::filesystem::exists(path, error))
        path.resize(path.size() - mark.size());
    return path;
}

} // namespace

const ProcessInfo &ProcessInfo::processInfo()
{
    static const ProcessInfo info;
    return info;
}

std::string ProcessInfo::processName() const
{
    return executable().filename().string();
}

std::int32_t ProcessInfo::processIdentifier() const
{
    return getpid();
}

std::string ProcessInfo::installationPrefix() const
{
    const std::string prefix = executable().parent_path().parent_path().string();
    return prefix == "/" ? std::string() : prefix;
}
