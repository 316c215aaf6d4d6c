#include "Tests/User Interface/PrintedLines.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <sstream>

PrintedLines::PrintedLines()
    : original_(dup(STDOUT_FILENO)), taken_(memfd_create("printed lines", MFD_CLOEXEC))
{
    dup2(taken_, STDOUT_FILENO);
}

PrintedLines::~PrintedLines()
{
    dup2(original_, STDOUT_FILENO);
    close(original_);
    close(taken_);
}

std::vector<std::string> PrintedLines::lines() const
{
    std::string text;
    std::array<char, 4096> part{};
    for (ssize_t count = 0;
         (count = pread(taken_, part.data(), part.size(), static_cast<off_t>(text.size()))) > 0;)
        text.append(part.data(), static_cast<std::size_t>(count));
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line) && !stream.eof();)
        lines.push_back(line);
    return lines;
}

bool PrintedLines::contains(const std::string &line) const
{
    const auto all = lines();
    return std::find(all.begin(), all.end(), line) != all.end();
}
