#include "ErrorLines.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

ErrorLines::ErrorLines()
    : original_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)), stop_(::eventfd(0, EFD_CLOEXEC))
{
    std::array<int, 2> ends{};
    if (original_ < 0 || stop_ < 0 || ::pipe2(ends.data(), O_CLOEXEC) != 0 ||
        ::dup2(ends[1], STDERR_FILENO) < 0)
        throw std::runtime_error("standard error cannot be taken");
    ::close(ends[1]);
    readingEnd_ = ends[0];
    reader_ = std::thread([this] { read(); });
}

ErrorLines::~ErrorLines()
{
    ::dup2(original_, STDERR_FILENO);
    ::eventfd_write(stop_, 1);
    reader_.join();
    ::close(original_);
    ::close(readingEnd_);
    ::close(stop_);
    if (testing::Test::HasFailure())
        for (const Line &line : lines_)
            std::cerr << "standard error: " << line.text << "\n";
}

void ErrorLines::read()
{
    std::array<char, 4096> part{};
    for (;;) {
        std::array<pollfd, 2> news{{{readingEnd_, POLLIN, 0}, {stop_, POLLIN, 0}}};
        ::poll(news.data(), news.size(), -1);
        if ((news[0].revents & POLLIN) != 0) {
            const ssize_t count = ::read(readingEnd_, part.data(), part.size());
            if (count > 0)
                take(std::string(part.data(), static_cast<std::size_t>(count)));
        } else if (news[1].revents != 0) {
            return;
        }
    }
}

void ErrorLines::take(const std::string &bytes)
{
    const std::lock_guard lock(mutex_);
    incomplete_ += bytes;
    for (std::size_t end = 0; (end = incomplete_.find('\n')) != std::string::npos;) {
        lines_.push_back({incomplete_.substr(0, end), Clock::now()});
        incomplete_.erase(0, end + 1);
    }
    came_.notify_all();
}

std::vector<ErrorLines::Line> ErrorLines::with(const std::string &part) const
{
    const std::lock_guard lock(mutex_);
    return find(part);
}

std::optional<ErrorLines::Line> ErrorLines::waitFor(const std::string &part,
                                                    std::size_t number) const
{
    std::unique_lock lock(mutex_);
    if (!came_.wait_for(lock, std::chrono::seconds(30), [&] { return find(part).size() > number; }))
        return std::nullopt;
    return find(part)[number];
}

std::vector<ErrorLines::Line> ErrorLines::find(const std::string &part) const
{
    std::vector<Line> found;
    std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(found),
                 [&](const Line &line) { return line.text.find(part) != std::string::npos; });
    return found;
}
