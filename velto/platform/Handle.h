// A move-only right to be called back. Timers, observers, display links and
// prepared web content are all returned as one: destroying it, or calling cancel(),
// ends the callbacks. Used by all of the library; supplied by platforms.
#pragma once

#include "velto/Export.h"

#include <functional>
#include <utility>

namespace velto {

class [[nodiscard]] VELTO_EXPORT Handle {
 public:
  Handle() = default;
  explicit Handle(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  Handle(Handle&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    if (this != &other) {
      cancel();
      cancel_ = std::exchange(other.cancel_, nullptr);
    }
    return *this;
  }
  ~Handle() { cancel(); }

  // Ends the callbacks now. Safe to call inside the callback itself, and more than once.
  void cancel() {
    if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
  }
  explicit operator bool() const { return static_cast<bool>(cancel_); }

 private:
  std::function<void()> cancel_;
};

}  // namespace velto
