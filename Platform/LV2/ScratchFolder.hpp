#pragma once

#include <lv2/state/state.h>

#include <mutex>
#include <string>

namespace platform::lv2
{

/// Where a plug-in may put files of its own (LV2 state's makePath, mapPath and
/// freePath): a private folder that is made when a plug-in first asks for a path
/// and removed with this object. Paths are mapped to themselves, since state never
/// leaves the machine. Any thread.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    LV2_State_Make_Path *makePathFeature() { return &makePath_; }
    LV2_State_Map_Path *mapPathFeature() { return &mapPath_; }
    LV2_State_Free_Path *freePathFeature() { return &freePath_; }

private:
    char *makePath(const char *path);

    std::mutex mutex_;
    std::string folder_;
    LV2_State_Make_Path makePath_;
    LV2_State_Map_Path mapPath_;
    LV2_State_Free_Path freePath_;
};

} // namespace platform::lv2
