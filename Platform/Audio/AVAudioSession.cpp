#include "Platform/Audio/AVAudioSession.hpp"

#include "Platform/Audio/SDLAudioSubsystem.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <string>

using platform::audio::SDLAudioSubsystem;

AVAudioSession &AVAudioSession::sharedInstance()
{
    static AVAudioSession session;
    return session;
}

void AVAudioSession::setCategory(std::string_view category, std::string_view mode,
                                 std::uint32_t options)
{
    if (category != AVAudioSessionCategoryPlayback)
        throw PlatformError("Unknown audio session category '" + std::string(category) + "'");
    if (mode != AVAudioSessionModeDefault)
        throw PlatformError("Unknown audio session mode '" + std::string(mode) + "'");
    if (options != 0)
        throw PlatformError("Unknown audio session category options");
}

void AVAudioSession::setActive(bool active, std::uint32_t options)
{
    if (options != 0)
        throw PlatformError("Unknown audio session activation options");
    const std::lock_guard lock(mutex_);
    if (active == active_)
        return;
    if (active)
        SDLAudioSubsystem::shared().acquire();
    else
        SDLAudioSubsystem::shared().release();
    active_ = active;
}
