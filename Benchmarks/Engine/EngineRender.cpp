#include "Benchmarks/Engine/EngineRender.hpp"

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/LocalAudioUnit.hpp"

#include <algorithm>

std::shared_ptr<AVAudioUnit> unitFor(const std::string &pluginURI)
{
    const AVAudioUnitComponent component({}, pluginURI);
    return std::make_shared<AVAudioUnit>(std::make_shared<LocalAudioUnit>(component));
}

void connectChain(AVAudioEngine &engine, const std::shared_ptr<AVAudioPlayerNode> &player,
                  const std::string &pluginURI, const AVAudioFormat &format)
{
    const auto shared = std::make_shared<AVAudioFormat>(format);
    const std::shared_ptr<AVAudioUnit> effect = unitFor(pluginURI);
    engine.connect(player, effect, shared);
    engine.connect(effect, engine.mainMixerNode(), shared);
    engine.connect(engine.mainMixerNode(), engine.outputNode(), shared);
}

EngineRender::EngineRender(const std::string &pluginURI, const AVAudioFormat &format,
                           std::uint32_t framesPerBlock)
    : format_(format), framesPerBlock_(framesPerBlock), buffer_(format, framesPerBlock)
{
    connectChain(engine_, player_, pluginURI, format);
    engine_.enableManualRenderingMode(format, framesPerBlock);
    engine_.start();
}

void EngineRender::play(const std::string &path, std::size_t frames,
                        const std::function<void(const AVAudioPCMBuffer &)> &take)
{
    player_->scheduleFile(std::make_shared<AVAudioFile>(URL::fileURLWithPath(path)), nullptr);
    player_->play();
    for (std::size_t done = 0; done < frames; done += buffer_.frameLength()) {
        const auto rest = static_cast<std::uint32_t>(frames - done);
        engine_.renderOffline(std::min(rest, framesPerBlock_), buffer_);
        take(buffer_);
    }
}
