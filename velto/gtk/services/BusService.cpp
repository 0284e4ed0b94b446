// Watching a name, calling with a time-out, and reading again.
#include "velto/gtk/services/BusService.h"

#include <algorithm>

namespace velto::gtk {
namespace {

constexpr char propertiesInterface[] = "org.freedesktop.DBus.Properties";
constexpr int answerMilliseconds = 300;

bool isTimeout(const GError& error) {
  return g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) ||
         g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT) ||
         g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_TIMED_OUT);
}

}  // namespace

struct BusService::Call {
  BusService& service;
  SystemBus& bus;
  unsigned generation;
  std::string answerType;
  Answer answer;
};

void BusService::attach(SystemBus& bus) {
  bus_ = &bus;
  // Says at once who has the name now. It asks the bus itself, never the service.
  watch_ = g_bus_watch_name_on_connection(
      bus.connection_, name_, G_BUS_NAME_WATCHER_FLAGS_NONE,
      [](GDBusConnection*, const char*, const char* owner, gpointer data) {
        static_cast<BusService*>(data)->setOwner(owner);
      },
      [](GDBusConnection*, const char*, gpointer data) { static_cast<BusService*>(data)->setOwner(""); },
      this, nullptr);
}

void BusService::detach() {
  if (!bus_) return;
  if (watch_) g_bus_unwatch_name(watch_);
  watch_ = 0;
  if (!owner_.empty()) leaving();
  setOwner("");
  bus_ = nullptr;
}

void BusService::setOwner(const std::string& owner) {
  for (const guint id : subscriptions_) g_dbus_connection_signal_unsubscribe(bus_->connection_, id);
  subscriptions_.clear();
  if (cancellable_) g_cancellable_cancel(cancellable_);
  cancellable_.reset();
  retry_.reset();
  ++generation_;
  reading_ = again_ = false;
  attempts_ = 0;

  owner_ = owner;
  forget();
  if (owner_.empty()) {
    read_ = true;
    bus_->noteRead();
    return;
  }
  cancellable_ = GPtr<GCancellable>::adopt(g_cancellable_new());
  appeared();
  startReading();
}

void BusService::readAgain() {
  if (owner_.empty()) return;
  if (reading_)
    again_ = true;
  else
    startReading();
}

void BusService::startReading() {
  retry_.reset();
  ++generation_;
  outstanding_ = 0;
  reading_ = true;
  again_ = false;
  read();
}

void BusService::endReading(bool answered) {
  reading_ = false;
  ++generation_;
  read_ = true;
  bus_->noteRead();
  if (answered) {
    attempts_ = 0;
    if (again_) startReading();
    return;
  }
  retry_.reset(g_timeout_source_new_seconds(static_cast<guint>(nextAttempt(attempts_++).count())));
  g_source_set_callback(
      retry_.get(),
      [](gpointer data) noexcept -> gboolean {
        static_cast<BusService*>(data)->startReading();
        return G_SOURCE_REMOVE;
      },
      this, nullptr);
  g_source_attach(retry_.get(), bus_->context_.get());
}

void BusService::call(const std::string& path, const char* interface, const char* method,
                      GVariant* parameters, const char* answerType, Answer answer) {
  ++outstanding_;
  ++bus_->waiting_;
  g_dbus_connection_call(bus_->connection_, owner_.c_str(), path.c_str(), interface, method, parameters,
                         nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, answerMilliseconds, cancellable_, onReply,
                         new Call{*this, *bus_, generation_, answerType, std::move(answer)});
}

void BusService::onReply(GObject* connection, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Call> call(static_cast<Call*>(data));
  auto& self = call->service;
  GError* fault = nullptr;
  const GOwned<GVariant, g_variant_unref> reply(
      g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &fault));
  const GErrorOwned error(fault);
  --call->bus.waiting_;
  if (call->generation != self.generation_) return;
  --self.outstanding_;
  if (error && isTimeout(*error)) {
    self.endReading(false);
    return;
  }
  const bool isWanted = reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE(call->answerType.c_str()));
  call->answer(isWanted ? reply.get() : nullptr);
  if (self.outstanding_ == 0) self.endReading(true);
}

void BusService::getAll(const std::string& path, const char* interface, Answer answer) {
  call(path, propertiesInterface, "GetAll", g_variant_new("(s)", interface), "(a{sv})",
       [answer = std::move(answer)](GVariant* reply) {
         const GOwned<GVariant, g_variant_unref> dictionary(reply ? g_variant_get_child_value(reply, 0)
                                                                  : nullptr);
         answer(dictionary.get());
       });
}

void BusService::tell(const std::string& path, const char* interface, const char* method) {
  g_dbus_connection_call(bus_->connection_, owner_.c_str(), path.c_str(), interface, method, nullptr, nullptr,
                         G_DBUS_CALL_FLAGS_NO_AUTO_START, answerMilliseconds, nullptr, nullptr, nullptr);
}

void BusService::listen(const char* interface, const char* member) {
  subscribe(interface, member, nullptr);
}

void BusService::listenForProperties(const char* interface) {
  subscribe(propertiesInterface, "PropertiesChanged", interface);
}

void BusService::subscribe(const char* interface, const char* member, const char* firstArgument) {
  subscriptions_.push_back(
      g_dbus_connection_signal_subscribe(bus_->connection_, owner_.c_str(), interface, member, nullptr,
                                         firstArgument, G_DBUS_SIGNAL_FLAGS_NONE, onSignal, this, nullptr));
}

void BusService::onSignal(GDBusConnection*, const char*, const char* path, const char* interface,
                          const char* member, GVariant* parameters, gpointer service) noexcept {
  if (g_str_equal(interface, propertiesInterface) &&
      !g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sa{sv}as)")))
    return;
  static_cast<BusService*>(service)->heard(path, member, parameters);
}

GOwned<GVariant, g_variant_unref> property(GVariant* dictionary, const char* name, const char* type) {
  return GOwned<GVariant, g_variant_unref>(
      dictionary ? g_variant_lookup_value(dictionary, name, G_VARIANT_TYPE(type)) : nullptr);
}

std::string textProperty(GVariant* dictionary, const char* name, const char* type) {
  const auto value = property(dictionary, name, type);
  return value ? g_variant_get_string(value.get(), nullptr) : "";
}

uint32_t numberProperty(GVariant* dictionary, const char* name, uint32_t otherwise) {
  const auto value = property(dictionary, name, "u");
  return value ? g_variant_get_uint32(value.get()) : otherwise;
}

bool mentions(GVariant* propertiesChanged, std::initializer_list<const char*> names) {
  const GOwned<GVariant, g_variant_unref> changed(g_variant_get_child_value(propertiesChanged, 1));
  const GOwned<GVariant, g_variant_unref> invalidated(g_variant_get_child_value(propertiesChanged, 2));
  const std::unique_ptr<const char*, GFree> gone(g_variant_get_strv(invalidated.get(), nullptr));
  return std::any_of(names.begin(), names.end(), [&](const char* name) {
    return property(changed.get(), name, "*") || g_strv_contains(gone.get(), name);
  });
}

}  // namespace velto::gtk
