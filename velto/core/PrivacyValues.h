// What the person decided about their data, in the store. A decision holds from the moment it is passed on, whatever
// the medium does: one that the store refuses stands in memory, and is stored when that works again. Used by
// VeltoDataStore. Any thread.
#pragma once

#include "velto/platform/NSUserDefaults.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace velto {

class PrivacyValues {
 public:
  static std::optional<DefaultsValue> value(const std::string& key);
  static void store(const std::string& key, const std::optional<DefaultsValue>& value);
  // Tries again; nothing where nothing was refused.
  static void storeRefused();

 private:
  std::mutex mutex_;
  std::map<std::string, std::optional<DefaultsValue>> refused_;
};

}  // namespace velto
