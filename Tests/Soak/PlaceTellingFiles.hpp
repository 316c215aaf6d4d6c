#pragma once

#include <filesystem>

namespace soak
{

/// As many as the player knows.
inline constexpr int names = 80;

/// Writes 1.m4a to 80.m4a, whose samples are as `PlaceTelling` says, losslessly coded;
/// the files take turns.
/// Throws when they cannot be made.
void writePlaceTellingFiles(const std::filesystem::path &folder);

} // namespace soak
