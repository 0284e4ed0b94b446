// Whether a page may make the system open something: only when a person has touched that page just before.
// Part of the application service; web views say when they act for a page. Main thread only.
#pragma once

#include <chrono>
#include <memory>
#include <utility>

namespace velto::gtk {

class TouchGuard {
 public:
  // How long a touch counts.
  static constexpr std::chrono::seconds lasts{2};

  // Off: every page may.
  TouchGuard(bool on, std::chrono::milliseconds leastTime) : leastTimeUnderTouch(leastTime), on_(on) {}

  // For how long a page has to be where it is touched.
  const std::chrono::milliseconds leastTimeUnderTouch;

  // While one lives, what is opened is opened for a page.
  class Acting {
   public:
    Acting(TouchGuard& guard, bool mayOpen)
        : mayOpen_(guard.mayOpen_), before_(std::exchange(*mayOpen_, mayOpen)) {}
    Acting(const Acting&) = delete;
    Acting& operator=(const Acting&) = delete;
    ~Acting() { *mayOpen_ = before_; }

   private:
    const std::shared_ptr<bool> mayOpen_;  // a delegate that the page's act leads to may end the platform
    const bool before_;
  };

  bool mayOpen() const { return !on_ || *mayOpen_; }

 private:
  bool on_;
  std::shared_ptr<bool> mayOpen_ = std::make_shared<bool>(true);  // the application itself
};

}  // namespace velto::gtk
