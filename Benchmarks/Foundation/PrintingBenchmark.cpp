// A thousand lines of 80 bytes to a sink: through the main queue, and with a plain
// write. Microseconds are nanoseconds a line.

#include "LoopMain.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Support/DiagnosticPrinting.hpp"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include <fcntl.h>
#include <pty.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

constexpr int lineCount = 1'000;
const std::string text(79, 'x');
const std::string line = text + "\n";

/// What standard output leads to while it lives. The table goes where it went before.
class Sink
{
public:
    virtual ~Sink()
    {
        dup2(original_, STDOUT_FILENO);
        close(original_);
    }
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;

    /// Between two rounds.
    virtual void empty() {}

protected:
    Sink() : original_(dup(STDOUT_FILENO)) {}

    /// Standard output leads to `descriptor`, which is closed.
    static void lead(int descriptor)
    {
        if (descriptor < 0 || dup2(descriptor, STDOUT_FILENO) < 0)
            throw std::runtime_error("standard output cannot be led elsewhere");
        close(descriptor);
    }

private:
    int original_;
};

class Nowhere : public Sink
{
public:
    Nowhere() { lead(open("/dev/null", O_WRONLY | O_CLOEXEC)); }
};

class MemoryFile : public Sink
{
public:
    MemoryFile() { lead(memfd_create("lines", MFD_CLOEXEC)); }
    void empty() override
    {
        if (ftruncate(STDOUT_FILENO, 0) == 0)
            lseek(STDOUT_FILENO, 0, SEEK_SET);
    }
};

/// A terminal whose reader takes all it gets.
class Terminal : public Sink
{
public:
    Terminal()
    {
        int program = -1;
        if (openpty(&screen_, &program, nullptr, nullptr, nullptr) != 0)
            throw std::runtime_error("no terminal");
        lead(program);
        reader_ = std::thread([this] {
            std::string shown(65'536, '\0');
            while (read(screen_, shown.data(), shown.size()) > 0) {
            }
        });
    }
    ~Terminal() override
    {
        // The reader ends with the last writer.
        lead(open("/dev/null", O_WRONLY | O_CLOEXEC));
        reader_.join();
        close(screen_);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

private:
    int screen_ = -1;
    std::thread reader_;
};

void writeLines()
{
    for (int i = 0; i < lineCount; ++i) {
        if (write(STDOUT_FILENO, line.data(), line.size()) < 0)
            std::abort();
    }
}

void printLines()
{
    for (int i = 0; i < lineCount; ++i)
        debugprint(text);
}

void waitUntilPrinted()
{
    std::promise<void> printed;
    DispatchQueue::main().async([&] { printed.set_value(); });
    printed.get_future().wait();
}

template <typename Where>
void plainWrite(benchmark::State &state)
{
    Where sink;
    for (auto _ : state) {
        writeLines();
        state.PauseTiming();
        sink.empty();
        state.ResumeTiming();
    }
}

/// Until the last line is written.
template <typename Where>
void debugPrint(benchmark::State &state)
{
    Where sink;
    for (auto _ : state) {
        printLines();
        waitUntilPrinted();
        state.PauseTiming();
        sink.empty();
        state.ResumeTiming();
    }
}

/// What the caller spends until it may go on.
template <typename Where>
void debugPrintCaller(benchmark::State &state)
{
    Where sink;
    for (auto _ : state) {
        printLines();
        state.PauseTiming();
        waitUntilPrinted();
        sink.empty();
        state.ResumeTiming();
    }
}

// Much of a round lies outside the timing of the caller, so little of it is enough.
#define MEASURE(where)                                                                             \
    BENCHMARK_TEMPLATE(plainWrite, where)->Unit(benchmark::kMicrosecond)->UseRealTime();           \
    BENCHMARK_TEMPLATE(debugPrint, where)->Unit(benchmark::kMicrosecond)->UseRealTime();           \
    BENCHMARK_TEMPLATE(debugPrintCaller, where)                                                    \
        ->Unit(benchmark::kMicrosecond)                                                            \
        ->UseRealTime()                                                                            \
        ->MinTime(0.02)

MEASURE(Nowhere);
MEASURE(MemoryFile);
MEASURE(Terminal);

} // namespace

int main(int argc, char **argv)
{
    return runBenchmarksBesideTheLoop(argc, argv);
}
