#pragma once

#include <filesystem>
#include <string>

namespace test
{

/// A file system in memory on a folder, for the calling thread alone, while it
/// lives. It takes a superuser and a kernel that lets it.
class MountedMemory
{
public:
    /// `flags` and `options` as mount(2) and tmpfs(5) have them.
    MountedMemory(std::filesystem::path folder, unsigned long flags, const std::string &options);
    ~MountedMemory();
    MountedMemory(const MountedMemory &) = delete;
    MountedMemory &operator=(const MountedMemory &) = delete;

    /// Why there is no such file system; empty when there is.
    const std::string &obstacle() const { return obstacle_; }

private:
    void leaveNamespace() const;

    std::filesystem::path folder_;
    std::filesystem::path workingFolder_;
    std::string obstacle_;
    /// The mounts that the thread saw before.
    int originalNamespace_ = -1;
};

} // namespace test
