#pragma once

#include <lv2/state/state.h>

#include <mutex>
#include <string>

namespace platform::lv2
{

/// Where a plug-in may put files of its own (LV2 state's makePath, mapPath and
/// freePath): a private folder that is made when a plug-in first asks for a path.
/// Paths are mapped to themselves, since state never leaves the machine. Any
/// thread.
class ScratchFolder
{
public:
    /// The folder's path, for others to remove; without one it is this object's own,
    /// and goes with it.
    explicit ScratchFolder(std::string folder = {});
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    ///@{
    /// What the plug-in is handed to save and restore its state; valid as long as this.
    LV2_State_Make_Path *makePathFeature() { return &makePath_; }
    LV2_State_Map_Path *mapPathFeature() { return &mapPath_; }
    LV2_State_Free_Path *freePathFeature() { return &freePath_; }
    ///@}

private:
    char *makePath(const char *path);
    bool makeFolder();

    std::mutex mutex_;
    std::string folder_;
    bool isOwn_;
    bool isMade_ = false;
    LV2_State_Make_Path makePath_;
    LV2_State_Map_Path mapPath_;
    LV2_State_Free_Path freePath_;
};

} // namespace platform::lv2
