// Opens nothing, remembers all.
#include "velto/headless/services/ScriptedApplication.h"

#include "velto/headless/VirtualQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"

namespace velto::headless {

ScriptedApplication::ScriptedApplication(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}

void ScriptedApplication::enterBackground() {
  queue_->requireMain("ScriptedApplication::enterBackground");
  Platform::current().notificationCenter().postNotification(
      {UIApplicationDidEnterBackgroundNotification, {}});
}

void ScriptedApplication::enterForeground() {
  queue_->requireMain("ScriptedApplication::enterForeground");
  Platform::current().notificationCenter().postNotification(
      {UIApplicationWillEnterForegroundNotification, {}});
}

void ScriptedApplication::setLocked(bool locked) {
  queue_->requireMain("ScriptedApplication::setLocked");
  locked_ = locked;
  Platform::current().notificationCenter().postNotification(
      {locked ? UIApplicationProtectedDataWillBecomeUnavailable
              : UIApplicationProtectedDataDidBecomeAvailable,
       {}});
}

bool ScriptedApplication::canOpenURL(const NSURL& url) const {
  queue_->requireMain("UIApplication::canOpenURL");
  const auto scheme = url.scheme();
  return scheme && schemes.contains(lowercased(*scheme));
}

void ScriptedApplication::openURL(const NSURL& url, const std::map<std::string, std::string>& options,
                                  std::function<void(bool)> completion) {
  const bool refuses = pagesNeedTouch_ && *untouchedPage_;
  const bool opens = !refuses && canOpenURL(url);
  (refuses ? refused : opened).push_back({url, options});
  if (completion) queue_->post([completion = std::move(completion), opens] { completion(opens); });
}

}  // namespace velto::headless
