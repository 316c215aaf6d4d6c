#include "Platform/Web View/SandboxNotes.hpp"

#include <glib.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include <unistd.h>

namespace platform::interface
{

namespace
{

namespace fs = std::filesystem;

void removeNotes()
{
    // The sandbox lays them down where Flatpak does, under our number.
    const std::string ours = "webkit-" + std::to_string(getpid()) + "-";
    std::error_code error;
    const fs::directory_iterator all(fs::path(g_get_user_runtime_dir()) / ".flatpak", error);
    for (auto note = begin(all); !error && note != end(all); note.increment(error)) {
        std::error_code ignored;
        if (note->path().filename().string().starts_with(ours))
            fs::remove_all(note->path(), ignored);
    }
}

} // namespace

void removeSandboxNotesAtTheEnd()
{
    [[maybe_unused]] static const bool isSeenTo = std::at_quick_exit(removeNotes) == 0;
}

} // namespace platform::interface
