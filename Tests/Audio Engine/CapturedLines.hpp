#pragma once

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <array>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

/// Takes what goes to standard output, by whatever way, while it lives.
class CapturedLines
{
public:
    CapturedLines() : captured_(memfd_create("stdout", MFD_CLOEXEC)), original_(dup(STDOUT_FILENO))
    {
        if (captured_ < 0 || original_ < 0 || dup2(captured_, STDOUT_FILENO) < 0)
            throw std::runtime_error("standard output cannot be captured");
    }
    ~CapturedLines()
    {
        dup2(original_, STDOUT_FILENO);
        close(original_);
        close(captured_);
    }
    CapturedLines(const CapturedLines &) = delete;
    CapturedLines &operator=(const CapturedLines &) = delete;

    /// The whole lines so far.
    std::vector<std::string> lines() const
    {
        std::vector<std::string> result(1);
        std::array<char, 4096> buffer{};
        off_t offset = 0;
        for (ssize_t count = 0;
             (count = pread(captured_, buffer.data(), buffer.size(), offset)) > 0;
             offset += count) {
            for (ssize_t i = 0; i < count; ++i) {
                const char c = buffer.at(static_cast<std::size_t>(i));
                if (c == '\n')
                    result.emplace_back();
                else
                    result.back().push_back(c);
            }
        }
        result.pop_back();
        return result;
    }

private:
    int captured_;
    int original_;
};

/// Runs what the main queue has been given so far.
inline void drainMainQueue()
{
    bool drained = false;
    DispatchQueue::main().async([&] { drained = true; });
    RunLoop::main().runUntil([&] { return drained; }, 60);
}

/// The lines that `action` writes before it returns.
inline std::vector<std::string> linesOf(const std::function<void()> &action)
{
    const CapturedLines captured;
    action();
    return captured.lines();
}

/// The lines that the main queue's waiting tasks write.
inline std::vector<std::string> linesOfMainQueue()
{
    return linesOf(drainMainQueue);
}
