#pragma once

#include <cstdint>
#include <mutex>
#include <string_view>

/// The names that the session knows.
inline constexpr std::string_view AVAudioSessionCategoryPlayback = "AVAudioSessionCategoryPlayback";
inline constexpr std::string_view AVAudioSessionModeDefault = "AVAudioSessionModeDefault";

/// The program's claim on the system's audio. Any thread.
class AVAudioSession
{
public:
    /// The one instance.
    static AVAudioSession &sharedInstance();

    /// What the program does with audio. A category or mode the session does not
    /// know, or options other than 0, are a `PlatformError`.
    void setCategory(std::string_view category, std::string_view mode, std::uint32_t options);

    /// Brings the audio subsystem up or down. A `PlatformError` in the driver's
    /// own words when the system has no audio driver. Without effect when the
    /// session is in that state already.
    void setActive(bool active, std::uint32_t options);

private:
    AVAudioSession() = default;

    std::mutex mutex_;
    bool active_ = false;
};
