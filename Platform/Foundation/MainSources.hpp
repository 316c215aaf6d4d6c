#pragma once

#include <memory>

#include <glib.h>

namespace platform::foundation
{

/// Gives back what a smart pointer held.
struct SourceDeleter {
    /// Drops one reference.
    void operator()(GSource *source) const { g_source_unref(source); }
};
/// One reference to a source of GLib's main loop.
using SourcePointer = std::unique_ptr<GSource, SourceDeleter>;

/// Adds `source` to the default main context at the run loop's priority, which it
/// follows until it is detached. Any thread.
void attachToMainContext(GSource *source);
/// Ends its calls; one under way is not waited for. Any thread.
void detachFromMainContext(GSource *source);

/// The priority of those sources. Any thread.
void setMainSourcePriority(int priority);
/// The priority of those sources now. Any thread.
int mainSourcePriority();

} // namespace platform::foundation
