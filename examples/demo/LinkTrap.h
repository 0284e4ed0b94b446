// Stands in for the desktop's web browser while it exists: what the library opens is written down instead.
// Made before GTK starts, since the desktop's folders are read once.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace demo {

class LinkTrap {
 public:
  LinkTrap();  // throws std::runtime_error
  LinkTrap(const LinkTrap&) = delete;
  LinkTrap& operator=(const LinkTrap&) = delete;
  ~LinkTrap();

  std::vector<std::string> opened() const;

 private:
  std::filesystem::path folder_;
};

}  // namespace demo
