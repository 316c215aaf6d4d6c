#include "Benchmarks/Engine/SoundFile.hpp"

#include <fmt/core.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

SoundFile::SoundFile(int seconds)
    : path_(std::filesystem::temp_directory_path() /
            fmt::format("parvane-{}-{}.m4a", seconds, getpid()))
{
    const std::string command =
        fmt::format("ffmpeg -v error -nostdin -y -f lavfi -i "
                    "\"aevalsrc=exprs='0.3*sin(2*PI*t*(220+40*sin(3*t)))+0.4*(random(0)-0.5)*"
                    "exp(-12*mod(t,0.5))|0.3*sin(2*PI*t*331)+0.1*(random(1)-0.5)':s=48000:d={}\" "
                    "-c:a aac -b:a 128k -movflags +faststart '{}'",
                    seconds, path_);
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("ffmpeg has not made the audio file");
}

SoundFile::~SoundFile()
{
    std::filesystem::remove(path_);
}
