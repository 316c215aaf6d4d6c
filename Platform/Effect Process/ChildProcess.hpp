#pragma once

#include "Platform/Effect Process/FileDescriptor.hpp"

#include <string>

#include <sys/types.h>

namespace platform::effect
{

/// A process of another program, with one socket as all that it inherits: standard
/// input is empty, and its output goes to our standard error, since standard output
/// is the application's. It is in a process group of its own, so that Ctrl+C means
/// the host alone.
class ChildProcess
{
public:
    /// The number under which the child finds its socket.
    static constexpr int socketNumber = 3;

    /// Starts `executable`. A `PlatformError` when that cannot be.
    ChildProcess(const std::string &executable, FileDescriptor socket);
    /// Kills it, unless it has ended, and gives back what it held.
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    /// Readable as soon as the process has ended.
    int descriptor() const { return descriptor_.get(); }

    /// The process and, since it leads one, its process group.
    pid_t identifier() const { return identifier_; }

    /// Kills it and all that it started, unless it has been reaped. Not while it is.
    void kill() noexcept;

    /// Waits for its end and answers in words how it came: "SIGSEGV", "exit code 3".
    /// Once.
    std::string reap();

private:
    pid_t identifier_ = -1;
    FileDescriptor descriptor_;
};

} // namespace platform::effect
