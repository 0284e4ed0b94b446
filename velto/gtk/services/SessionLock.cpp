// The session that this process belongs to, or whose screen its person looks at, is "auto" to the service.
#include "velto/gtk/services/SessionLock.h"

namespace velto::gtk {

void SessionLock::appeared() {
  listenForProperties(interface);
}

void SessionLock::heard(const std::string&, const std::string&, GVariant* parameters) {
  if (mentions(parameters, {"LockedHint"})) readAgain();
}

void SessionLock::read() {
  getAll(path, interface, [this](GVariant* properties) {
    const auto hint = property(properties, "LockedHint", "b");
    set(hint && g_variant_get_boolean(hint.get()));
  });
}

void SessionLock::set(bool locked) {
  if (std::exchange(locked_, locked) != locked)
    mainQueue_.post([changed = changed_, locked] { changed(locked); });
}

}  // namespace velto::gtk
