#include "Platform/Audio/AVAudioUnitComponentManager.hpp"

#include "Platform/Audio/ComponentRegistry.hpp"

AVAudioUnitComponentManager &AVAudioUnitComponentManager::shared()
{
    static AVAudioUnitComponentManager manager;
    return manager;
}

std::vector<AVAudioUnitComponent>
AVAudioUnitComponentManager::components(const AudioComponentDescription &matching) const
{
    return platform::audio::findComponents(matching);
}
