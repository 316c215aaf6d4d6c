#include "Support/DiagnosticPrinting.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/PrintedLines.hpp"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace
{

using namespace std::string_literals;

class DiagnosticPrintingTest : public ::testing::Test
{
protected:
    /// What was written up to the task that this submits.
    std::string written() const
    {
        test::drainMainQueue();
        return printed.text();
    }

    test::PrintedLines printed;
};

TEST_F(DiagnosticPrintingTest, WritesTheTextExactlyAndANewline)
{
    debugprint("a line");
    safeprint("  %s \"two\"\nlines\t");
    debugprint("");
    safeprint("");
    EXPECT_EQ(written(), "a line\n  %s \"two\"\nlines\t\n\n\n");
}

TEST_F(DiagnosticPrintingTest, KeepsNULsAndNewlines)
{
    debugprint("a\0b\nc"s);
    safeprint("\0"s);
    debugprint("\n\n");
    EXPECT_EQ(written(), "a\0b\nc\n\0\n\n\n\n"s);
}

TEST_F(DiagnosticPrintingTest, WritesALineOfAnyLengthInOnePiece)
{
    const std::string text(3'000'000, 'x');
    debugprint(text);
    EXPECT_EQ(written(), text + "\n");
}

TEST_F(DiagnosticPrintingTest, ComesAfterWhatTheSameTaskPrints)
{
    DispatchQueue::main().async([] {
        debugprint("second");
        print("first");
    });
    test::drainMainQueue();
    EXPECT_EQ(written(), "first\nsecond\n");
}

TEST_F(DiagnosticPrintingTest, PrintsNothingBeforeTheMainQueueRuns)
{
    safeprint("late");
    EXPECT_EQ(printed.text(), "");
    EXPECT_EQ(written(), "late\n");
}

TEST_F(DiagnosticPrintingTest, KeepsItsOwnCopyOfTheText)
{
    {
        std::string text(1000, 'x');
        safeprint(text);
        text.assign(1000, 'y');
    }
    EXPECT_EQ(written(), std::string(1000, 'x') + "\n");
}

/// The line `number` of a thread: its end tells whether it is whole.
std::string lineOf(int thread, int number)
{
    const std::string numbers = std::to_string(thread) + " " + std::to_string(number);
    return numbers + " " + std::string(static_cast<std::size_t>(number % 40), '.') + " " + numbers;
}

TEST_F(DiagnosticPrintingTest, KeepsTheLinesOfSixteenThreadsWholeAndEachOnesInOrder)
{
    constexpr int threadCount = 16;
    constexpr int linesEach = 10'000;
    std::atomic<int> threadsDone = 0;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&threadsDone, thread] {
            for (int i = 0; i < linesEach; ++i)
                i % 2 == 0 ? debugprint(lineOf(thread, i)) : safeprint(lineOf(thread, i));
            ++threadsDone;
        });
    }
    // The main thread prints while they submit.
    EXPECT_TRUE(test::serveMainThreadUntil([&] { return threadsDone == threadCount; }));
    for (auto &thread : threads)
        thread.join();
    std::istringstream lines(written());
    std::vector<int> next(threadCount);
    std::string line;
    while (std::getline(lines, line)) {
        const int thread = std::stoi(line);
        ASSERT_EQ(line, lineOf(thread, next.at(static_cast<std::size_t>(thread))++));
    }
    EXPECT_EQ(next, std::vector<int>(threadCount, linesEach));
}

/// Standard output as a pipe that nobody has read from yet.
class UnreadOutput
{
public:
    UnreadOutput() : original_(dup(STDOUT_FILENO))
    {
        if (pipe2(ends_.data(), O_CLOEXEC) != 0 || dup2(ends_[1], STDOUT_FILENO) < 0)
            throw std::runtime_error("standard output cannot be taken");
        close(ends_[1]);
    }
    ~UnreadOutput()
    {
        dup2(original_, STDOUT_FILENO);
        close(original_);
        close(ends_[0]);
    }
    UnreadOutput(const UnreadOutput &) = delete;
    UnreadOutput &operator=(const UnreadOutput &) = delete;

    /// Reads `count` bytes, waiting for them.
    std::string read(std::size_t count) const
    {
        std::string text(count, '\0');
        for (std::size_t got = 0; got < count;) {
            const ssize_t part = ::read(ends_[0], &text[got], count - got);
            if (part <= 0)
                return text.substr(0, got);
            got += static_cast<std::size_t>(part);
        }
        return text;
    }

private:
    std::array<int, 2> ends_{};
    int original_;
};

TEST(DiagnosticPrinting, TheCallerNeverWaitsForTheReader)
{
    // More than a pipe holds: the main thread gets stuck in it, the caller does not.
    constexpr int lineCount = 5'000;
    const std::string text(99, 'x');
    const UnreadOutput output;
    std::string received;
    std::atomic<bool> done = false;
    std::thread other([&] {
        for (int i = 0; i < lineCount; ++i)
            i % 2 == 0 ? debugprint(text) : safeprint(text);
        received = output.read(lineCount * (text.size() + 1));
        done = true;
    });
    EXPECT_TRUE(test::serveMainThreadUntil([&] { return done.load(); }));
    other.join();
    ASSERT_EQ(received.size(), lineCount * (text.size() + 1));
    for (std::size_t i = 0; i < lineCount; ++i)
        ASSERT_EQ(received.substr(i * 100, 100), text + "\n");
}

} // namespace
