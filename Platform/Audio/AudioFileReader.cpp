#include "Platform/Audio/AudioFileReader.hpp"

#include "Platform/Foundation/Module.hpp"
#include "Platform/Foundation/PlatformError.hpp"

namespace platform::audio
{
namespace
{

OpenAudioFile findOpenAudioFile()
{
    return reinterpret_cast<OpenAudioFile>(
        foundation::moduleSymbol("ffmpeg_reader.so", openAudioFileSymbol, "reads audio files"));
}

} // namespace

std::unique_ptr<AudioFileReader> AudioFileReader::open(const std::string &path)
{
    // Initialised by one thread while others wait; tried again after a failure.
    static const OpenAudioFile openAudioFile = findOpenAudioFile();

    std::unique_ptr<AudioFileReader> reader;
    std::string error;
    openAudioFile(path.c_str(), reader, error);
    if (!reader)
        throw PlatformError(error);
    return reader;
}

} // namespace platform::audio
