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
    /// 10.7 ms at 48 kHz: short enough for a button to feel immediate, long enough for
    /// a desktop under load.
    static constexpr std::uint16_t usualFrames = 512;

    /// A device that asks for `framesPerBlock` frames at a time, or as many as the
    /// driver makes of that.
    explicit SDLOutputDevice(std::uint16_t framesPerBlock = usualFrames)
        : framesPerBlock_(framesPerBlock)
    {
    }
    ~SDLOutputDevice() override;

    Obtained open(const AVAudioFormat &wanted) override;
    void run(Source &source) override;
    void close() override;
    bool isAlive() const override;

private:
    static void callback(void *userdata, Uint8 *stream, int bytes);

    const std::uint16_t framesPerBlock_;
    SDL_AudioDeviceID device_ = 0;
    std::uint32_t channels_ = 0;
    std::atomic<Source *> source_{nullptr};
};

} // namespace platform::audio
