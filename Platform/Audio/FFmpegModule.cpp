#include "Platform/Audio/FFmpegReader.hpp"
#include "Platform/Foundation/PlatformError.hpp"

extern "C" {
#include <libavutil/log.h>
}

#include <new>

using platform::audio::AudioFileReader;
using platform::audio::FFmpegReader;

/// The module's one entry; see `OpenAudioFile`.
extern "C" [[gnu::visibility("default")]] void
parvaneOpenAudioFile(const char *path, std::unique_ptr<AudioFileReader> &reader,
                     std::string &error) noexcept
{
    // Faults are told by what is thrown here; FFmpeg's own lines would only
    // confuse the user on standard error.
    av_log_set_level(AV_LOG_QUIET);
    try {
        reader = std::make_unique<FFmpegReader>(path);
    } catch (const std::bad_alloc &) {
        error = "There is not enough memory to read the file";
    } catch (const std::exception &fault) {
        error = fault.what();
    }
}
