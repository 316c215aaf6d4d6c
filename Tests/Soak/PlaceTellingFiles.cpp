#include "Tests/Soak/PlaceTellingFiles.hpp"

#include "Tests/Soak/LoopListener.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace soak
{

namespace
{

void writeFile(const std::filesystem::path &folder, int number)
{
    const auto frames = static_cast<std::size_t>(PlaceTelling::length(number));
    test::Channels channels(2, std::vector<float>(frames, PlaceTelling::right(number)));
    for (std::size_t frame = 0; frame < frames; ++frame)
        channels[0][frame] = PlaceTelling::left(static_cast<std::int64_t>(frame));
    test::writeWave(folder / "place.wav", channels, 48000);
    const std::string command = "cd '" + folder.string() +
                                "' && ffmpeg -v error -nostdin -y -i place.wav -sample_fmt s16p "
                                "-c:a alac " +
                                std::to_string(number) + ".m4a && rm place.wav";
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("ffmpeg does not write the files to be played");
}

} // namespace

void writePlaceTellingFiles(const std::filesystem::path &folder)
{
    const auto path = [&](int number) { return folder / (std::to_string(number) + ".m4a"); };
    for (int number = 1; number <= PlaceTelling::files; ++number)
        writeFile(folder, number);
    for (int number = PlaceTelling::files + 1; number <= names; ++number)
        std::filesystem::create_hard_link(path(number - PlaceTelling::files), path(number));
}

} // namespace soak
