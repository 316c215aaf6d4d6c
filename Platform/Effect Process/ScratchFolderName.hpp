#pragma once

#include <string>

namespace platform::effect
{

/// A path below the folder for temporary files that nobody else has or can guess.
/// Nothing is made there.
std::string newScratchFolderName();

/// Removes the folders of hosts that were killed and could not do so themselves.
void removeAbandonedScratchFolders();

} // namespace platform::effect
