// A video behind a URL, and what is known of it. It is loaded
// by the player that it is given to. Main thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/CMTime.h"
#include "velto/platform/foundation/NSURL.h"

#include <functional>
#include <memory>
#include <vector>

namespace velto {

class VELTO_EXPORT AVAsset {
 public:
  // Null for anything but http and https: what a page names must not lead into the device.
  static std::shared_ptr<AVAsset> assetWithURL(const NSURL& url);

  const NSURL& url() const { return url_; }

  // Exact once loaded. Without a timescale before, and for a stream that knows no end.
  CMTime duration() const { return duration_; }
  bool isLoaded() const { return loaded_; }

  // Calls back later on the main queue, once it is known how long the video is, or that this will not be
  // known. Never, when its player is cancelled before.
  void loadValuesAsynchronously(std::function<void()> completion);

  // For players, once.
  void playerLoaded(CMTime duration);

 private:
  explicit AVAsset(NSURL url) : url_(std::move(url)) {}

  NSURL url_;
  CMTime duration_;
  bool loaded_ = false;
  std::vector<std::function<void()>> waiting_;
};

// What a player plays.
struct VELTO_EXPORT AVPlayerItem {
  std::shared_ptr<AVAsset> asset;

  static std::shared_ptr<AVPlayerItem> playerItemWithAsset(std::shared_ptr<AVAsset> asset) {
    return std::make_shared<AVPlayerItem>(AVPlayerItem{std::move(asset)});
  }
};

}  // namespace velto
