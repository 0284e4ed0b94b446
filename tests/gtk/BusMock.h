// A system bus of the test's own, and services on it that python3-dbusmock plays. A service can be stopped in
// the middle, like one that hangs, killed, and started again.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <string>

#include "../support/MainLoop.h"
#include "../support/Program.h"

namespace velto::test {

// Becomes the system bus and the session bus of this process until it goes.
class PrivateBus {
 public:
  PrivateBus() : daemon_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
    const GText display(g_strdup(g_getenv("DISPLAY"))), runtime(g_strdup(g_getenv("XDG_RUNTIME_DIR")));
    g_test_dbus_up(daemon_);  // takes these away
    if (display) g_setenv("DISPLAY", display.get(), TRUE);
    if (runtime) g_setenv("XDG_RUNTIME_DIR", runtime.get(), TRUE);
    g_setenv("DBUS_SYSTEM_BUS_ADDRESS", g_test_dbus_get_bus_address(daemon_), TRUE);
  }
  ~PrivateBus() {
    g_unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    stop();
    g_object_unref(daemon_);
  }
  void stop() {
    if (!std::exchange(stopped_, true)) g_test_dbus_stop(daemon_);
  }
  // A connection that is not the one that the library shares with its host.
  GPtr<GDBusConnection> connect() const {
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    auto connection = GPtr<GDBusConnection>::adopt(g_dbus_connection_new_for_address_sync(
        g_test_dbus_get_bus_address(daemon_), flags, nullptr, nullptr, nullptr));
    g_dbus_connection_set_exit_on_close(connection, FALSE);
    return connection;
  }

 private:
  GTestDBus* daemon_;
  bool stopped_ = false;
};

class MockService {
 public:
  // The texts are GVariants: an interface and its properties at the path, such as "{'State': <uint32 70>}".
  MockService(const PrivateBus& bus, std::string name, std::string path, const std::string& interface,
              const std::string& properties = "@a{sv} {}")
      : name_(std::move(name)),
        path_(std::move(path)),
        connection_(bus.connect()),
        process_({"sh", "-c",
                  "exec /usr/bin/python3 -m dbusmock --system -m " + name_ + " " + path_ + " " + interface +
                      " >/dev/null"}) {
    EXPECT_EQ(run({"gdbus", "wait", "--system", "--timeout", "120", name_}).code, 0) << name_;
    addInterface(path_, interface, properties);
    update(path_, interface, properties);  // it had its name before
  }
  virtual ~MockService() = default;
  void hang() { process_.signal(SIGSTOP); }
  void goOn() { process_.signal(SIGCONT); }

  void addObject(const std::string& path, const std::string& interface, const std::string& properties) {
    mock("AddObject", "('" + path + "', '" + interface + "', " + properties + ", @a(ssss) [])");
  }
  void addInterface(const std::string& path, const std::string& interface, const std::string& properties) {
    mock("AddProperties", "('" + interface + "', " + properties + ")", path);
  }
  void addMethod(const std::string& path, const std::string& interface, const std::string& name,
                 const std::string& answerType, const std::string& code, const std::string& types = "") {
    mock("AddMethod",
         "('" + interface + "', '" + name + "', '" + types + "', '" + answerType + "', \"" + code + "\")",
         path);
  }
  // Changes properties, and signals it.
  void update(const std::string& path, const std::string& interface, const std::string& properties) {
    mock("UpdateProperties", "('" + interface + "', " + properties + ")", path);
  }
  void pointTo(const std::string& path, const std::string& interface, const std::string& property,
               const std::string& object) {
    mock("Set", "('" + interface + "', '" + property + "', <objectpath '" + object + "'>)", path,
         "org.freedesktop.DBus.Properties");
  }
  void signal(const std::string& path, const std::string& interface, const std::string& name,
              const std::string& types, const std::string& arguments) {
    mock("EmitSignal", "('" + interface + "', '" + name + "', '" + types + "', " + arguments + ")", path);
  }
  // How often a method that was added has been called.
  size_t callsOf(const std::string& path, const std::string& method) {
    const auto calls = mock("GetMethodCalls", "('" + method + "',)", path);
    const GOwned<GVariant, g_variant_unref> list(g_variant_get_child_value(calls.get(), 0));
    return g_variant_n_children(list.get());
  }

 private:
  GOwned<GVariant, g_variant_unref> mock(const char* method, const std::string& arguments,
                                         const std::string& path = {},
                                         const char* interface = "org.freedesktop.DBus.Mock") {
    GError* fault = nullptr;
    GVariant* parsed = g_variant_parse(nullptr, arguments.c_str(), nullptr, nullptr, &fault);
    EXPECT_TRUE(parsed) << arguments << ": " << fault->message;
    GOwned<GVariant, g_variant_unref> reply(g_dbus_connection_call_sync(
        connection_, name_.c_str(), (path.empty() ? path_ : path).c_str(), interface, method, parsed, nullptr,
        G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, &fault));
    EXPECT_TRUE(reply) << method << " " << arguments << ": " << (fault ? fault->message : "");
    return reply;
  }
  std::string name_, path_;
  GPtr<GDBusConnection> connection_;
  Process process_;
};

}  // namespace velto::test
