#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The running process. Any thread.
class ProcessInfo
{
public:
    /// The one instance.
    static const ProcessInfo &processInfo();

    /// The executable's file name.
    std::string processName() const;
    /// The process's number, as the system counts them.
    std::int32_t processIdentifier() const;

    /// Text that no other call answers, in this or any process: a random UUID (RFC 4122,
    /// version 4), the process's number and how many were made before, in hexadecimal.
    std::string globallyUniqueString() const;

    /// The folder that holds `bin` and `share` of this program, without a
    /// trailing slash: the root of its installation or of its build tree.
    std::string installationPrefix() const;

    /// Where libraries of this program may lie, without a trailing slash: the
    /// installation's folder for them, then the build tree's, which is always `lib`.
    std::vector<std::string> libraryFolders() const;
};
