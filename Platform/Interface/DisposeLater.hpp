#pragma once

#include <glibmm/main.h>

#include <memory>

namespace platform::interface
{

/// Deletes a hidden dialog when GTK has come to rest: not while it tells its answer,
/// and not before GDK's own pending question for its size, which GTK 4.8 would put to
/// the deleted window.
template <typename Dialog>
void disposeLater(std::unique_ptr<Dialog> dialog)
{
    const std::shared_ptr<Dialog> kept = std::move(dialog);
    Glib::signal_idle().connect_once([kept] {}, G_PRIORITY_LOW);
}

} // namespace platform::interface
