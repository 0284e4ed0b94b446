// Whether a page may make the system open something: only when a person has touched that page just before.
// Part of the application service; web views say when they act for a page. Main thread only.
#pragma once

#include <chrono>

namespace velto::gtk {

class TouchGuard {
 public:
  // How long a touch counts.
  static constexpr std::chrono::seconds lasts{2};

  // Off: every page may.
  explicit TouchGuard(bool on) : on_(on) {}

  // While one lives, what is opened is opened for a page.
  class Acting {
   public:
    Acting(TouchGuard& guard, bool mayOpen) : guard_(guard), before_(guard.mayOpen_) {
      guard_.mayOpen_ = mayOpen;
    }
    Acting(const Acting&) = delete;
    Acting& operator=(const Acting&) = delete;
    ~Acting() { guard_.mayOpen_ = before_; }

   private:
    TouchGuard& guard_;
    bool before_;
  };

  bool mayOpen() const { return !on_ || mayOpen_; }

 private:
  bool on_;
  bool mayOpen_ = true;  // the application itself
};

}  // namespace velto::gtk
