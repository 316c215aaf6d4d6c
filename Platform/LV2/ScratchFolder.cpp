#include "Platform/LV2/ScratchFolder.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace platform::lv2
{

namespace
{

// Plug-ins take paths as C strings and give them back with freePath, or, older
// ones, with free().
char *copyOf(const char *text)
{
    return ::strdup(text); // NOLINT(cppcoreguidelines-no-malloc): the plug-in frees it
}

bool leavesItsFolder(const std::filesystem::path &path)
{
    return path.is_absolute() ||
           std::any_of(path.begin(), path.end(), [](const auto &part) { return part == ".."; });
}

// Made by an earlier instance, and not by somebody who guessed its name.
bool isPrivateFolder(const std::string &path)
{
    struct stat status {
    };
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

ScratchFolder::ScratchFolder(std::string folder)
    : folder_(std::move(folder)),
      isOwn_(folder_.empty()), makePath_{this,
                                         [](LV2_State_Make_Path_Handle handle, const char *path) {
                                             return static_cast<ScratchFolder *>(handle)->makePath(
                                                 path);
                                         }},
      mapPath_{this, [](LV2_State_Map_Path_Handle, const char *path) { return copyOf(path); },
               [](LV2_State_Map_Path_Handle, const char *path) { return copyOf(path); }},
      freePath_{this, [](LV2_State_Free_Path_Handle, char *path) {
                    // Made by strdup, and owned by whoever holds it.
                    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
                    std::free(path);
                }}
{
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    if (isOwn_ && isMade_)
        std::filesystem::remove_all(folder_, ignored);
}

bool ScratchFolder::makeFolder()
{
    if (isMade_)
        return true;
    if (isOwn_) {
        std::error_code error;
        const auto temporary = std::filesystem::temp_directory_path(error);
        std::string folder = (temporary / "parvane-host-XXXXXX").string();
        if (error || !::mkdtemp(folder.data()))
            return false;
        folder_ = folder;
    } else if (::mkdir(folder_.c_str(), S_IRWXU) != 0 && !isPrivateFolder(folder_)) {
        return false;
    }
    isMade_ = true;
    return true;
}

char *ScratchFolder::makePath(const char *path)
{
    const std::filesystem::path wanted(path);
    if (leavesItsFolder(wanted))
        return nullptr;

    const std::lock_guard lock(mutex_);
    if (!makeFolder())
        return nullptr;
    std::error_code error;
    const std::filesystem::path made = std::filesystem::path(folder_) / wanted;
    std::filesystem::create_directories(made.parent_path(), error);
    return error ? nullptr : copyOf(made.c_str());
}

} // namespace platform::lv2
