#pragma once

#include "Platform/Audio/AudioComponentDescription.hpp"

#include <string>
#include <utility>

/// One entry of the registry of audio components. An immutable value.
class AVAudioUnitComponent
{
public:
    /// The entry of the plug-in with that URI.
    AVAudioUnitComponent(AudioComponentDescription description, std::string pluginURI)
        : description_(description), pluginURI_(std::move(pluginURI))
    {
    }

    /// As registered.
    AudioComponentDescription audioComponentDescription() const { return description_; }

    /// The LV2 plug-in that stands behind the component.
    const std::string &pluginURI() const { return pluginURI_; }

private:
    AudioComponentDescription description_;
    std::string pluginURI_;
};
