#pragma once

#include <string>

/// Has GTK use that X display, and nothing of the desktop around: no OpenGL, no
/// accessibility bus, no settings.
void useDisplay(const std::string &display);

/// Makes GTK ready for use without an application.
void startInterface();
