// Puts the services together.
#include "velto/headless/HeadlessPlatform.h"

#include <algorithm>

namespace velto::headless {

std::shared_ptr<Platform> Platform::install(std::shared_ptr<MemoryDefaults> defaults) {
  if (!defaults) defaults = std::make_shared<MemoryDefaults>();
  defaults->relaunched();
  std::shared_ptr<Platform> platform(new Platform(std::move(defaults)));
  velto::Platform::install(platform);
  return platform;
}

void Platform::uninstall() {
  velto::Platform::install(nullptr);
}

Platform::Platform(std::shared_ptr<MemoryDefaults> defaults) : defaults_(std::move(defaults)) {
  mainBundle_->identifier = "org.example.host";
  mainBundle_->information = {{"CFBundleName", "Host"}, {"CFBundleShortVersionString", "1.0"}};
  veltoBundle_->identifier = "com.velto.VeltoFramework";
  veltoBundle_->information = {{"CFBundleName", "VeltoFramework"}, {"CFBundleShortVersionString", "4.0.10"}};
  bundles_ = {mainBundle_, veltoBundle_};
}

// What waits in the queue may hold the last pointers to views
// and controllers, so it goes while the services still stand.
Platform::~Platform() {
  queue_->clear();
}

std::shared_ptr<NSBundle> Platform::bundleWithIdentifier(const std::string& identifier) {
  const auto found = std::find_if(bundles_.begin(), bundles_.end(),
                                  [&](const auto& bundle) { return bundle->identifier == identifier; });
  return found == bundles_.end() ? nullptr : *found;
}

}  // namespace velto::headless
