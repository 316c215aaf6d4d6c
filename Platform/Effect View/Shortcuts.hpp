#pragma once

#include <gtkmm/widget.h>

#include <string>

namespace platform::effectview
{

/// Does what the accelerator does in the window `root`: the shortcut of a control
/// that is shown, or else the program's own. For keys that came another way than
/// through GTK. Answers whether there was something to do.
bool activateShortcut(Gtk::Widget &root, const std::string &accelerator);

} // namespace platform::effectview
