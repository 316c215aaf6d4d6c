#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

/// What this process holds of the system, in words that can be compared.
struct ProcessCensus {
    /// Sorted names of what is open, without their numbers.
    std::vector<std::string> descriptors;
    /// Memory shared with an effect.
    std::size_t links = 0;
    std::vector<pid_t> children;
    /// Of the threads that are there for an effect.
    std::vector<std::string> effectThreads;

    bool operator==(const ProcessCensus &) const = default;

    static ProcessCensus now();
};

/// What the process has open, by number: where each link of /proc/PID/fd leads.
std::vector<std::pair<int, std::string>> openDescriptors(pid_t process);

/// Sends a signal to a process, or with `group` to all of its group; to nobody when
/// `process` is none, which the system would take for everybody.
void sendSignal(pid_t process, int signal, bool group = false);

std::ostream &operator<<(std::ostream &stream, const ProcessCensus &census);
