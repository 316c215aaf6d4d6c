#pragma once

#include <string>
#include <vector>

/// Takes what the process prints to standard output while it lives, so that a
/// test can look at it at any time.
class PrintedLines
{
public:
    PrintedLines();
    ~PrintedLines();
    PrintedLines(const PrintedLines &) = delete;
    PrintedLines &operator=(const PrintedLines &) = delete;

    /// The whole lines so far.
    std::vector<std::string> lines() const;
    bool contains(const std::string &line) const;

private:
    int original_;
    int taken_;
};
