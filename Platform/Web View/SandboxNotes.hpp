#pragma once

namespace platform::interface
{

/// Sees to it that the program takes the notes along that WebKit leaves about each of
/// its processes for the desktop's portals: small files in the user's runtime folder,
/// which nobody reads once the processes have ended. Once a program.
void removeSandboxNotesAtTheEnd();

} // namespace platform::interface
