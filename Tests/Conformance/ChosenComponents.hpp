#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"

#include <string>
#include <vector>

namespace conformance
{

/// The installed plug-ins of these URIs, in the registry's order; all of them when
/// there is none. A `std::runtime_error` names one that is not installed.
std::vector<AVAudioUnitComponent> chosenComponents(const std::vector<std::string> &uris);

/// The URIs that stand in a file, one a line. A `std::runtime_error` without the file.
std::vector<std::string> listedPlugins(const std::string &path);

} // namespace conformance
