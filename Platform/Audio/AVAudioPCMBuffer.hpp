#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Frames of audio in memory, one run of samples a channel. Not for sharing
/// between threads without agreement.
class AVAudioPCMBuffer
{
public:
    /// Zeroed room for `frameCapacity` frames; `frameLength` starts at 0.
    AVAudioPCMBuffer(const AVAudioFormat &format, std::uint32_t frameCapacity);
    AVAudioPCMBuffer(const AVAudioPCMBuffer &) = delete;
    AVAudioPCMBuffer &operator=(const AVAudioPCMBuffer &) = delete;

    /// What rate the samples have, and how many channels there are.
    const AVAudioFormat &format() const { return format_; }
    /// How many frames there is room for.
    std::uint32_t frameCapacity() const { return frameCapacity_; }

    /// How many frames hold audio.
    std::uint32_t frameLength() const { return frameLength_; }
    /// At most `frameCapacity`; more is a fatal error.
    void setFrameLength(std::uint32_t frames);

    /// One pointer a channel, each to `frameCapacity` samples that start on a
    /// 64-byte boundary.
    float *const *floatChannelData() { return channels_.data(); }
    /// The same for reading.
    const float *const *floatChannelData() const { return channels_.data(); }

private:
    AVAudioFormat format_;
    std::uint32_t frameCapacity_;
    std::uint32_t frameLength_ = 0;
    std::vector<float> samples_;
    std::vector<float *> channels_;
};
