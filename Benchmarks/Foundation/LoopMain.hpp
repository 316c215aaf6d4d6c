#pragma once

/// Runs the benchmarks on a thread of their own while the main thread serves the
/// main run loop, as it does in a program. Answers the exit status.
int runBenchmarksBesideTheLoop(int argc, char **argv);
