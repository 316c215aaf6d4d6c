#include "Tests/Utilities/MountedMemory.hpp"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace test
{

MountedMemory::MountedMemory(std::filesystem::path folder, unsigned long flags,
                             const std::string &options)
    : folder_(std::move(folder)), workingFolder_(std::filesystem::current_path())
{
    const int original = open("/proc/thread-self/ns/mnt", O_RDONLY | O_CLOEXEC);
    if (original < 0 || unshare(CLONE_NEWNS) != 0) {
        obstacle_ = std::string("mounts of its own are refused: ") + std::strerror(errno);
        if (original >= 0)
            close(original);
        return;
    }
    originalNamespace_ = original;
    // Nothing of it reaches the rest of the machine.
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", folder_.c_str(), "tmpfs", flags, options.c_str()) != 0)
        obstacle_ = std::string("mounting is refused: ") + std::strerror(errno);
}

MountedMemory::~MountedMemory()
{
    if (originalNamespace_ < 0)
        return;
    if (obstacle_.empty())
        umount2(folder_.c_str(), MNT_DETACH);
    leaveNamespace();
}

void MountedMemory::leaveNamespace() const
{
    // The kernel puts the thread into the root folder of what it goes back to.
    if (setns(originalNamespace_, CLONE_NEWNS) != 0 || chdir(workingFolder_.c_str()) != 0)
        _exit(1); // no later test could be trusted
    close(originalNamespace_);
}

} // namespace test
