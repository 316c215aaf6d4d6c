#include "Platform/Audio/AVAudioUnitComponentManager.hpp"
#include "Platform/Foundation/Print.hpp"

#include <fmt/format.h>

/// Prints what is registered under the host's key.
int main()
{
    using platform::audio::fourCharacterCode;
    const AudioComponentDescription key{fourCharacterCode("aumf"), fourCharacterCode("zvqr"),
                                        fourCharacterCode("QRVX"), 2, 0};
    const auto components = AVAudioUnitComponentManager::shared().components(key);
    for (const AVAudioUnitComponent &component : components)
        print(fmt::format("{} {}", component.pluginURI(),
                          component.audioComponentDescription().description()));
    return components.empty() ? 1 : 0;
}
