// The thread, its main context, and the way to the bus.
#include "velto/gtk/services/SystemBus.h"

#include "velto/gtk/Threads.h"
#include "velto/gtk/services/BusService.h"

#include <algorithm>

namespace velto::gtk {

// Connecting cannot be taken back without breaking the shared
// connection for others, so its answer may find the bus gone.
struct SystemBus::Link {
  SystemBus* bus = nullptr;  // null: nobody wants the answer
};

std::chrono::seconds nextAttempt(unsigned attempts) {
  constexpr unsigned soon = 4;
  return attempts < soon ? std::chrono::seconds(1U << attempts) : std::chrono::minutes(5);
}

SystemBus::SystemBus(std::vector<BusService*> services)
    : services_(std::move(services)), context_(g_main_context_new()) {}

void SystemBus::start() {
  if (!thread_.joinable() && !stopping_) thread_ = std::thread(&SystemBus::run, this);
}

void SystemBus::stop() {
  stopping_ = true;
  g_main_context_wakeup(context_.get());
  if (thread_.joinable()) thread_.join();
}

void SystemBus::run() {
  beginThread("velto-bus");
  g_main_context_push_thread_default(context_.get());
  link_ = std::make_shared<Link>(Link{this});
  for (auto* service : services_) service->begun();
  connect();
  while (!stopping_) {
    g_main_context_iteration(context_.get(), TRUE);
    if (closed_.exchange(false)) lost();
  }
  link_->bus = nullptr;
  lost();
  for (auto* service : services_) service->ended();
  // All are cancelled, so their answers are on the way.
  while (waiting_ > 0) g_main_context_iteration(context_.get(), TRUE);
  // What is left to be told holds the connection, too.
  while (g_main_context_iteration(context_.get(), FALSE)) continue;
  g_main_context_pop_thread_default(context_.get());
}

void SystemBus::connect() {
  g_bus_get(G_BUS_TYPE_SYSTEM, nullptr, onConnected, new std::weak_ptr<Link>(link_));
}

void SystemBus::onConnected(GObject*, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<std::weak_ptr<Link>> link(static_cast<std::weak_ptr<Link>*>(data));
  auto connection = GPtr<GDBusConnection>::adopt(g_bus_get_finish(result, nullptr));
  if (const auto alive = link->lock(); alive && alive->bus) alive->bus->connected(std::move(connection));
}

void SystemBus::connected(GPtr<GDBusConnection> connection) {
  if (!connection || g_dbus_connection_is_closed(connection)) {
    connectLater();
    return;
  }
  attempts_ = 0;
  connection_ = std::move(connection);
  // GLib ends the process with the bus, unless told not to. A library must not.
  g_dbus_connection_set_exit_on_close(connection_, FALSE);
  closedHandler_ = g_signal_connect(connection_.get(), "closed", G_CALLBACK(onClosed), this);
  for (auto* service : services_) service->attach(*this);
}

// On the thread that made the shared connection, whichever that is.
void SystemBus::onClosed(GDBusConnection*, gboolean, GError*, gpointer data) noexcept {
  auto* bus = static_cast<SystemBus*>(data);
  bus->closed_ = true;
  g_main_context_wakeup(bus->context_.get());
}

void SystemBus::lost() {
  for (auto* service : services_) service->detach();
  if (connection_) g_signal_handler_disconnect(connection_.get(), closedHandler_);
  connection_.reset();
  if (!stopping_) connectLater();
}

void SystemBus::connectLater() {
  for (auto* service : services_) service->read_ = true;
  noteRead();
  auto* timer = g_timeout_source_new_seconds(static_cast<guint>(nextAttempt(attempts_++).count()));
  g_source_set_callback(
      timer,
      [](gpointer data) noexcept -> gboolean {
        static_cast<SystemBus*>(data)->connect();
        return G_SOURCE_REMOVE;
      },
      this, nullptr);
  g_source_attach(timer, context_.get());
  g_source_unref(timer);
}

void SystemBus::noteRead() {
  if (!std::all_of(services_.begin(), services_.end(), [](auto* service) { return service->read_; })) return;
  std::lock_guard lock(mutex_);
  allRead_ = true;
  changed_.notify_all();
}

bool SystemBus::waitUntilRead(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, limit, [this] { return allRead_; });
}

}  // namespace velto::gtk
