#include "Support/DiagnosticPrinting.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/PrintedLines.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

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

TEST_F(DiagnosticPrintingTest, KeepsTheOrderOfEachThreadsLines)
{
    constexpr int threadCount = 4;
    constexpr int linesEach = 200;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (int i = 0; i < linesEach; ++i) {
                const std::string line = std::to_string(thread) + " " + std::to_string(i);
                i % 2 == 0 ? debugprint(line) : safeprint(line);
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    std::istringstream lines(written());
    std::vector<int> next(threadCount);
    int thread = 0;
    for (int i = 0; lines >> thread >> i;)
        EXPECT_EQ(i, next.at(static_cast<std::size_t>(thread))++);
    EXPECT_EQ(next, std::vector<int>(threadCount, linesEach));
}

} // namespace
