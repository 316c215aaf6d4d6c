#include "Platform/Audio/AVAudioOutputNode.hpp"

#include "Platform/Foundation/FatalError.hpp"

std::shared_ptr<AVAudioFormat> AVAudioOutputNode::outputFormat(std::uint32_t forBus) const
{
    if (forBus != 0)
        fatalError("The output node has no bus but 0");
    return format_.load();
}

void AVAudioOutputNode::setOutputFormat(const AVAudioFormat &format)
{
    format_.store(std::make_shared<AVAudioFormat>(format));
}
