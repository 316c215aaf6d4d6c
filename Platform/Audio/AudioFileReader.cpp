#include "Platform/Audio/AudioFileReader.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"

#include <dlfcn.h>

namespace platform::audio
{
namespace
{

/// The module's folder as installed, or else as in the build tree, where the
/// library folder is always called `lib`. The handle is kept for ever: decoders
/// may leave thread-local data behind that points into their libraries.
void *loadModule()
{
    const std::string prefix = ProcessInfo::processInfo().installationPrefix();
    std::string reason;
    for (const char *folder : {PARVANE_LIBRARY_FOLDER, "lib"}) {
        const std::string path = prefix + "/" + folder + "/parvane-host/ffmpeg_reader.so";
        if (void *module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
            return module;
        if (reason.empty())
            reason = dlerror();
    }
    throw PlatformError("The module that reads audio files cannot be loaded: " + reason);
}

OpenAudioFile findOpenAudioFile()
{
    void *symbol = dlsym(loadModule(), openAudioFileSymbol);
    if (symbol == nullptr)
        throw PlatformError("The module that reads audio files is not of this program");
    return reinterpret_cast<OpenAudioFile>(symbol);
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
