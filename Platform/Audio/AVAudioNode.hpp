#pragma once

#include <cstdint>
#include <memory>
#include <string>

class AVAudioFormat;
class AVAudioEngine;

/// Something in an engine's graph. What a node does when audio is rendered is
/// known to the engine's render plan; the node itself is the handle that
/// connections are made with. Any thread.
class AVAudioNode : public std::enable_shared_from_this<AVAudioNode>
{
public:
    virtual ~AVAudioNode() = default;
    AVAudioNode(const AVAudioNode &) = delete;
    AVAudioNode &operator=(const AVAudioNode &) = delete;

    /// How many busses the node can take input on: 0 for a source; a mixer has as
    /// many as are connected to it.
    virtual std::uint32_t numberOfInputs() const = 0;
    /// How many busses it gives output on: 0 for the output, else 1.
    virtual std::uint32_t numberOfOutputs() const = 0;

    /// For messages.
    virtual std::string name() const = 0;

protected:
    AVAudioNode() = default;
};
