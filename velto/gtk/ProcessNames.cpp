// What tells copies apart: types by a number, keys by an address that each copy has for itself.
#include "velto/gtk/ProcessNames.h"

#include <cstdint>
#include <string>

namespace velto::gtk {

GType registerOwnType(GType parent, const char* name, guint classSize, GClassInitFunc classInit,
                      guint instanceSize, GInstanceInitFunc instanceInit) {
  std::string own = name;
  for (int copy = 2; g_type_from_name(own.c_str()) != G_TYPE_INVALID; ++copy)
    own = name + std::to_string(copy);
  return g_type_register_static_simple(parent, g_intern_string(own.c_str()), classSize, classInit,
                                       instanceSize, instanceInit, static_cast<GTypeFlags>(0));
}

GQuark ownKey(const char* name) {
  static const char here = 0;
  const auto own = std::string(name) + "-" + std::to_string(reinterpret_cast<uintptr_t>(&here));
  return g_quark_from_string(own.c_str());
}

}  // namespace velto::gtk
