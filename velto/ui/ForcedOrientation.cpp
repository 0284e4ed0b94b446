// Who forces the device, in which order.
#include "velto/ui/ForcedOrientation.h"

#include "velto/platform/Platform.h"
#include "velto/ui/UIViewControllerUISDKVelto.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace velto {

// Those that have turned the device, in the order in which they first did. Each leaves with its end.
struct ForcedOrientation::All {
  std::vector<ForcedOrientation*> forcing;
  ForcedOrientation* now = nullptr;  // that is about to
};

// What ads themselves have forced, this one or another, is not what was there before it; and what another
// turns is that one's to turn back.
void ForcedOrientation::deviceTurned(int64_t to) {
  const auto all = Platform::shared<All>();
  const bool isLast = !all->forcing.empty() && all->forcing.back() == this;
  if (forced_ == 0 && all->now && all->now != this) return;
  if (forced_ != 0 && (to == forced_ || !isLast)) return;
  original_ = to;
}

void ForcedOrientation::turning(const std::function<void()>& turn) {
  const auto all = Platform::shared<All>();
  const auto before = std::exchange(all->now, this);
  turn();
  all->now = before;
}

void ForcedOrientation::hold(int64_t orientation) {
  if (forced_ == 0) Platform::shared<All>()->forcing.push_back(this);
  forced_ = orientation;
}

// An ad that has forced the device since then stays with its wish, and has what was there before both to go
// back to.
void ForcedOrientation::restore() {
  forced_ = 0;
  const auto original = std::exchange(original_, std::nullopt);
  if (!Platform::currentOrNull()) return;
  auto& forcing = Platform::shared<All>()->forcing;
  const auto own = std::find(forcing.begin(), forcing.end(), this);
  auto* later = own == forcing.end() || own + 1 == forcing.end() ? nullptr : own[1];
  if (own != forcing.end()) forcing.erase(own);
  if (!original) return;
  if (later)
    later->original_ = original;
  else
    UIViewControllerUISDKVelto::setOrientation(*original, false);
}

}  // namespace velto
