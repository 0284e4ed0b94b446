// Waiting for what a real main loop brings, on a machine of any speed.
#pragma once

#include <glib.h>

#include <functional>

namespace velto::test {

// Runs the main loop until the condition holds, and looks again now and then when nothing happens in the
// loop. The limit only ends what hangs: false then.
inline bool runUntil(const std::function<bool()>& condition) {
  bool expired = false;
  const auto expire = [](gpointer flag) -> gboolean { return *static_cast<bool*>(flag) = true; };
  const auto look = [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; };
  const guint deadline = g_timeout_add_seconds(120, expire, &expired);
  const guint looks = g_timeout_add_full(G_PRIORITY_LOW, 5, look, nullptr, nullptr);
  bool holds = false;
  while (!(holds = condition()) && !expired) g_main_context_iteration(nullptr, TRUE);
  g_source_remove(deadline);
  g_source_remove(looks);
  return holds;
}

}  // namespace velto::test
