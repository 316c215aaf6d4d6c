#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// How samples lie in memory: 32-bit float between -1 and 1, one buffer a
/// channel. An immutable value, held by `std::shared_ptr` where it is optional.
class AVAudioFormat
{
public:
    /// `sampleRate` in Hz, 1 to 768,000; `channelCount` 1 to 256. Anything else is
    /// a `PlatformError`.
    AVAudioFormat(double sampleRate, std::uint32_t channelCount);

    /// Frames a second, in Hz.
    double sampleRate() const { return sampleRate_; }
    /// How many channels, one buffer each.
    std::uint32_t channelCount() const { return channelCount_; }

    /// For messages: "48000 Hz, 2 channels".
    std::string description() const;

    /// Whether rate and number of channels are the same.
    friend bool operator==(const AVAudioFormat &, const AVAudioFormat &) = default;

private:
    double sampleRate_;
    std::uint32_t channelCount_;
};
