#include "Platform/LV2/ScratchFolder.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

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

} // namespace

ScratchFolder::ScratchFolder()
    : makePath_{this,
                [](LV2_State_Make_Path_Handle handle, const char *path) {
                    return static_cast<ScratchFolder *>(handle)->makePath(path);
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
    if (!folder_.empty())
        std::filesystem::remove_all(folder_, ignored);
}

char *ScratchFolder::makePath(const char *path)
{
    const std::filesystem::path wanted(path);
    if (leavesItsFolder(wanted))
        return nullptr;

    std::error_code error;
    const std::lock_guard lock(mutex_);
    if (folder_.empty()) {
        const auto temporary = std::filesystem::temp_directory_path(error);
        std::string folder = (temporary / "parvane-host-XXXXXX").string();
        if (error || !::mkdtemp(folder.data()))
            return nullptr;
        folder_ = folder;
    }
    const std::filesystem::path made = std::filesystem::path(folder_) / wanted;
    std::filesystem::create_directories(made.parent_path(), error);
    return error ? nullptr : copyOf(made.c_str());
}

} // namespace platform::lv2
