#include "Platform/Audio/AudioComponentDescription.hpp"

#include <fmt/format.h>

std::string AudioComponentDescription::description() const
{
    return fmt::format("AudioComponentDescription(componentType: {}, componentSubType: {}, "
                       "componentManufacturer: {}, componentFlags: {}, componentFlagsMask: {})",
                       componentType, componentSubType, componentManufacturer, componentFlags,
                       componentFlagsMask);
}
