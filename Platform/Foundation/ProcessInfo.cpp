#include "Platform/Foundation/ProcessInfo.hpp"

#include "Platform/Foundation/FatalError.hpp"

#include <glib.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <iomanip>
#include <memory>
#include <sstream>
#include <string_view>
#include <system_error>

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

std::string ProcessInfo::globallyUniqueString() const
{
    static std::atomic<std::uint64_t> count{0};
    const std::unique_ptr<gchar, decltype(&g_free)> random(g_uuid_string_random(), &g_free);
    std::ostringstream text;
    text << random.get() << '-' << processIdentifier() << '-' << std::hex << std::uppercase
         << std::setfill('0') << std::setw(16) << count++;
    return text.str();
}

std::string ProcessInfo::installationPrefix() const
{
    const std::string prefix = executable().parent_path().parent_path().string();
    return prefix == "/" ? std::string() : prefix;
}

std::vector<std::string> ProcessInfo::libraryFolders() const
{
    const std::string prefix = installationPrefix();
    return {prefix + "/" PARVANE_LIBRARY_FOLDER, prefix + "/lib"};
}
