#pragma once

#include <SDL2/SDL_audio.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace platform::audio
{

/// SDL's audio subsystem, up as long as somebody uses it. Any thread.
///
/// SDL takes the first driver that initialises even when that cannot open a
/// device, so the drivers are walked here: the one the user names in
/// SDL_AUDIODRIVER alone, else the real ones, sound servers first. A process that
/// ends by `std::quick_exit` gives its devices back.
class SDLAudioSubsystem
{
public:
    static SDLAudioSubsystem &shared();

    /// Brings the subsystem up for one more user. A `PlatformError` when no
    /// driver initialises.
    void acquire();
    void release();

    /// Opens the default device on the first driver that can. The subsystem must
    /// have been acquired. A `PlatformError` in SDL's words when none can.
    SDL_AudioDeviceID openDevice(const SDL_AudioSpec &wanted, SDL_AudioSpec &obtained);

    /// Returns when the device's callback does not run any more.
    void closeDevice(SDL_AudioDeviceID device);

    /// True once the process is ending and has given its devices back.
    bool hasEnded() const { return ended_.load(); }

private:
    SDLAudioSubsystem();
    bool initialise(const std::string &driver);
    void shutDown();

    std::atomic<bool> ended_{false};
    std::mutex mutex_;
    int users_ = 0;
    std::string driver_; // in use; empty when down
    std::vector<SDL_AudioDeviceID> devices_;
};

} // namespace platform::audio
