#pragma once

#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace bench
{

/// A program that was started to be looked at from outside. Ends with this object.
class ObservedProgram
{
public:
    using Variables = std::vector<std::pair<std::string, std::string>>;

    /// Starts `command`, whose first word is the file, with some variables of the
    /// environment changed. What it prints goes to a file in `folder`.
    ObservedProgram(const std::vector<std::string> &command, const Variables &variables,
                    const std::string &folder);
    ~ObservedProgram();
    ObservedProgram(const ObservedProgram &) = delete;
    ObservedProgram &operator=(const ObservedProgram &) = delete;

    pid_t process() const { return process_; }
    /// Waits until it has printed `text`; a `std::runtime_error` when it does not.
    void waitFor(const std::string &text) const;

private:
    pid_t process_;
    std::string output_;
};

/// The processor time in seconds that a process's main thread has used.
double mainThreadTime(pid_t process);

/// The process called `name` that `parent` has started; a `std::runtime_error`
/// without.
pid_t childOf(pid_t parent, const std::string &name);

/// A folder for the time of a measurement.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    const std::string &path() const { return path_; }

private:
    std::string path_;
};

} // namespace bench
