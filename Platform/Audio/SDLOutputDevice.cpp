#include "Platform/Audio/SDLOutputDevice.hpp"

#include "Platform/Audio/SDLAudioSubsystem.hpp"
#include "Platform/Foundation/ThreadPriority.hpp"

namespace platform::audio
{

SDLOutputDevice::~SDLOutputDevice()
{
    SDLOutputDevice::close();
}

OutputDevice::Obtained SDLOutputDevice::open(const AVAudioFormat &wanted)
{
    close();
    SDL_AudioSpec spec{};
    spec.freq = static_cast<int>(wanted.sampleRate());
    spec.format = AUDIO_F32SYS;
    spec.channels = static_cast<Uint8>(wanted.channelCount());
    spec.samples = framesPerBlock_;
    spec.callback = &SDLOutputDevice::callback;
    spec.userdata = this;
    SDL_AudioSpec obtained{};
    SDLAudioSubsystem::shared().acquire();
    try {
        device_ = SDLAudioSubsystem::shared().openDevice(spec, obtained);
    } catch (...) {
        SDLAudioSubsystem::shared().release();
        throw;
    }
    channels_ = obtained.channels;
    return {AVAudioFormat(obtained.freq, obtained.channels), obtained.samples};
}

void SDLOutputDevice::run(Source &source)
{
    source_ = &source;
    SDL_PauseAudioDevice(device_, 0);
}

void SDLOutputDevice::close()
{
    if (device_ == 0)
        return;
    SDLAudioSubsystem::shared().closeDevice(device_);
    device_ = 0;
    source_ = nullptr;
    SDLAudioSubsystem::shared().release();
}

bool SDLOutputDevice::isAlive() const
{
    // At the end of the process it is closed without the engine's doing.
    return SDLAudioSubsystem::shared().hasEnded() ||
           (device_ != 0 && SDL_GetAudioDeviceStatus(device_) != SDL_AUDIO_STOPPED);
}

void SDLOutputDevice::callback(void *userdata, Uint8 *stream, int bytes)
{
    auto &device = *static_cast<SDLOutputDevice *>(userdata);
    // With some drivers SDL leaves its thread as any other. Effects follow. Once.
    if (foundation::threadPriority() == 0) {
        foundation::claimRealtimePriority();
        foundation::learnThreadPriority();
    }
    const std::uint32_t channels = device.channels_;
    const std::size_t samples = static_cast<std::uint32_t>(bytes) / sizeof(float);
    // SDL aligns the buffer for any sample format.
    device.source_.load()->renderInterleaved(reinterpret_cast<float *>(stream),
                                             static_cast<std::uint32_t>(samples / channels),
                                             channels);
}

} // namespace platform::audio
