// The values known, kept true to a file that others change too.
#include "velto/gtk/store/DefaultsStore.h"

#include "velto/gtk/Threads.h"

#include <glib.h>

#include <system_error>

namespace velto::gtk {
namespace {

constexpr int64_t stale = -1;  // no version of any file
// A medium that failed is not asked again by each reader: opening costs most of a millisecond.
constexpr int64_t patience = G_USEC_PER_SEC;

}  // namespace

DefaultsStore::DefaultsStore(std::filesystem::path file, Opening opening) : path_(std::move(file)) {
  if (opening == Opening::AtFirstUse) return;
  try {
    opening_ = std::thread([this] { openAhead(); });
  } catch (const std::system_error&) {
    // No thread is to be had: the first use opens it.
  }
}

DefaultsStore::~DefaultsStore() {
  if (opening_.joinable()) opening_.join();
}

void DefaultsStore::openAhead() const {
  beginThread("velto-store");
  std::lock_guard lock(mutex_);
  if (file_) return;  // whoever came first has opened it
  try {
    open(std::nullopt);
  } catch (const std::runtime_error&) {
    // Whoever uses it is told.
  }
}

void DefaultsStore::open(std::optional<ino_t> broken) const {
  for (auto& [key, known] : known_) known.version = stale;
  file_.reset();  // SQLite ends with the old file before another takes its name
  opened_ = g_get_monotonic_time();
  file_ = DefaultsFile::open(path_, broken);
  if (!broken || !file_->isNew()) return;
  for (const auto& [key, known] : known_)
    if (known.value) file_->write(key, *known.value);
}

template <class Use>
void DefaultsStore::withFile(Access access, const Use& use) const {
  if (!file_ && access == Access::Read && g_get_monotonic_time() < opened_ + patience)
    throw std::runtime_error("the store cannot be read");
  const bool fits = file_ && file_->isInPlace() && (access == Access::Read || file_->isWritable());
  if (!fits) open(std::nullopt);
  if (access == Access::Write && !file_->isWritable())
    throw std::runtime_error("the store cannot be written");
  try {
    use(*file_);
  } catch (const DatabaseError& error) {
    if (!error.isCorruption()) throw;
    open(file_->inode());
    use(*file_);
  }
}

std::optional<DefaultsValue> DefaultsStore::objectForKey(const std::string& key) const {
  std::lock_guard lock(mutex_);
  try {
    withFile(Access::Read, [&](DefaultsFile& file) {
      const auto version = file.version();
      if (const auto known = known_.find(key); known != known_.end() && known->second.version == version)
        return;
      known_.insert_or_assign(key, Known{file.read(key), version});
    });
  } catch (const std::runtime_error&) {
    // The value last known stands.
  }
  const auto known = known_.find(key);
  return known == known_.end() ? std::nullopt : known->second.value;
}

// Applies the change and tells the file's version before it: what others committed since makes a copy of that
// version stale, the change itself does not.
template <class Change>
int64_t DefaultsStore::change(const Change& change) {
  int64_t before = stale;
  withFile(Access::Write, [&](DefaultsFile& file) {
    before = file.version();
    change(file);
  });
  return before;
}

void DefaultsStore::setObject(const std::string& key, const DefaultsValue& value) {
  std::lock_guard lock(mutex_);
  const auto version = change([&](DefaultsFile& file) { file.write(key, value); });
  known_.insert_or_assign(key, Known{value, version});
}

void DefaultsStore::removeObjectForKey(const std::string& key) {
  std::lock_guard lock(mutex_);
  const auto version = change([&](DefaultsFile& file) { file.remove(key); });
  known_.insert_or_assign(key, Known{std::nullopt, version});
}

void DefaultsStore::setEntry(const std::string& key, const std::string& entry,
                             const std::optional<std::string>& value) {
  std::lock_guard lock(mutex_);
  const auto version = change([&](DefaultsFile& file) { file.writeEntry(key, entry, value); });
  const auto known = known_.find(key);
  if (known == known_.end() || known->second.version != version)
    return;  // the whole is read when somebody asks
  auto& whole = known->second.value;
  if (!whole || !std::holds_alternative<DefaultsDictionary>(*whole)) whole = DefaultsDictionary{};
  auto& dictionary = std::get<DefaultsDictionary>(*whole);
  if (value)
    dictionary.insert_or_assign(entry, *value);
  else
    dictionary.erase(entry);
}

void DefaultsStore::synchronize() {
  std::lock_guard lock(mutex_);
  withFile(Access::Write, [](DefaultsFile&) {});
}

}  // namespace velto::gtk
