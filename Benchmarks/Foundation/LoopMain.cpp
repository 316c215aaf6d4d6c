#include "LoopMain.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <benchmark/benchmark.h>

#include <thread>

int runBenchmarksBesideTheLoop(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    std::thread runner([] {
        benchmark::RunSpecifiedBenchmarks();
        DispatchQueue::main().async([] { RunLoop::main().stop(); });
    });
    RunLoop::main().run();
    runner.join();
    return 0;
}
