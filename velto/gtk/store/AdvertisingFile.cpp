// A key file, replaced as a whole, so that readers need no lock.
#include "velto/gtk/store/AdvertisingFile.h"

#include "velto/platform/foundation/GMemory.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace velto::gtk {
namespace {

constexpr char group[] = "Advertising";
constexpr char decisionKey[] = "Decision";
constexpr char identifierKey[] = "Identifier";
constexpr char allowedWord[] = "allowed";
constexpr char deniedWord[] = "denied";
constexpr char noIdentifier[] = "00000000-0000-0000-0000-000000000000";

using KeyFile = GOwned<GKeyFile, g_key_file_unref>;

std::string newIdentifier() {
  const GText uuid(g_uuid_string_random());
  return GText(g_ascii_strup(uuid.get(), -1)).get();
}

std::string textOf(const KeyFile& file, const char* key) {
  const GText text(g_key_file_get_string(file.get(), group, key, nullptr));
  return text ? text.get() : "";
}

// Other writers wait, in this process and others. The lock is on the folder, as the file is replaced.
class WriterLock {
 public:
  explicit WriterLock(const std::filesystem::path& folder)
      : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (folder_ < 0 || flock(folder_, LOCK_EX) != 0) {
      if (folder_ >= 0) close(folder_);
      throw std::runtime_error(folder.string() + ": " + g_strerror(errno));
    }
  }
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;
  ~WriterLock() { close(folder_); }

 private:
  int folder_;
};

}  // namespace

std::filesystem::path AdvertisingFile::defaultPath() {
  return std::filesystem::path(g_get_user_config_dir()) / "velto" / "advertising";
}

AdvertisingFile::State AdvertisingFile::read() const {
  State state;
  const KeyFile file(g_key_file_new());
  // A pipe under this name would never end.
  if (!g_file_test(path_.c_str(), G_FILE_TEST_IS_REGULAR) ||
      !g_key_file_load_from_file(file.get(), path_.c_str(), G_KEY_FILE_NONE, nullptr))
    return state;
  const std::string decision = textOf(file, decisionKey), identifier = textOf(file, identifierKey);
  if (decision == deniedWord) state.decision = Decision::Denied;
  if (decision == allowedWord && g_uuid_string_is_valid(identifier.c_str()) && identifier != noIdentifier)
    state = {Decision::Allowed, identifier};
  return state;
}

template <class Change>
AdvertisingFile::State AdvertisingFile::change(Change change) const {
  const auto folder = path_.parent_path();
  if (g_mkdir_with_parents(folder.c_str(), 0700) != 0)
    throw std::runtime_error(folder.string() + ": " + g_strerror(errno));
  const WriterLock lock(folder);
  State state = read();
  change(state);
  if (state.decision != Decision::Undecided) write(state);
  return state;
}

AdvertisingFile::State AdvertisingFile::allow() const {
  return change([](State& state) {
    if (!state.identifier) state = {Decision::Allowed, newIdentifier()};
  });
}

AdvertisingFile::State AdvertisingFile::deny() const {
  return change([](State& state) { state = {Decision::Denied, std::nullopt}; });
}

AdvertisingFile::State AdvertisingFile::reset() const {
  return change([](State& state) {
    if (state.identifier) state.identifier = newIdentifier();
  });
}

void AdvertisingFile::write(const State& state) const {
  const KeyFile file(g_key_file_new());
  g_key_file_set_comment(
      file.get(), nullptr, nullptr,
      " Whether applications may recognise you for advertisers. Use velto-adid to change it.", nullptr);
  g_key_file_set_string(file.get(), group, decisionKey, state.identifier ? allowedWord : deniedWord);
  if (state.identifier) g_key_file_set_string(file.get(), group, identifierKey, state.identifier->c_str());
  gsize size = 0;
  const GText text(g_key_file_to_data(file.get(), &size, nullptr));
  GError* fault = nullptr;
  constexpr auto whole =
      static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE);
  chmod(path_.c_str(), 0600);  // GLib may give the new file the mode of the old one; there need not be any
  g_file_set_contents_full(path_.c_str(), text.get(), static_cast<gssize>(size), whole, 0600, &fault);
  const GErrorOwned error(fault);
  if (error) throw std::runtime_error(error->message);
}

}  // namespace velto::gtk
