// Which platform is installed, and the singletons that live on it.
#include "velto/platform/Platform.h"

#include <atomic>
#include <stdexcept>

namespace velto {
namespace {
std::atomic<Platform*> installed{nullptr};

// Of an application that ends without uninstalling. What is destroyed after this, such as a banner in a global
// variable, finds no platform.
struct Owner {
  std::shared_ptr<Platform> platform;
  ~Owner() {
    platform.reset();
    installed = nullptr;
  }
};
Owner& owner() {
  static Owner instance;
  return instance;
}
}  // namespace

Platform& Platform::current() {
  if (auto* platform = installed.load()) return *platform;
  throw std::logic_error(
      "velto: no platform is installed; call velto::gtk::install() or velto::headless::install() first");
}

Platform* Platform::currentOrNull() {
  return installed.load();
}

void Platform::install(std::shared_ptr<Platform> platform) {
  if (auto* old = installed.load()) {
    old->notificationCenter().postNotification({notificationPlatformWillGo, {}});
    old->dropSingletons();
  }
  installed = platform.get();
  owner().platform.swap(platform);
}

std::shared_ptr<void> Platform::singleton(std::type_index type, Maker make) {
  std::lock_guard lock(singletonMutex_);
  if (auto found = singletons_.find(type); found != singletons_.end()) return found->second;
  auto made = make();
  singletons_.emplace(type, made);
  singletonOrder_.push_back(type);
  return made;
}

void Platform::dropSingletons() {
  // Latest first, since a later one may use an earlier one while it goes.
  while (!singletonOrder_.empty()) {
    auto node = singletons_.extract(singletonOrder_.back());
    singletonOrder_.pop_back();
  }
}

}  // namespace velto
