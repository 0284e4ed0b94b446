// The file of the defaults store, open: a SQLite database in which each value is a row, and each entry of a
// dictionary a row of its own. Used by DefaultsStore, under its lock. All operations throw
// std::runtime_error.
#pragma once

#include "velto/gtk/store/Database.h"
#include "velto/platform/NSUserDefaults.h"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace velto::gtk {

class DefaultsFile {
 public:
  // Opens or makes the file, with its folder. One that cannot be written is opened for reading, if that
  // works. A broken one is kept under another name and a new one begun: found so now, or told by its inode.
  static std::unique_ptr<DefaultsFile> open(const std::filesystem::path& path,
                                            std::optional<ino_t> broken = {});
  ~DefaultsFile();

  bool isWritable() const { return writable_; }
  bool isNew() const { return new_; }  // begun by this object
  ino_t inode() const { return inode_; }
  // Whether the file still has its name: somebody may have deleted it, or another process found it broken.
  bool isInPlace() const;

  // A number that changes whenever another connection has committed something. Costs a few microseconds.
  int64_t version();

  std::optional<DefaultsValue> read(const std::string& key);
  // Each of these is in the operating system's hands when it returns.
  void write(const std::string& key, const DefaultsValue& value);
  void remove(const std::string& key);
  void writeEntry(const std::string& key, const std::string& entry, const std::optional<std::string>& value);

 private:
  struct Statements;

  DefaultsFile(const std::filesystem::path& path, const std::string& pathOrURI, int flags);
  static std::unique_ptr<DefaultsFile> openInAnyWay(const std::filesystem::path& path);
  static std::unique_ptr<DefaultsFile> openForReading(const std::filesystem::path& path);
  void prepareForWriting();
  void makeTables();

  std::filesystem::path path_;
  Database database_;
  ino_t inode_;
  bool writable_ = false;
  bool new_ = false;
  std::unique_ptr<Statements> statements_;
};

}  // namespace velto::gtk
