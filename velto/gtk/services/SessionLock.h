// Whether the person's session is locked, by what the login service (logind) knows. Told on the main thread.
#pragma once

#include "velto/gtk/services/BusService.h"
#include "velto/platform/MainQueue.h"

#include <functional>

namespace velto::gtk {

class SessionLock : public BusService {
 public:
  // `changed` is called on the main thread after each change; at first the session counts as unlocked.
  SessionLock(MainQueue& mainQueue, std::function<void(bool locked)> changed)
      : BusService("org.freedesktop.login1"), mainQueue_(mainQueue), changed_(std::move(changed)) {}

 private:
  void read() override;
  void forget() override { set(false); }
  void appeared() override;
  void heard(const std::string& path, const std::string& member, GVariant* parameters) override;
  void set(bool locked);

  static constexpr char path[] = "/org/freedesktop/login1/session/auto";
  static constexpr char interface[] = "org.freedesktop.login1.Session";
  MainQueue& mainQueue_;
  std::function<void(bool)> changed_;
  bool locked_ = false;
};

}  // namespace velto::gtk
