#include "Platform/Audio/AVAudioEngine.hpp"

#include "Platform/Audio/EngineCore.hpp"
#include "Platform/Audio/SDLOutputDevice.hpp"

#include <utility>

using platform::audio::EngineCore;

AVAudioEngine::AVAudioEngine() : AVAudioEngine(std::make_unique<platform::audio::SDLOutputDevice>())
{
}

AVAudioEngine::AVAudioEngine(std::unique_ptr<platform::audio::OutputDevice> device)
    : core_(std::make_unique<EngineCore>(std::move(device)))
{
}

AVAudioEngine::~AVAudioEngine() = default;

const std::shared_ptr<AVAudioMixerNode> &AVAudioEngine::mainMixerNode() const
{
    return core_->mixer();
}

const std::shared_ptr<AVAudioOutputNode> &AVAudioEngine::outputNode() const
{
    return core_->output();
}

void AVAudioEngine::attach(const std::shared_ptr<AVAudioNode> &node)
{
    core_->attach(node);
}

void AVAudioEngine::detach(const std::shared_ptr<AVAudioNode> &node)
{
    core_->detach(node);
}

void AVAudioEngine::connect(const std::shared_ptr<AVAudioNode> &source,
                            const std::shared_ptr<AVAudioNode> &destination,
                            const std::shared_ptr<AVAudioFormat> &format)
{
    core_->connect(source, destination, format ? std::optional(*format) : std::nullopt);
}

void AVAudioEngine::disconnectNodeInput(const std::shared_ptr<AVAudioNode> &node)
{
    core_->disconnectNodeInput(*node);
}

void AVAudioEngine::prepare()
{
    core_->prepare();
}

void AVAudioEngine::start()
{
    core_->start();
}

void AVAudioEngine::stop()
{
    core_->stop();
}

bool AVAudioEngine::isRunning() const
{
    return core_->isRunning();
}

void AVAudioEngine::enableManualRenderingMode(const AVAudioFormat &format,
                                              std::uint32_t maximumFrameCount)
{
    core_->enableManualRenderingMode(format, maximumFrameCount);
}

void AVAudioEngine::disableManualRenderingMode()
{
    core_->disableManualRenderingMode();
}

void AVAudioEngine::renderOffline(std::uint32_t frames, AVAudioPCMBuffer &buffer)
{
    core_->renderOffline(frames, buffer);
}
