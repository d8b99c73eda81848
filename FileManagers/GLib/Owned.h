#pragma once

#include <glib-object.h>
#include <memory>

namespace FileManagers {

struct ObjectUnref {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
// A reference to a GObject that is given back.
template <class T>
using OwnedObject = std::unique_ptr<T, ObjectUnref>;

struct GFree {
    void operator()(gpointer memory) const noexcept { g_free(memory); }
};
using OwnedText = std::unique_ptr<char, GFree>;

} // namespace FileManagers
