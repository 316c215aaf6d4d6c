#pragma once

#include <glib-object.h>

#include <memory>

namespace platform::interface
{

struct GObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};

/// A reference to an object of GLib's.
template <typename T>
using GObjectHandle = std::unique_ptr<T, GObjectDeleter>;

/// Another reference to `object`, which has an owner.
template <typename T>
GObjectHandle<T> newReference(T *object)
{
    return GObjectHandle<T>(static_cast<T *>(g_object_ref(object)));
}

/// The first reference to an object that has just been made and belongs to nobody.
template <typename T>
GObjectHandle<T> takeFloating(gpointer object)
{
    return GObjectHandle<T>(static_cast<T *>(g_object_ref_sink(object)));
}

} // namespace platform::interface
