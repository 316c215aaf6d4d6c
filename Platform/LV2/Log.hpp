#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/MessageRing.hpp"

#include <lv2/log/log.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>

namespace platform::lv2
{

/// What a plug-in has to say (LV2 log), written to standard error under the
/// plug-in's name. Said on the audio callback it is kept until somebody calls
/// `writeOut`.
class Log
{
public:
    /// A log whose lines begin with that name.
    explicit Log(std::string pluginName);
    Log(const Log &) = delete;
    Log &operator=(const Log &) = delete;

    /// Writes what was said on the audio callback. One thread at a time.
    void writeOut();

    /// Says a line under the plug-in's name, on the audio callback kept like those of
    /// the plug-in itself.
    void say(std::string_view line);

    /// What the plug-in is handed; valid as long as this.
    LV2_Log_Log *feature() { return &feature_; }

    /// Marks the calling thread as the audio callback for its lifetime.
    class AudioCallback
    {
    public:
        REALTIME AudioCallback() noexcept;
        REALTIME ~AudioCallback();
        AudioCallback(const AudioCallback &) = delete;
        AudioCallback &operator=(const AudioCallback &) = delete;
    };

private:
    static int print(LV2_Log_Handle handle, LV2_URID type, const char *format, ...);
    int sayFormatted(const char *format, std::va_list arguments);

    std::string name_;
    MessageRing kept_;
    std::atomic<std::uint64_t> lost_{0};
    LV2_Log_Log feature_;
};

} // namespace platform::lv2
