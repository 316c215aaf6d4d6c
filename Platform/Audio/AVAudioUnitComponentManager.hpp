#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"

#include <memory>
#include <vector>

/// The system's registry of audio components: every LV2 plug-in on the machine's
/// LV2 path. Any thread.
class AVAudioUnitComponentManager
{
public:
    /// The machine's one registry.
    static AVAudioUnitComponentManager &shared();
    virtual ~AVAudioUnitComponentManager() = default;

    /// All components that match: a zero type, subtype or manufacturer matches
    /// any, flags count under the mask alone. The order is the registry's own and
    /// the same from run to run. Reads manifests, never a plug-in's binary.
    virtual std::vector<AVAudioUnitComponent>
    components(const AudioComponentDescription &matching) const;
};
