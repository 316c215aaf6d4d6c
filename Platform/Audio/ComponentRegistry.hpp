#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace platform::audio
{

/// The effect that comes with this program. Registered under the same key as
/// another, it gives way.
inline constexpr std::string_view standInPluginURI = "urn:qrvx:parvane";

/// Every component on the LV2 path, as it is now, that matches the key: zero
/// codes match any, flags count under the mask. In the order of the path, bundles
/// by name, plug-ins as their manifest names them; the stand-in comes last.
/// A plug-in described by several bundles is there once: by the first that gives
/// it a key, else by the first. Any thread.
std::vector<AVAudioUnitComponent> findComponents(const AudioComponentDescription &key);

/// The bundles that concern the plug-in: its own first, then those that hold
/// presets for it. Empty when none describes it. Any thread.
std::vector<std::string> bundlesOfPlugin(const std::string &pluginURI);

} // namespace platform::audio
