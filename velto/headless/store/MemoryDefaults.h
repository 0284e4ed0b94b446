// The store of the headless platform: a map in memory that can be told to fail as a file does. It outlives its
// platform when the test keeps it, so handing it to Platform::install plays a relaunch of the host application. Any
// thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSUserDefaults.h"

#include <map>
#include <mutex>
#include <set>
#include <string>

namespace velto::headless {

class VELTO_EXPORT MemoryDefaults : public NSUserDefaults {
 public:
  // For tests. While true, set, remove and synchronize throw, as with a full or read-only medium, or one that another
  // process holds locked. The second form lets so many calls through before.
  void failWrites(bool fail);
  void failWritesAfter(size_t calls);
  // While true, the medium cannot be read either: what this run of the application has read or written stands as it
  // was last known, all else is as if it were not there.
  void failReads(bool fail);
  // The file is found to be broken, and is begun anew with what this run has read or written; all else is lost.
  void breakFile();
  // A new run of the application begins, which knows nothing yet. Platform::install does it.
  void relaunched();
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
  // Under the lock.
  void requireWritable();
  void changed(const std::string& key);

  mutable std::mutex mutex_;
  std::map<std::string, DefaultsValue> values_;
  mutable std::set<std::string> known_;  // keys that this run has read or written
  std::optional<size_t> writesLeft_;     // nothing: any number
  bool readsFail_ = false;
  size_t writes_ = 0;
  size_t synchronizations_ = 0;
};

}  // namespace velto::headless
