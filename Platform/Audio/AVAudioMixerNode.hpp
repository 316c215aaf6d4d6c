#pragma once

#include "Platform/Audio/AVAudioNode.hpp"

#include <cstdint>

/// Adds up what is connected to it, each input converted to the mixer's output
/// format. Its output format is that of the connection behind it.
class AVAudioMixerNode : public AVAudioNode
{
public:
    std::uint32_t numberOfInputs() const override { return UINT32_MAX; }
    /// One: the sum.
    std::uint32_t numberOfOutputs() const override { return 1; }
    std::string name() const override { return "mixer"; }
};
