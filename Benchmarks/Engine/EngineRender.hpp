#pragma once

#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// The product's chain: player, effect, main mixer, output. Made ready to render,
/// with nothing to play yet.
class EngineRender
{
public:
    /// For manual rendering in blocks of `framesPerBlock`.
    EngineRender(const std::string &pluginURI, const AVAudioFormat &format,
                 std::uint32_t framesPerBlock);

    /// Opens the file, plays it and renders `frames` frames; `take` gets each block.
    void play(const std::string &path, std::size_t frames,
              const std::function<void(const AVAudioPCMBuffer &)> &take);

private:
    AVAudioFormat format_;
    std::uint32_t framesPerBlock_;
    AVAudioPCMBuffer buffer_;
    std::shared_ptr<AVAudioPlayerNode> player_ = std::make_shared<AVAudioPlayerNode>();
    AVAudioEngine engine_;
};

/// A node around the plug-in, without the registry.
std::shared_ptr<AVAudioUnit> unitFor(const std::string &pluginURI);

/// Connects player, effect, main mixer and output.
void connectChain(AVAudioEngine &engine, const std::shared_ptr<AVAudioPlayerNode> &player,
                  const std::string &pluginURI, const AVAudioFormat &format);
