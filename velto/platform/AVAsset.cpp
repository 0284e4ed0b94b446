// Who waits for a video to be known.
#include "velto/platform/AVAsset.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"

#include <utility>

namespace velto {

std::shared_ptr<AVAsset> AVAsset::assetWithURL(const NSURL& url) {
  const auto scheme = lowercased(url.scheme().value_or(""));
  if ((scheme != "http" && scheme != "https") || url.host().value_or("").empty()) return nullptr;
  return std::shared_ptr<AVAsset>(new AVAsset(url));
}

void AVAsset::loadValuesAsynchronously(std::function<void()> completion) {
  if (!loaded_) return waiting_.push_back(std::move(completion));
  Platform::current().mainQueue().post(std::move(completion));
}

void AVAsset::playerLoaded(CMTime duration) {
  if (std::exchange(loaded_, true)) return;
  duration_ = duration;
  for (auto& completion : std::exchange(waiting_, {}))
    Platform::current().mainQueue().post(std::move(completion));
}

}  // namespace velto
