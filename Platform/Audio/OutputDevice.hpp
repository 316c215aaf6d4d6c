#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <cstdint>

namespace platform::audio
{

/// Where audio goes to be heard. Control operations are called by one thread at
/// a time.
class OutputDevice
{
public:
    /// Who provides the audio.
    class Source
    {
    public:
        virtual ~Source() = default;
        /// Fills `frames` frames of `channels` interleaved channels, on the device's
        /// thread.
        REALTIME virtual void renderInterleaved(float *samples, std::uint32_t frames,
                                                std::uint32_t channels) noexcept = 0;
    };

    struct Obtained {
        AVAudioFormat format;
        std::uint32_t framesPerBlock; // usual; a single block may be larger
    };

    virtual ~OutputDevice() = default;

    /// Opens the system's default device, silent so far, as near to `wanted` as it
    /// can. A `PlatformError` in the driver's words when none opens.
    virtual Obtained open(const AVAudioFormat &wanted) = 0;

    /// From now on `source` is asked for audio, until `close`.
    virtual void run(Source &source) = 0;

    /// Returns when the source is not asked any more. Also when not open.
    virtual void close() = 0;

    /// False once an open device has gone away.
    virtual bool isAlive() const = 0;
};

} // namespace platform::audio
