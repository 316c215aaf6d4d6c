#include "Platform/Effect Process/ChildProcess.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform::effect
{

namespace
{

// The C library's own declarations are of C alone in some of its versions.
int openProcess(pid_t identifier)
{
    return static_cast<int>(::syscall(SYS_pidfd_open, identifier, 0));
}

void signalProcess(int descriptor, int signal)
{
    ::syscall(SYS_pidfd_send_signal, descriptor, signal, nullptr, 0);
}

/// What the child is to have open.
class FileActions
{
public:
    explicit FileActions(int socket)
    {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_adddup2(&actions_, socket, ChildProcess::socketNumber);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, STDERR_FILENO, STDOUT_FILENO);
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, ChildProcess::socketNumber + 1);
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;

    const posix_spawn_file_actions_t *get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// A process group of its own, and no signal blocked or ignored.
class SpawnAttributes
{
public:
    SpawnAttributes()
    {
        sigset_t signals;
        ::posix_spawnattr_init(&attributes_);
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        ::posix_spawnattr_setpgroup(&attributes_, 0);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                     POSIX_SPAWN_SETPGROUP);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes &) = delete;
    SpawnAttributes &operator=(const SpawnAttributes &) = delete;

    const posix_spawnattr_t *get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

} // namespace

ChildProcess::ChildProcess(const std::string &executable, FileDescriptor socket)
{
    const FileActions actions(socket.get());
    const SpawnAttributes attributes;
    std::string name = executable;
    const std::array<char *, 2> arguments{name.data(), nullptr};
    int error = ::posix_spawn(&identifier_, executable.c_str(), actions.get(), attributes.get(),
                              arguments.data(), environ);
    if (error == 0) {
        // Nobody else reaps our children, so the number still means this one.
        descriptor_ = FileDescriptor(openProcess(identifier_));
        if (descriptor_)
            return;
        error = errno;
        ::kill(identifier_, SIGKILL);
        ::waitpid(identifier_, nullptr, 0);
    }
    identifier_ = -1;
    throw PlatformError("The program '" + executable +
                        "' cannot be started: " + std::generic_category().message(error));
}

ChildProcess::~ChildProcess()
{
    if (identifier_ < 0)
        return;
    kill();
    reap();
}

void ChildProcess::kill() noexcept
{
    // The group holds what the plug-in started; it may be gone, or not made yet.
    if (descriptor_ && identifier_ > 0) {
        ::kill(-identifier_, SIGKILL);
        signalProcess(descriptor_.get(), SIGKILL);
    }
}

std::string ChildProcess::reap()
{
    // Before the number is free for others.
    siginfo_t end{};
    while (::waitid(P_PIDFD, static_cast<id_t>(descriptor_.get()), &end, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {
    }
    ::kill(-identifier_, SIGKILL);
    ::waitid(P_PIDFD, static_cast<id_t>(descriptor_.get()), &end, WEXITED);
    identifier_ = -1;
    descriptor_.reset();
    if (end.si_code == CLD_EXITED)
        return "exit code " + std::to_string(end.si_status);
    const char *name = ::sigabbrev_np(end.si_status);
    return name ? std::string("SIG") + name : "signal " + std::to_string(end.si_status);
}

} // namespace platform::effect
