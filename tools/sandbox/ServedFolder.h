// Files that the sandbox server hands out for downloads: one folder and what lies below it, nothing outside,
// whatever the path of the request says and wherever symbolic links lead.
#pragma once

#include <optional>
#include <string>

namespace velto::sandbox {

struct ServedFile {
  std::string bytes;
  std::string contentType;
};

class ServedFolder {
 public:
  // "" serves nothing. Throws Error if there is no such folder.
  explicit ServedFolder(const std::string& folder);

  // The regular file under a decoded request path such as "/a/b.html".
  std::optional<ServedFile> find(const std::string& path) const;

 private:
  std::string root_;  // canonical; "" serves nothing
};

}  // namespace velto::sandbox
