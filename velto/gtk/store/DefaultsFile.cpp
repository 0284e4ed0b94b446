// Opening, tables and statements of the defaults store.
#include "velto/gtk/store/DefaultsFile.h"

#include "velto/platform/foundation/GMemory.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velto::gtk {
namespace {

enum Kind { Text = 0, Number = 1, Dictionary = 2 };

// Later versions may add tables and columns; what these hold stays readable by this one.
constexpr int schemaVersion = 1;
constexpr char makeSchema[] =
    "CREATE TABLE value(key TEXT NOT NULL PRIMARY KEY, kind INTEGER NOT NULL, content) WITHOUT ROWID;"
    "CREATE TABLE entry(key TEXT NOT NULL, name TEXT NOT NULL, content TEXT NOT NULL, PRIMARY KEY(key, "
    "name)) WITHOUT ROWID;"
    "PRAGMA user_version = 1;";

// Writers of other processes hold the file for microseconds;
// only a stopped process makes anybody wait this long.
constexpr int busyMilliseconds = 2000;

// Holds other processes of the library off while a file is made or moved.
class FolderLock {
 public:
  explicit FolderLock(const std::filesystem::path& folder)
      : file_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (file_ >= 0) flock(file_, LOCK_EX);
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock() {
    if (file_ >= 0) close(file_);
  }

 private:
  int file_;
};

ino_t inodeOf(const std::filesystem::path& path) {
  struct stat facts = {};
  return stat(path.c_str(), &facts) == 0 ? facts.st_ino : 0;
}

off_t sizeOf(const std::filesystem::path& path) {
  struct stat facts = {};
  return stat(path.c_str(), &facts) == 0 ? facts.st_size : 0;
}

// Whether other users of this machine can put anything there. Somebody who runs as root may do so for another.
bool isOwn(const struct stat& facts) {
  const uid_t user = geteuid();
  return (facts.st_uid == user || user == 0) && (facts.st_mode & S_IWOTH) == 0;
}

// Where others can write, such as in a folder for temporary files, they have the last word about what is in the store, and
// about which file a link leads to: nothing is told to such a place, nor believed of it.
void requireOwn(const std::filesystem::path& path) {
  struct stat folder = {};
  struct stat file = {};
  const bool isThere = lstat(path.c_str(), &file) == 0;
  const bool isOwnFile = !isThere || (S_ISREG(file.st_mode) && isOwn(file));
  if (stat(path.parent_path().c_str(), &folder) != 0 || !isOwn(folder) || !isOwnFile)
    throw DatabaseError(SQLITE_PERM, "the store: " + path.string() + " is not this user's own");
}

// SQLite would make it readable for everybody; the files it puts beside take this one's rights.
void makePrivateFile(const std::filesystem::path& path) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file >= 0) close(file);  // SQLite tells what is wrong
}

// Whatever may still be read from it stays for people to look at, and the log belongs to it.
void moveAside(const std::filesystem::path& path) {
  const auto kept = path.string() + ".damaged-" + std::to_string(g_get_real_time());
  std::filesystem::rename(path, kept);
  for (const char* companion : {"-wal", "-shm"}) {
    std::error_code mayBeAbsent;
    std::filesystem::rename(path.string() + companion, kept + companion, mayBeAbsent);
  }
}

int64_t singleNumber(const Database& database, const char* sql) {
  int64_t number = 0;
  Statement(database, sql).forEachRow([&](const Statement& row) { number = row.integer(0); });
  return number;
}

}  // namespace

// Columns are named, and rows changed and not replaced: a later version may have more of them.
struct DefaultsFile::Statements {
  explicit Statements(const Database& database)
      : version(database, "PRAGMA data_version"),
        read(database,
             "SELECT kind, value.content, entry.name, entry.content FROM value LEFT JOIN entry USING (key) "
             "WHERE value.key = ?"),
        write(database,
              "INSERT INTO value(key, kind, content) VALUES (?, ?, ?) ON CONFLICT (key) DO UPDATE SET"
              " kind = excluded.kind, content = excluded.content"),
        makeDictionary(database,
                       "INSERT INTO value(key, kind, content) VALUES (?, ?, NULL) ON CONFLICT (key) DO "
                       "UPDATE SET kind = excluded.kind,"
                       " content = NULL WHERE kind <> excluded.kind"),
        remove(database, "DELETE FROM value WHERE key = ?"),
        writeEntry(
            database,
            "INSERT INTO entry(key, name, content) VALUES (?, ?, ?) ON CONFLICT (key, name) DO UPDATE SET"
            " content = excluded.content"),
        removeEntry(database, "DELETE FROM entry WHERE key = ? AND name = ?"),
        removeEntries(database, "DELETE FROM entry WHERE key = ?") {}

  Statement version, read, write, makeDictionary, remove, writeEntry, removeEntry, removeEntries;
};

