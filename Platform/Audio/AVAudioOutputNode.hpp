#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Audio/AVAudioNode.hpp"
#include "Platform/Foundation/Shared.hpp"

#include <memory>

namespace platform::audio
{
class EngineCore;
}

/// The end of the graph: the device, or the buffer of manual rendering.
class AVAudioOutputNode : public AVAudioNode
{
public:
    /// What the device takes: 48 kHz stereo until one has been opened, then what
    /// was obtained; in manual rendering what was asked for. There is one bus, 0;
    /// another number is a fatal error. Any thread.
    std::shared_ptr<AVAudioFormat> outputFormat(std::uint32_t forBus) const;

    std::uint32_t numberOfInputs() const override { return 1; }
    /// None: the graph ends here.
    std::uint32_t numberOfOutputs() const override { return 0; }
    std::string name() const override { return "output"; }

private:
    friend class platform::audio::EngineCore;
    void setOutputFormat(const AVAudioFormat &format);

    Shared<std::shared_ptr<AVAudioFormat>> format_{std::make_shared<AVAudioFormat>(48000.0, 2U)};
};
