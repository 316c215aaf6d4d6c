#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// Takes what this process and those that it starts write to standard error, while
/// it lives, and notes when each line came. Shown after all when the test fails.
class ErrorLines
{
public:
    using Clock = std::chrono::steady_clock;

    struct Line {
        std::string text;
        Clock::time_point moment;
    };

    ErrorLines();
    ~ErrorLines();
    ErrorLines(const ErrorLines &) = delete;
    ErrorLines &operator=(const ErrorLines &) = delete;

    /// The lines so far in which `part` stands.
    std::vector<Line> with(const std::string &part) const;
    /// The first of them from number `number` on, once it is there; none when it does
    /// not come.
    std::optional<Line> waitFor(const std::string &part, std::size_t number = 0) const;

private:
    void read();
    void take(const std::string &bytes);
    std::vector<Line> find(const std::string &part) const;

    int original_;
    int readingEnd_ = -1;
    int stop_;
    mutable std::mutex mutex_;
    mutable std::condition_variable came_;
    std::string incomplete_;
    std::vector<Line> lines_;
    std::thread reader_;
};
