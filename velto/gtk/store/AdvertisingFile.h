// The user's decision about advertising identifiers, and the identifier, in a file that all applications of
// the user share. Used by the platform, by host applications' consent screens (VeltoGtk.h) and by velto-adid.
// Any thread, any process. Needs GLib only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velto::gtk {

class AdvertisingFile {
 public:
  enum class Decision { Undecided, Denied, Allowed };
  struct State {
    Decision decision = Decision::Undecided;
    std::optional<std::string> identifier;  // UUID text, upper case; only, and always, when allowed
  };

  AdvertisingFile() : AdvertisingFile(defaultPath()) {}
  explicit AdvertisingFile(std::filesystem::path path) : path_(std::move(path)) {}
  // velto/advertising in the user's configuration folder.
  static std::filesystem::path defaultPath();
  const std::filesystem::path& path() const { return path_; }

  // Undecided without a file, and for one that cannot be read or says anything else than this class writes.
  State read() const;

  // Each returns what holds from now on, and throws std::runtime_error when it cannot be written. Of several
  // writers at once each sees what the one before it left.
  State allow() const;  // keeps an identifier that there is
  State deny() const;   // forgets it
  State reset() const;  // a new identifier, where one is allowed; else nothing

 private:
  template <class Change>
  State change(Change change) const;
  void write(const State& state) const;

  std::filesystem::path path_;
};

}  // namespace velto::gtk
