// render-loops DIRECTORY: composes, renders and encodes all demonstration loops
// into DIRECTORY as 1.m4a, 2.m4a and so on.

#include "Resources/Demonstration Loops/Composition/Catalogue.hpp"
#include "Resources/Demonstration Loops/Encoding/M4aWriter.hpp"
#include "Resources/Demonstration Loops/Mastering/Master.hpp"
#include "Resources/Demonstration Loops/Mastering/Mixdown.hpp"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

namespace
{

using namespace demonstration_loops;

void renderLoop(std::size_t number, const std::filesystem::path &directory)
{
    const Score score = compose(number);
    StereoLoop loop = mixdown(score, number);
    master(loop);
    // Under its own name only once it is whole: an interrupted build leaves no half file.
    const std::filesystem::path path = directory / (std::to_string(number) + ".m4a");
    const std::filesystem::path unfinished = path.string() + ".part";
    writeM4a(loop, score.title, unfinished.string());
    std::filesystem::rename(unfinished, path);
}

/// Renders all loops on as many threads as the machine has cores; each loop
/// depends on its number alone, so the threads' timing leaves no trace.
bool renderAll(const std::filesystem::path &directory)
{
    std::atomic<std::size_t> next = 1;
    std::atomic<bool> succeeded = true;
    std::mutex output;
    const auto work = [&] {
        for (std::size_t number = next++; number <= loopCount; number = next++) {
            try {
                renderLoop(number, directory);
            } catch (const std::exception &error) {
                succeeded = false;
                const std::lock_guard lock(output);
                std::cerr << "loop " << number << ": " << error.what() << '\n';
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
    return succeeded;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::cerr << "usage: render-loops DIRECTORY\n";
        return EXIT_FAILURE;
    }
    const std::filesystem::path directory = argv[1];
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) {
        std::cerr << directory.string() << ": " << error.message() << '\n';
        return EXIT_FAILURE;
    }
    // The encoder tells its average quantiser at every end; only faults matter here.
    av_log_set_level(AV_LOG_ERROR);
    return renderAll(directory) ? EXIT_SUCCESS : EXIT_FAILURE;
}
