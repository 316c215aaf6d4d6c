#pragma once

#include <sys/types.h>

namespace platform::interface
{

/// Tries whether the web engine can put a page's process into its sandbox here. Where it
/// cannot, it ends the whole program: kernels may forbid what bubblewrap does, and
/// containers do. A process of some milliseconds, beside what the caller does meanwhile.
class SandboxTrial
{
public:
    /// Begins it.
    SandboxTrial();
    /// Waits for its end.
    ~SandboxTrial();
    SandboxTrial(const SandboxTrial &) = delete;
    SandboxTrial &operator=(const SandboxTrial &) = delete;

    /// How it came out, once it has ended.
    bool succeeds();

private:
    void wait();

    /// 0: none, or none any more.
    pid_t process_ = 0;
    bool succeeds_ = false;
};

} // namespace platform::interface
