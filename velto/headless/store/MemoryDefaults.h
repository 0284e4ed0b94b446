// The store of the headless platform: a map in memory that can be told to fail. It outlives its platform when
// the test keeps it, so handing it to Platform::install plays a relaunch of the host application. Any thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSUserDefaults.h"

#include <map>
#include <mutex>
#include <string>

namespace velto::headless {

class VELTO_EXPORT MemoryDefaults : public NSUserDefaults {
 public:
  // For tests. While true, set, remove and synchronize throw, as with a full or read-only medium.
  void failWrites(bool fail);
  size_t writes() const;            // acknowledged changes so far
  size_t synchronizations() const;  // acknowledged ones
  std::map<std::string, DefaultsValue> entries() const;

  std::optional<DefaultsValue> objectForKey(const std::string& key) const override;
  void setObject(const std::string& key, const DefaultsValue& value) override;
  void removeObjectForKey(const std::string& key) override;
  void setEntry(const std::string& key, const std::string& entry,
                const std::optional<std::string>& value) override;
  void synchronize() override;

 private:
  void requireWritable() const;  // under the lock

  mutable std::mutex mutex_;
  std::map<std::string, DefaultsValue> values_;
  bool failing_ = false;
  size_t writes_ = 0;
  size_t synchronizations_ = 0;
};

}  // namespace velto::headless
