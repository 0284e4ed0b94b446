// What media systems have in common.
#include "velto/platform/MediaSystem.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <cmath>
#include <utility>

namespace velto {

void MediaSystem::prepare(std::function<void()> ready) {
  Platform::current().mainQueue().post(std::move(ready));
}

// The last file counts as much as all before it: networks change, and one measure is rough.
void MediaSystem::carried(double kilobits) {
  if (!(kilobits > 0) || !std::isfinite(kilobits)) return;
  bandwidth_ = bandwidth_ ? (*bandwidth_ + kilobits) / 2 : kilobits;
}

}  // namespace velto
