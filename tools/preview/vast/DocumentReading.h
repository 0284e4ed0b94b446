// What a document of video ads says, and what is wrong with it as it stands: nothing is fetched, and nothing played. Any
// thread.
#pragma once

#include <velto/vast/VASTCreative.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velto::preview {

// `id` is that of a rule (FindingsVideoAd.cpp).
struct DocumentFault {
  const char* id;
  int line = 0;  // from 1 on; 0: of the whole document
  std::string text;
};

// An address, by the name of what leads there or is told of: "impression", "firstQuartile", "wrapper", "file", "script" …
struct DocumentAddress {
  std::string name, url;  // with macros
  int line = 0;
};

struct DeclaredFile {
  VASTMediaFile file;
  std::optional<double> duration;  // of its ad, seconds
  int line = 0;
};

struct DocumentReading {
  std::string version;
  size_t ads = 0;
  std::vector<DocumentFault> faults;
  std::vector<DocumentAddress> addresses;
  std::vector<DeclaredFile> files;
};

struct DocumentSurroundings {
  // The addresses in the wrappers around it, the outermost first; the last one is its own.
  std::vector<std::string> tags = {};
  // Whether files of that MIME type and codec play on this machine.
  std::function<bool(const std::string& type, const std::string& codec)> plays = {};
};

DocumentReading readDocument(const std::string& text, const DocumentSurroundings& around);

}  // namespace velto::preview
