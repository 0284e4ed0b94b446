// The store in memory.
#include "velto/headless/store/MemoryDefaults.h"

#include <stdexcept>

namespace velto::headless {

void MemoryDefaults::requireWritable() {
  if (!writesLeft_) return;
  if (*writesLeft_ == 0) throw std::runtime_error("the store cannot be written");
  --*writesLeft_;
}

void MemoryDefaults::changed(const std::string& key) {
  known_.insert(key);
  ++writes_;
}

void MemoryDefaults::failWrites(bool fail) {
  std::lock_guard lock(mutex_);
  writesLeft_ = fail ? std::optional<size_t>(0) : std::nullopt;
}

void MemoryDefaults::failWritesAfter(size_t calls) {
  std::lock_guard lock(mutex_);
  writesLeft_ = calls;
}

void MemoryDefaults::failReads(bool fail) {
  std::lock_guard lock(mutex_);
  readsFail_ = fail;
}

void MemoryDefaults::breakFile() {
  std::lock_guard lock(mutex_);
  std::erase_if(values_, [&](const auto& entry) { return !known_.contains(entry.first); });
}

void MemoryDefaults::relaunched() {
  std::lock_guard lock(mutex_);
  known_.clear();
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
  if (readsFail_ && !known_.contains(key)) return std::nullopt;
  known_.insert(key);
  const auto found = values_.find(key);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void MemoryDefaults::setObject(const std::string& key, const DefaultsValue& value) {
  std::lock_guard lock(mutex_);
  requireWritable();
  values_.insert_or_assign(key, value);
  changed(key);
}

void MemoryDefaults::removeObjectForKey(const std::string& key) {
  std::lock_guard lock(mutex_);
  requireWritable();
  values_.erase(key);
  changed(key);
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
  changed(key);
}

void MemoryDefaults::synchronize() {
  std::lock_guard lock(mutex_);
  requireWritable();
  ++synchronizations_;
}

}  // namespace velto::headless
