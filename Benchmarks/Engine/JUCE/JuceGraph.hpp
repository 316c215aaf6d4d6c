#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// JUCE's graph of audio processors: stereo input, one LV2 plug-in, stereo output.
/// One thread, the one that made it.
class [[gnu::visibility("default")]] JuceGraph
{
public:
    /// A `std::runtime_error` when JUCE cannot host the plug-in.
    JuceGraph(const std::string &pluginURI, double sampleRate, std::uint32_t framesPerBlock);
    ~JuceGraph();
    JuceGraph(const JuceGraph &) = delete;
    JuceGraph &operator=(const JuceGraph &) = delete;

    /// Copies a block into the graph's buffer and renders it there.
    void render(const float *const *input);

    /// What the last block came to, one pointer a channel.
    const float *const *output() const;

private:
    struct [[gnu::visibility("hidden")]] State;
    std::unique_ptr<State> state_;
};
