// The creative: its markup, and the folder beside it, served to the page from this process. Any thread.
#pragma once

#include <memory>
#include <string>

namespace velto::preview {

class Creative {
 public:
  // A file or an http(s) URL. Throws UsageError when it cannot be read.
  explicit Creative(const std::string& source);
  ~Creative();

  const std::string& source() const { return source_; }
  // With a base element, so that its relative addresses mean the files beside it.
  const std::string& base() const { return base_; }  // what its relative addresses begin with
  const std::string& markup() const { return markup_; }

 private:
  class FolderServer;
  std::unique_ptr<FolderServer> server_;
  std::string base_;
  const std::string source_;
  std::string markup_;
};

// How files beside creatives are served from now on: each after that time, and so many bytes a second (0: as they come).
struct ServingSpeed {
  int latency = 0;  // milliseconds
  int bytesPerSecond = 0;
};
void setServingSpeed(ServingSpeed speed);

// The bytes of a file or an http(s) URL, whose server is trusted by `caFile` (empty: as the system does). Throws UsageError when
// they cannot be had, or there are none.
std::string readSource(const std::string& source, const std::string& caFile = {});

// The markup with a base element as its first in the head. For tests.
std::string withBase(const std::string& markup, const std::string& base);

}  // namespace velto::preview
