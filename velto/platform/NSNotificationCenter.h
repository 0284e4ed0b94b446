// A process-wide notice board, shared by all platforms: objects
// post a named notification, observers of that name hear it.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace velto {

// Base of the classes whose instances are sent as a
// notification's object; receivers tell them apart by their type.
class VELTO_EXPORT NotificationObject {
 public:
  virtual ~NotificationObject() = default;
};

struct NSNotification {
  std::string name;
  std::variant<std::monostate, int64_t, std::string, std::shared_ptr<NotificationObject>> object;

  // The object as a T, or nothing when it is anything else.
  template <class T>
  std::shared_ptr<T> objectAs() const {
    const auto* held = std::get_if<std::shared_ptr<NotificationObject>>(&object);
    return held ? std::dynamic_pointer_cast<T>(*held) : nullptr;
  }
};

// Any thread. Observers are called on the poster's thread, inside the post, in the order they were added.
class VELTO_EXPORT NSNotificationCenter {
 public:
  using Observer = std::function<void(const NSNotification&)>;

  void postNotification(const NSNotification& notification);

  // Observes until the handle goes. An observer removed during a post is not called any more by that post.
  Handle addObserver(std::string name, Observer observer);

 private:
  struct Entry {
    std::string name;
    Observer observer;
  };
  struct List {
    std::mutex mutex;
    std::vector<std::shared_ptr<Entry>> entries;
  };
  std::shared_ptr<List> list_ = std::make_shared<List>();
};

}  // namespace velto
