#pragma once

#include "Platform/Audio/OutputDevice.hpp"

#include <SDL2/SDL_audio.h>

#include <atomic>

namespace platform::audio
{

/// The system's default output through SDL: PipeWire, PulseAudio or ALSA, or what
/// SDL_AUDIODRIVER names.
class SDLOutputDevice : public OutputDevice
{
public:
    SDLOutputDevice() = default;
    ~SDLOutputDevice() override;

    Obtained open(const AVAudioFormat &wanted) override;
    void run(Source &source) override;
    void close() override;
    bool isAlive() const override;

private:
    static void callback(void *userdata, Uint8 *stream, int bytes);

    SDL_AudioDeviceID device_ = 0;
    std::uint32_t channels_ = 0;
    std::atomic<Source *> source_{nullptr};
};

} // namespace platform::audio
