#include "Tests/Utilities/PrintedLines.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace test
{

PrintedLines::PrintedLines()
    : taken_(memfd_create("printed lines", MFD_CLOEXEC)), original_(dup(STDOUT_FILENO))
{
    // Appended, lines of two threads do not overwrite each other: memory has no lock on
    // where to write next, as a file has.
    if (taken_ < 0 || original_ < 0 || fcntl(taken_, F_SETFL, O_APPEND) < 0 ||
        dup2(taken_, STDOUT_FILENO) < 0)
        throw std::runtime_error("standard output cannot be taken");
}

PrintedLines::~PrintedLines()
{
    dup2(original_, STDOUT_FILENO);
    if (testing::Test::HasFailure()) {
        std::fputs(text().c_str(), stdout);
        std::fflush(stdout);
    }
    close(original_);
    close(taken_);
}

std::string PrintedLines::text() const
{
    std::string text;
    std::array<char, 4096> part{};
    for (ssize_t count = 0;
         (count = pread(taken_, part.data(), part.size(), static_cast<off_t>(text.size()))) > 0;)
        text.append(part.data(), static_cast<std::size_t>(count));
    return text;
}

std::vector<std::string> PrintedLines::lines() const
{
    std::vector<std::string> lines;
    std::istringstream stream(text());
    // What has no end yet is no whole line.
    for (std::string line; std::getline(stream, line) && !stream.eof();)
        lines.push_back(line);
    return lines;
}

bool PrintedLines::contains(const std::string &line) const
{
    const auto all = lines();
    return std::find(all.begin(), all.end(), line) != all.end();
}

std::vector<std::string> linesOf(const std::function<void()> &action)
{
    const PrintedLines printed;
    action();
    return printed.lines();
}

} // namespace test
