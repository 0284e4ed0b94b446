// Decisions that outlast a failing store.
#include "velto/core/PrivacyValues.h"

#include "velto/core/VeltoDataStore.h"
#include "velto/platform/Platform.h"

namespace velto {

std::optional<DefaultsValue> PrivacyValues::value(const std::string& key) {
  const auto values = Platform::shared<PrivacyValues>();
  std::lock_guard lock(values->mutex_);
  const auto refused = values->refused_.find(key);
  return refused == values->refused_.end() ? Platform::current().standardUserDefaults().objectForKey(key)
                                           : refused->second;
}

void PrivacyValues::store(const std::string& key, const std::optional<DefaultsValue>& value) {
  const auto values = Platform::shared<PrivacyValues>();
  std::lock_guard lock(values->mutex_);
  if (VeltoDataStore::storeValue(value, key))
    values->refused_.erase(key);
  else
    values->refused_.insert_or_assign(key, value);
}

void PrivacyValues::storeRefused() {
  const auto values = Platform::shared<PrivacyValues>();
  std::lock_guard lock(values->mutex_);
  std::erase_if(values->refused_,
                [](const auto& value) { return VeltoDataStore::storeValue(value.second, value.first); });
}

}  // namespace velto
