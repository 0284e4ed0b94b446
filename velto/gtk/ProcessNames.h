// Names that everything in a process shares, of types and of data at objects. The library may be there twice, also in two
// versions: the application's own, and one that came with velto-glib or with a module of somebody else's.
#pragma once

#include <glib-object.h>

namespace velto::gtk {

// A type without flags. `name` with a number behind it where another copy of the library has it. Main thread.
GType registerOwnType(GType parent, const char* name, guint classSize, GClassInitFunc classInit,
                      guint instanceSize, GInstanceInitFunc instanceInit);

// For g_object_set_qdata() at objects that are not ours: no other copy of the library finds it. Any thread.
GQuark ownKey(const char* name);

}  // namespace velto::gtk
