// The persistent store: values in a SQLite file, and copies in memory of those that were asked for, so that
// reading one takes microseconds. Any thread; other processes may use the same file. What a call has
// acknowledged outlives a kill of the process.
#pragma once

#include "velto/gtk/store/DefaultsFile.h"
#include "velto/platform/NSUserDefaults.h"

#include <filesystem>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace velto::gtk {

class DefaultsStore : public NSUserDefaults {
 public:
  // When the file is opened: by the first use, or by a thread of its own, while the caller has other things to do. The
  // first use waits for what is left of that; so does the destructor.
  enum class Opening { AtFirstUse, Ahead };
  explicit DefaultsStore(std::filesystem::path file, Opening opening = Opening::AtFirstUse);
  ~DefaultsStore() override;

  std::optional<DefaultsValue> objectForKey(const std::string& key) const override;
  void setObject(const std::string& key, const DefaultsValue& value) override;
  void removeObjectForKey(const std::string& key) override;
  void setEntry(const std::string& key, const std::string& entry,
                const std::optional<std::string>& value) override;
  // Only looks whether there is a file to write in: each change is written when it is made.
  void synchronize() override;

 private:
  struct Known {
    std::optional<DefaultsValue> value;  // nothing: the key has none
    int64_t version;                     // of the file, when it was read
  };
  enum class Access { Read, Write };

  template <class Use>
  void withFile(Access access, const Use& use) const;
  void openAhead() const;
  void open(std::optional<ino_t> broken) const;
  template <class Change>
  int64_t change(const Change& change);

  const std::filesystem::path path_;
  mutable std::mutex mutex_;
  mutable std::unique_ptr<DefaultsFile> file_;                        // null while it cannot be opened
  mutable int64_t opened_ = std::numeric_limits<int64_t>::min() / 2;  // last tried, monotonic microseconds
  mutable std::unordered_map<std::string, Known> known_;
  std::thread opening_;
};

}  // namespace velto::gtk
