// The system bus, watched from a thread of its own, so that neither a slow service nor a busy main thread
// holds anybody up. It is the process's shared connection: some services know an application by its
// connection. Used by GtkPlatform; the services on it are BusServices.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace velto::gtk {

class BusService;

// Made, started and stopped on the main thread.
class SystemBus {
 public:
  // The services must outlive the thread.
  explicit SystemBus(std::vector<BusService*> services);
  ~SystemBus() { stop(); }

  // Starts the thread, which connects and watches. Costs the caller nothing else. A bus that is not there, or
  // goes, is looked for again, at growing intervals.
  void start();
  // Ends the thread. What the services know stays.
  void stop();

  // Waits until each service has told what it knows or been
  // found absent; false when that takes longer. Any thread.
  bool waitUntilRead(std::chrono::milliseconds limit);

 private:
  friend class BusService;
  struct Link;  // what an answer that comes late may still touch

  void run();
  void connect();
  void connected(GPtr<GDBusConnection> connection);
  void lost();
  void connectLater();
  void noteRead();
  static void onConnected(GObject*, GAsyncResult* result, gpointer link) noexcept;
  static void onClosed(GDBusConnection*, gboolean, GError*, gpointer bus) noexcept;

  std::vector<BusService*> services_;
  std::thread thread_;
  GOwned<GMainContext, g_main_context_unref> context_;
  std::atomic<bool> stopping_{false}, closed_{false};

  // On the thread only.
  std::shared_ptr<Link> link_;
  GPtr<GDBusConnection> connection_;
  gulong closedHandler_ = 0;
  unsigned attempts_ = 0;
  int waiting_ = 0;  // calls without an answer yet

  std::mutex mutex_;
  std::condition_variable changed_;
  bool allRead_ = false;
};

// The interval before the next attempt. A bus that restarts is back within seconds; where there is none, as in a container, there
// will hardly be one soon, and who looks for it wakes the device.
std::chrono::seconds nextAttempt(unsigned attempts);

inline void endSource(GSource* source) {
  g_source_destroy(source);
  g_source_unref(source);
}
// A source on the thread's context that ends with its owner.
using GSourceOwned = GOwned<GSource, endSource>;

}  // namespace velto::gtk
