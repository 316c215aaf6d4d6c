#include "Platform/Audio/AudioGraph.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>

namespace platform::audio
{

void AudioGraph::attach(const std::shared_ptr<AVAudioNode> &node)
{
    if (!isAttached(*node))
        nodes_.push_back(node);
}

void AudioGraph::detach(const AVAudioNode &node)
{
    const auto touches = [&node](const Connection &connection) {
        return connection.source.get() == &node || connection.destination.get() == &node;
    };
    connections_.erase(std::remove_if(connections_.begin(), connections_.end(), touches),
                       connections_.end());
    const auto isNode = [&node](const auto &attached) { return attached.get() == &node; };
    nodes_.erase(std::remove_if(nodes_.begin(), nodes_.end(), isNode), nodes_.end());
}

bool AudioGraph::isAttached(const AVAudioNode &node) const
{
    return std::any_of(nodes_.begin(), nodes_.end(),
                       [&node](const auto &attached) { return attached.get() == &node; });
}

void AudioGraph::connect(const std::shared_ptr<AVAudioNode> &source,
                         const std::shared_ptr<AVAudioNode> &destination,
                         const std::optional<AVAudioFormat> &format)
{
    if (source == destination || feeds(*destination, *source))
        throw PlatformError("The nodes '" + source->name() + "' and '" + destination->name() +
                            "' would feed each other.");
    if (source->numberOfOutputs() == 0 || destination->numberOfInputs() == 0)
        throw PlatformError("The node '" + source->name() + "' cannot feed the node '" +
                            destination->name() + "'.");
    const auto isReplaced = [&](const Connection &connection) {
        return connection.source == source ||
               (connection.destination == destination && destination->numberOfInputs() == 1);
    };
    connections_.erase(std::remove_if(connections_.begin(), connections_.end(), isReplaced),
                       connections_.end());
    attach(source);
    attach(destination);
    connections_.push_back({source, destination, format});
}

void AudioGraph::disconnectInput(const AVAudioNode &node)
{
    const auto isInput = [&node](const Connection &connection) {
        return connection.destination.get() == &node;
    };
    connections_.erase(std::remove_if(connections_.begin(), connections_.end(), isInput),
                       connections_.end());
}

std::vector<AudioGraph::Connection> AudioGraph::inputs(const AVAudioNode &node) const
{
    std::vector<Connection> found;
    std::copy_if(
        connections_.begin(), connections_.end(), std::back_inserter(found),
        [&node](const Connection &connection) { return connection.destination.get() == &node; });
    return found;
}

std::optional<AudioGraph::Connection> AudioGraph::output(const AVAudioNode &node) const
{
    const auto found = std::find_if(
        connections_.begin(), connections_.end(),
        [&node](const Connection &connection) { return connection.source.get() == &node; });
    return found == connections_.end() ? std::nullopt : std::optional(*found);
}

// True when `source` reaches `destination` through any number of connections.
bool AudioGraph::feeds(const AVAudioNode &source, const AVAudioNode &destination) const
{
    for (std::optional<Connection> next = output(source); next; next = output(*next->destination))
        if (next->destination.get() == &destination)
            return true;
    return false;
}

} // namespace platform::audio
