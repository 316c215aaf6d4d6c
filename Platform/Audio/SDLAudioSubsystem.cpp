#include "Platform/Audio/SDLAudioSubsystem.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <SDL2/SDL_error.h>
#include <SDL2/SDL_hints.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <future>
#include <string_view>
#include <thread>
#include <utility>

namespace platform::audio
{

namespace
{

// These make no sound; they serve only those who ask for them by name.
constexpr std::array<std::string_view, 2> silentDrivers{"dummy", "disk"};

// A desktop's sound server before the bare device it would have to share.
constexpr std::array<std::string_view, 3> preferredDrivers{"pipewire", "pulseaudio", "alsa"};

// SDL makes a context of PipeWire's for real-time clients and then streams over another,
// made with the usual configuration, whose thread runs as any other. This makes the two
// alike. Before `main`, while nobody else looks at the environment.
[[maybe_unused]] const int pipeWireConfiguration =
    ::setenv("PIPEWIRE_CONFIG_NAME", "client-rt.conf", 0);

template <std::size_t N>
bool contains(const std::array<std::string_view, N> &names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::vector<std::string> driversToTry()
{
    if (const char *const named = SDL_GetHint(SDL_HINT_AUDIODRIVER); named != nullptr && *named)
        return {named};
    std::vector<std::string> present;
    for (int index = 0; index < SDL_GetNumAudioDrivers(); ++index)
        if (!contains(silentDrivers, SDL_GetAudioDriver(index)))
            present.emplace_back(SDL_GetAudioDriver(index));
    std::stable_sort(
        present.begin(), present.end(), [](const std::string &left, const std::string &right) {
            const auto rank = [](const std::string &name) {
                return std::find(preferredDrivers.begin(), preferredDrivers.end(), name) -
                       preferredDrivers.begin();
            };
            return rank(left) < rank(right);
        });
    return present;
}

void setHints()
{
    // SDL's own handlers would swallow SIGTERM and Ctrl+C.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_APP_NAME, "Parvane Host");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Parvane Host");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Demonstration loop");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, "music");
}

/// SDL frees what a block is made with before it stops PipeWire's thread. A paused device
/// needs none of it; a block that has begun by then has this long to end.
constexpr std::chrono::milliseconds lastBlock(2);

void closeQuietly(SDL_AudioDeviceID device, std::string_view driver)
{
    if (driver == "pipewire") {
        SDL_PauseAudioDevice(device, 1);
        std::this_thread::sleep_for(lastBlock);
    }
    SDL_CloseAudioDevice(device);
}

[[noreturn]] void throwNoDriver(const std::string &reason)
{
    throw PlatformError(reason.empty() ? "No audio driver is available" : reason);
}

} // namespace

SDLAudioSubsystem &SDLAudioSubsystem::shared()
{
    static SDLAudioSubsystem subsystem;
    return subsystem;
}

SDLAudioSubsystem::SDLAudioSubsystem()
{
    std::at_quick_exit([] {
        // An effect that hangs in the callback must not keep the program alive.
        std::promise<void> done;
        std::future<void> finished = done.get_future();
        std::thread([done = std::move(done)]() mutable {
            shared().shutDown();
            done.set_value();
        }).detach();
        finished.wait_for(std::chrono::milliseconds(500));
    });
}

void SDLAudioSubsystem::shutDown()
{
    ended_ = true;
    const std::lock_guard lock(mutex_);
    for (const SDL_AudioDeviceID device : devices_)
        closeQuietly(device, driver_);
    devices_.clear();
    if (!driver_.empty())
        SDL_AudioQuit();
}

void SDLAudioSubsystem::acquire()
{
    const std::lock_guard lock(mutex_);
    if (users_ == 0) {
        setHints();
        std::string reason;
        for (const std::string &driver : driversToTry()) {
            if (initialise(driver))
                break;
            reason = SDL_GetError();
        }
        if (driver_.empty())
            throwNoDriver(reason);
    }
    ++users_;
}

void SDLAudioSubsystem::release()
{
    const std::lock_guard lock(mutex_);
    if (--users_ == 0) {
        SDL_AudioQuit();
        driver_.clear();
    }
}

bool SDLAudioSubsystem::initialise(const std::string &driver)
{
    driver_.clear();
    if (SDL_AudioInit(driver.c_str()) != 0)
        return false;
    driver_ = driver;
    return true;
}

SDL_AudioDeviceID SDLAudioSubsystem::openDevice(const SDL_AudioSpec &wanted,
                                                SDL_AudioSpec &obtained)
{
    const std::lock_guard lock(mutex_);
    // The driver in use first, then the others.
    std::vector<std::string> drivers = driversToTry();
    std::stable_partition(drivers.begin(), drivers.end(),
                          [this](const std::string &driver) { return driver == driver_; });
    std::string reason;
    for (const std::string &driver : drivers) {
        if (driver == driver_ || initialise(driver)) {
            // The size of a block is left to the driver as well: what it likes is
            // what it keeps time with.
            const SDL_AudioDeviceID device = SDL_OpenAudioDevice(
                nullptr, 0, &wanted, &obtained,
                SDL_AUDIO_ALLOW_FREQUENCY_CHANGE | SDL_AUDIO_ALLOW_CHANNELS_CHANGE |
                    SDL_AUDIO_ALLOW_SAMPLES_CHANGE);
            if (device != 0) {
                devices_.push_back(device);
                return device;
            }
        }
        if (reason.empty())
            reason = SDL_GetError();
    }
    throwNoDriver(reason);
}

void SDLAudioSubsystem::closeDevice(SDL_AudioDeviceID device)
{
    const std::lock_guard lock(mutex_);
    const auto known = std::find(devices_.begin(), devices_.end(), device);
    if (known == devices_.end())
        return; // the process is ending, and it has been closed already
    devices_.erase(known);
    closeQuietly(device, driver_);
}

} // namespace platform::audio
