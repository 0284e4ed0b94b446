// The orientation that one ad forces on the device, and the one of before, to go back to. Several ads may force the
// device at a time: the last has its wish, and each leaves without undoing another's. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace velto {

class ForcedOrientation {
 public:
  ForcedOrientation() = default;
  ForcedOrientation(const ForcedOrientation&) = delete;
  ForcedOrientation& operator=(const ForcedOrientation&) = delete;

  // The device was turned, by a person or by an ad.
  void deviceTurned(int64_t to);
  // Does the turn for the ad.
  void turning(const std::function<void()>& turn);
  // The ad holds the device that way from here on.
  void hold(int64_t orientation);
  // The ad's wish ends. May be called when it has none, and after its platform.
  void restore();

 private:
  struct All;
  std::optional<int64_t> original_;
  int64_t forced_ = 0;
};

}  // namespace velto
