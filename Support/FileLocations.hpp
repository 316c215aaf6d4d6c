#pragma once

#include "Platform/Foundation/Shared.hpp"
#include "Platform/Foundation/URL.hpp"

#include <optional>

/// Folders of the program or of the effect; none until they are filled. `load()`
/// and `store()` exclude each other, so any thread may use them.
extern Shared<std::optional<URL>> documentsURL;
extern Shared<std::optional<URL>> resourcesURL;
/// Folders that a program and its effect would share. Nothing fills them.
extern Shared<std::optional<URL>> sharedURLAudio;
extern Shared<std::optional<URL>> sharedURLMIDI;

/// Fills `documentsURL` and `resourcesURL` and prints a line about each through
/// `safeprint`. That the user has no documents folder at all is a fatal error; that
/// the main bundle has no resources is a line. Any thread.
void getPaths();

/// Whether there is something at the path of the file URL when it returns: a folder
/// that was missing is created with all folders above it. What exists may be
/// a plain file. A folder that cannot be created is a line through `debugprint`.
/// Any thread.
bool ensureDirectoryExists(const URL &url);
