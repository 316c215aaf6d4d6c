#pragma once

#include <chrono>
#include <filesystem>
#include <functional>

#include <sys/types.h>

namespace conformance
{

/// What became of a process.
struct Ending {
    bool isLate = false; ///< it was ended by force
    int signal = 0;      ///< that it died of; 0 when it ended itself
    int code = 0;        ///< that it ended with
};

/// Starts a process that does `work` and ends, and ends with this one. It has all that
/// this process has loaded, which must have one thread alone: a `std::logic_error`
/// otherwise, since the locks that others hold would never be given back.
pid_t fork(const std::function<void()> &work);

/// Does `work` in such a process, in a process group and with a home of its own, what it
/// says going to the file `log`, and waits for its end. After `patience` it is ended by
/// force.
Ending runApart(const std::function<void()> &work, const std::filesystem::path &home,
                const std::filesystem::path &log, std::chrono::seconds patience);

} // namespace conformance
