// One service of the system bus whose values are kept, so that reading them never waits. It is never started:
// a service that is not there is unknown. While it hangs, the last known values stand, and it is asked again
// at growing intervals. When it goes they are forgotten, when it comes back they are read anew.
#pragma once

#include "velto/gtk/services/SystemBus.h"

#include <functional>
#include <initializer_list>
#include <mutex>
#include <string>
#include <vector>

namespace velto::gtk {

// A value that the bus's thread writes and any thread reads.
template <class T>
class Kept {
 public:
  T get() const {
    std::lock_guard lock(mutex_);
    return value_;
  }
  void set(T value) {
    std::lock_guard lock(mutex_);
    value_ = std::move(value);
  }

 private:
  mutable std::mutex mutex_;
  T value_{};
};

// Everything here runs on the thread of the SystemBus that it was given to.
class BusService {
 public:
  explicit BusService(const char* name) : name_(name) {}
  BusService(const BusService&) = delete;
  BusService& operator=(const BusService&) = delete;
  virtual ~BusService() = default;

 protected:
  // Null when the service answered with an error or with anything but the type that was asked for.
  using Answer = std::function<void(GVariant* value)>;

  // Asks for everything, by call(). Reading has ended when no answer is outstanding any more.
  virtual void read() = 0;
  // The service is gone.
  virtual void forget() = 0;
  // It is there: the place for listen(). Reading follows.
  virtual void appeared() {}
  // A signal that was listened for. Its parameters have the type that D-Bus prescribes for PropertiesChanged;
  // of other signals it is not checked.
  virtual void heard(const std::string& path, const std::string& member, GVariant* parameters) = 0;
  // The service is there still, but nobody will listen any more.
  virtual void leaving() {}
  // The thread has begun, and is about to end, with or without a bus.
  virtual void begun() {}
  virtual void ended() {}

  void call(const std::string& path, const char* interface, const char* method, GVariant* parameters,
            const char* answerType, Answer answer);
  // All properties of an interface, as a dictionary a{sv}.
  void getAll(const std::string& path, const char* interface, Answer answer);
  // Without waiting for an answer.
  void tell(const std::string& path, const char* interface, const char* method);
  void listen(const char* interface, const char* member);
  // PropertiesChanged of an interface, on all objects.
  void listenForProperties(const char* interface);
  void readAgain();  // now, or after the reading that is going on

 private:
  friend class SystemBus;
  struct Call;

  void attach(SystemBus& bus);
  void detach();
  void setOwner(const std::string& owner);
  void subscribe(const char* interface, const char* member, const char* firstArgument);
  void startReading();
  void endReading(bool answered);
  static void onReply(GObject* connection, GAsyncResult* result, gpointer call) noexcept;
  static void onSignal(GDBusConnection*, const char* sender, const char* path, const char* interface,
                       const char* member, GVariant* parameters, gpointer service) noexcept;

  const char* name_;
  SystemBus* bus_ = nullptr;
  guint watch_ = 0;
  std::string owner_;  // the connection that has the name; empty: nobody
  std::vector<guint> subscriptions_;
  GPtr<GCancellable> cancellable_;
  unsigned generation_ = 0;  // of readings; answers to an older one are not wanted any more
  int outstanding_ = 0;
  bool reading_ = false, again_ = false;
  bool read_ = false;  // told, or found absent, once
  unsigned attempts_ = 0;
  GSourceOwned retry_;
};

// --- reading what a service says, which may be anything

// The value under a name of a dictionary a{sv}; null when absent or of another type.
GOwned<GVariant, g_variant_unref> property(GVariant* dictionary, const char* name, const char* type);
std::string textProperty(GVariant* dictionary, const char* name, const char* type = "s");  // "" if absent
uint32_t numberProperty(GVariant* dictionary, const char* name, uint32_t otherwise = 0);
// Whether a PropertiesChanged signal is about one of them.
bool mentions(GVariant* propertiesChanged, std::initializer_list<const char*> names);

}  // namespace velto::gtk
