// The notice board: a list of observers under a lock that is never held while one of them runs.
#include "velto/platform/NSNotificationCenter.h"

#include <algorithm>

namespace velto {

void NSNotificationCenter::postNotification(const NSNotification& notification) {
  std::vector<std::weak_ptr<Entry>> due;
  {
    std::lock_guard lock(list_->mutex);
    for (const auto& entry : list_->entries)
      if (entry->name == notification.name) due.push_back(entry);
  }
  for (const auto& weak : due)
    if (auto entry = weak.lock()) entry->observer(notification);
}

Handle NSNotificationCenter::addObserver(std::string name, Observer observer) {
  auto entry = std::make_shared<Entry>(Entry{std::move(name), std::move(observer)});
  {
    std::lock_guard lock(list_->mutex);
    list_->entries.push_back(entry);
  }
  return Handle([list = std::weak_ptr(list_), weak = std::weak_ptr(entry)] {
    if (auto alive = list.lock()) {
      std::lock_guard lock(alive->mutex);
      std::erase(alive->entries, weak.lock());
    }
  });
}

}  // namespace velto
