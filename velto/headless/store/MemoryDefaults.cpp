// The store in memory.
#include "velto/headless/store/MemoryDefaults.h"

#include <stdexcept>

namespace velto::headless {

void MemoryDefaults::requireWritable() const {
  if (failing_) throw std::runtime_error("the store cannot be written");
}

void MemoryDefaults::failWrites(bool fail) {
  std::lock_guard lock(mutex_);
  failing_ = fail;
}

size_t MemoryDefaults::writes() const {
  std::lock_guard lock(mutex_);
  return writes_;
}

size_t MemoryDefaults::synchronizations() const {
  std::lock_guard lock(mutex_);
  return synchronizations_;
}

std::map<std::string, DefaultsValue> MemoryDefaults::entries() const {
  std::lock_guard lock(mutex_);
  return values_;
}

std::optional<DefaultsValue> MemoryDefaults::objectForKey(const std::string& key) const {
  std::lock_guard lock(mutex_);
  const auto found = values_.find(key);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void MemoryDefaults::setObject(const std::string& key, const DefaultsValue& value) {
  std::lock_guard lock(mutex_);
  requireWritable();
  values_.insert_or_assign(key, value);
  ++writes_;
}

void MemoryDefaults::removeObjectForKey(const std::string& key) {
  std::lock_guard lock(mutex_);
  requireWritable();
  values_.erase(key);
  ++writes_;
}

void MemoryDefaults::setEntry(const std::string& key, const std::string& entry,
                              const std::optional<std::string>& value) {
  std::lock_guard lock(mutex_);
  requireWritable();
  auto& held = values_.try_emplace(key, DefaultsDictionary{}).first->second;
  if (!std::holds_alternative<DefaultsDictionary>(held)) held = DefaultsDictionary{};
  auto& dictionary = std::get<DefaultsDictionary>(held);
  if (value)
    dictionary[entry] = *value;
  else
    dictionary.erase(entry);
  ++writes_;
}

void MemoryDefaults::synchronize() {
  std::lock_guard lock(mutex_);
  requireWritable();
  ++synchronizations_;
}

}  // namespace velto::headless
