#pragma once

#include <string>
#include <vector>

namespace platform::audio
{

/// The folders that hold LV2 bundles: `LV2_PATH` as it is now, else the system's
/// usual ones and then this program's own, wherever it is installed. A leading `~`
/// and `$NAME` stand for what the environment says.
std::vector<std::string> lv2Folders();

/// The bundles in those folders: in the order of the folders, then by name. One
/// that is reached in two ways is there once. Paths without a trailing slash.
std::vector<std::string> lv2Bundles();

} // namespace platform::audio
