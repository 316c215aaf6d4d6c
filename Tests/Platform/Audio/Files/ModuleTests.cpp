#include "Tests/Platform/Audio/Files/AudioFiles.hpp"
#include "Tests/Utilities/Places.hpp"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>

namespace
{

namespace filesystem = std::filesystem;

std::string outputOf(const std::string &command)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    std::array<char, 256> bytes = {};
    while (std::fgets(bytes.data(), bytes.size(), pipe.get()) != nullptr)
        output += bytes.data();
    return output;
}

TEST_F(AudioFiles, OpenOnManyThreadsFromTheFirstUseOn)
{
    encode("sound.m4a", 44'100, 1, 5'000, "-c:a aac");
    std::array<std::int64_t, 8> lengths = {};
    std::vector<std::thread> threads;
    threads.reserve(lengths.size());
    for (std::int64_t &length : lengths)
        threads.emplace_back([this, &length] {
            AVAudioFile file(url("sound.m4a"));
            readAll(file);
            length = file.framePosition();
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const std::int64_t length : lengths)
        EXPECT_EQ(length, 5'000);
}

TEST_F(AudioFiles, AreFoundFromAnInstallationAnywhere)
{
    encode("sound.wav", 44'100, 1, 100, "-c:a pcm_s16le");
    filesystem::create_directories(path("bin"));
    filesystem::copy(test::buildPath(OPEN_FILE), path("bin"));
    const std::string command = path("bin/open-file") + " " + path("sound.wav") + " 2>&1";
    const std::string error = outputOf(command);
    EXPECT_EQ(error.find("The module that reads audio files cannot be loaded: "), 0U) << error;
    EXPECT_NE(error.find(path("")), std::string::npos) << error;

    filesystem::create_directories(path("lib"));
    filesystem::copy(test::buildPath("lib/parvane-host"), path("lib/parvane-host"),
                     filesystem::copy_options::recursive);
    EXPECT_EQ(outputOf(command), "100\n");
}

} // namespace
