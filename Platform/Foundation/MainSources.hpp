#pragma once

#include <memory>

#include <glib.h>

namespace platform::foundation
{

struct SourceDeleter {
    void operator()(GSource *source) const { g_source_unref(source); }
};
using SourcePointer = std::unique_ptr<GSource, SourceDeleter>;

/// Adds `source` to the default main context at the run loop's priority, which it
/// follows from then on. The context keeps it for ever. Any thread.
void attachToMainContext(GSource *source);

/// The priority of those sources. Any thread.
void setMainSourcePriority(int priority);
int mainSourcePriority();

} // namespace platform::foundation
