#include "Benchmarks/Engine/JUCE/JuceGraph.hpp"

#include <juce_audio_processors/juce_audio_processors.h>

#include <stdexcept>
#include <utility>

using juce::AudioProcessorGraph;
using IOProcessor = AudioProcessorGraph::AudioGraphIOProcessor;

namespace
{

constexpr int stereo = 2;

std::unique_ptr<juce::AudioPluginInstance> load(const std::string &uri, double sampleRate,
                                                int framesPerBlock)
{
    juce::LV2PluginFormat format;
    const auto path = juce::SystemStats::getEnvironmentVariable("LV2_PATH", {});
    format.searchPathsForPlugins(juce::FileSearchPath(path.replace(":", ";")), false, false);
    juce::OwnedArray<juce::PluginDescription> found;
    format.findAllTypesForFile(found, uri);
    if (found.isEmpty())
        throw std::runtime_error("JUCE does not find " + uri);
    juce::String error;
    auto instance =
        format.createInstanceFromDescription(*found[0], sampleRate, framesPerBlock, error);
    if (instance == nullptr)
        throw std::runtime_error("JUCE does not load " + uri + ": " + error.toStdString());
    return instance;
}

} // namespace

struct JuceGraph::State {
    juce::ScopedJuceInitialiser_GUI juce;
    AudioProcessorGraph graph;
    juce::AudioBuffer<float> buffer;
    juce::MidiBuffer midi;

    void connect(const AudioProcessorGraph::Node::Ptr &from,
                 const AudioProcessorGraph::Node::Ptr &to)
    {
        for (int channel = 0; channel < stereo; ++channel)
            if (!graph.addConnection({{from->nodeID, channel}, {to->nodeID, channel}}))
                throw std::runtime_error("JUCE does not connect the plug-in");
    }
};

JuceGraph::JuceGraph(const std::string &pluginURI, double sampleRate, std::uint32_t framesPerBlock)
    : state_(std::make_unique<State>())
{
    const auto frames = static_cast<int>(framesPerBlock);
    state_->buffer.setSize(stereo, frames);
    AudioProcessorGraph &graph = state_->graph;
    graph.setPlayConfigDetails(stereo, stereo, sampleRate, frames);
    graph.prepareToPlay(sampleRate, frames);
    const auto input = graph.addNode(std::make_unique<IOProcessor>(IOProcessor::audioInputNode));
    const auto effect = graph.addNode(load(pluginURI, sampleRate, frames));
    const auto output = graph.addNode(std::make_unique<IOProcessor>(IOProcessor::audioOutputNode));
    state_->connect(input, effect);
    state_->connect(effect, output);
}

JuceGraph::~JuceGraph() = default;

void JuceGraph::render(const float *const *input)
{
    for (int channel = 0; channel < stereo; ++channel)
        state_->buffer.copyFrom(channel, 0, input[channel], state_->buffer.getNumSamples());
    state_->graph.processBlock(state_->buffer, state_->midi);
}

const float *const *JuceGraph::output() const
{
    return state_->buffer.getArrayOfReadPointers();
}
