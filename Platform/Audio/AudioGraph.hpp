#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Audio/AVAudioNode.hpp"

#include <memory>
#include <optional>
#include <vector>

namespace platform::audio
{

/// Which nodes belong together and what feeds what. Each node has one output bus
/// at most, so what stands before the output is a tree. One thread at a time.
class AudioGraph
{
public:
    struct Connection {
        std::shared_ptr<AVAudioNode> source;
        std::shared_ptr<AVAudioNode> destination;
        std::optional<AVAudioFormat> format; // none: to be settled
    };

    void attach(const std::shared_ptr<AVAudioNode> &node);
    /// Takes the node out with its connections.
    void detach(const AVAudioNode &node);
    bool isAttached(const AVAudioNode &node) const;

    /// See `AVAudioEngine::connect`. A `PlatformError` for a circle.
    void connect(const std::shared_ptr<AVAudioNode> &source,
                 const std::shared_ptr<AVAudioNode> &destination,
                 const std::optional<AVAudioFormat> &format);
    void disconnectInput(const AVAudioNode &node);

    /// What feeds the node, in the order in which it was connected.
    std::vector<Connection> inputs(const AVAudioNode &node) const;
    std::optional<Connection> output(const AVAudioNode &node) const;

private:
    bool feeds(const AVAudioNode &source, const AVAudioNode &destination) const;

    std::vector<std::shared_ptr<AVAudioNode>> nodes_;
    std::vector<Connection> connections_;
};

} // namespace platform::audio