std::unique_ptr<DefaultsFile> DefaultsFile::open(const std::filesystem::path& path,
                                                 std::optional<ino_t> broken) {
  const auto folder = path.parent_path();
  g_mkdir_with_parents(folder.c_str(), 0700);
  const FolderLock lock(folder);
  if (broken && inodeOf(path) == *broken) moveAside(path);
  try {
    return openInAnyWay(path);
  } catch (const DatabaseError& error) {
    if (!error.isCorruption()) throw;
  }
  moveAside(path);
  return openInAnyWay(path);
}

std::unique_ptr<DefaultsFile> DefaultsFile::openInAnyWay(const std::filesystem::path& path) {
  requireOwn(path);
  makePrivateFile(path);
  try {
    return std::unique_ptr<DefaultsFile>(new DefaultsFile(path, path.string(), SQLITE_OPEN_READWRITE));
  } catch (const DatabaseError& error) {
    if (error.isCorruption()) throw;
    if (auto readable = openForReading(path)) return readable;
    throw;
  }
}

std::unique_ptr<DefaultsFile> DefaultsFile::openForReading(const std::filesystem::path& path) {
  // On a medium that cannot be written even a reader's index
  // of the log has no place; "immutable" does without.
  const GText uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  for (const char* how : {"?mode=ro", "?immutable=1"}) {
    try {
      return std::unique_ptr<DefaultsFile>(
          new DefaultsFile(path, std::string(uri.get()) + how, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI));
    } catch (const DatabaseError&) {
      continue;
    }
  }
  return nullptr;
}

DefaultsFile::DefaultsFile(const std::filesystem::path& path, const std::string& pathOrURI, int flags)
    : path_(path), database_(pathOrURI, flags), inode_(inodeOf(path)) {
  sqlite3_busy_timeout(database_.handle(), busyMilliseconds);
  writable_ = sqlite3_db_readonly(database_.handle(), nullptr) == 0;
  if (writable_) prepareForWriting();
  statements_ = std::make_unique<Statements>(database_);
}

DefaultsFile::~DefaultsFile() = default;

void DefaultsFile::prepareForWriting() {
  // What is begun here may be lost with the machine's power,
  // as nothing is in it yet; so nobody waits for the disk.
  database_.execute("PRAGMA synchronous = OFF");
  database_.execute("PRAGMA journal_mode = WAL");
  const auto found = singleNumber(database_, "PRAGMA user_version");
  if (found < schemaVersion)
    makeTables();
  else if (sizeOf(path_.string() + "-wal") == 0)
    database_.execute(("PRAGMA user_version = " + std::to_string(found)).c_str());  // begins the log
  // From here on a killed process loses nothing, and lost power at most the last
  // moments, never the file. Waiting for the disk at each write ("FULL") would
  // take milliseconds of the main thread, a hundred of them at registration.
  database_.execute("PRAGMA synchronous = NORMAL");
}

void DefaultsFile::makeTables() {
  Transaction transaction(database_);
  database_.execute(makeSchema);
  transaction.commit();
  new_ = true;
}

bool DefaultsFile::isInPlace() const {
  return inodeOf(path_) == inode_;
}

int64_t DefaultsFile::version() {
  int64_t version = 0;
  statements_->version.forEachRow([&](const Statement& row) { version = row.integer(0); });
  return version;
}

std::optional<DefaultsValue> DefaultsFile::read(const std::string& key) {
  std::optional<DefaultsValue> value;
  const auto add = [&](const Statement& row) {
    switch (row.integer(0)) {
      case Text:
        value = row.text(1);
        break;
      case Number:
        value = row.number(1);
        break;
      case Dictionary:
        if (!value) value = DefaultsDictionary{};
        if (!row.isNull(2)) std::get<DefaultsDictionary>(*value).emplace(row.text(2), row.text(3));
        break;
      default:  // of a later version
        break;
    }
  };
  statements_->read.forEachRow(add, key);
  return value;
}

void DefaultsFile::write(const std::string& key, const DefaultsValue& value) {
  Transaction transaction(database_);
  statements_->removeEntries.run(key);
  if (const auto* text = std::get_if<std::string>(&value)) statements_->write.run(key, Text, *text);
  if (const auto* number = std::get_if<double>(&value)) statements_->write.run(key, Number, *number);
  if (const auto* dictionary = std::get_if<DefaultsDictionary>(&value)) {
    statements_->write.run(key, Dictionary, nullptr);
    for (const auto& [name, content] : *dictionary) statements_->writeEntry.run(key, name, content);
  }
  transaction.commit();
}

void DefaultsFile::remove(const std::string& key) {
  Transaction transaction(database_);
  statements_->removeEntries.run(key);
  statements_->remove.run(key);
  transaction.commit();
}

void DefaultsFile::writeEntry(const std::string& key, const std::string& entry,
                              const std::optional<std::string>& value) {
  Transaction transaction(database_);
  statements_->makeDictionary.run(key, Dictionary);
  if (value)
    statements_->writeEntry.run(key, entry, *value);
  else
    statements_->removeEntry.run(key, entry);
  transaction.commit();
}

}  // namespace velto::gtk
