#include "Platform/Audio/AVAudioPlayerNode.hpp"

#include "Platform/Audio/PlayerCore.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"

#include <utility>

using platform::audio::PlayerCore;

AVAudioPlayerNode::AVAudioPlayerNode() : core_(std::make_shared<PlayerCore>()) {}

AVAudioPlayerNode::~AVAudioPlayerNode()
{
    core_->stop();
    // The last handle may go in a completion, on the very thread that has to end.
    if (core_->onFeeder())
        DispatchQueue::global().async([core = std::move(core_)] {});
}

void AVAudioPlayerNode::scheduleFile(std::shared_ptr<AVAudioFile> file,
                                     std::function<void()> completion)
{
    core_->schedule(std::move(file), std::move(completion));
}

void AVAudioPlayerNode::play()
{
    core_->play();
}

void AVAudioPlayerNode::pause()
{
    core_->pause();
}

void AVAudioPlayerNode::stop()
{
    core_->stop();
}

bool AVAudioPlayerNode::isPlaying() const
{
    return core_->isPlaying();
}

std::string AVAudioPlayerNode::name() const
{
    return "player";
}
