#pragma once

#include <functional>
#include <string>
#include <vector>

namespace test
{

/// Takes what the process writes to standard output, in whatever way, while it
/// lives, so that a test can look at it at any time. When the test has failed, what
/// it printed, GoogleTest's words among it, is shown after all.
class PrintedLines
{
public:
    PrintedLines();
    ~PrintedLines();
    PrintedLines(const PrintedLines &) = delete;
    PrintedLines &operator=(const PrintedLines &) = delete;

    /// All of it so far.
    std::string text() const;
    /// The whole lines so far.
    std::vector<std::string> lines() const;
    bool contains(const std::string &line) const;

private:
    int taken_;
    int original_;
};

/// The lines that `action` writes before it returns.
std::vector<std::string> linesOf(const std::function<void()> &action);

} // namespace test
