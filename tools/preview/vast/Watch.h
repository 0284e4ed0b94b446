// What becomes of a video ad's documents on the network: each that comes is read and told with what is wrong with it, and each
// address that is told, with what it answered. Main thread.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "preview/Journal.h"
#include "preview/vast/DocumentReading.h"
#include "preview/vast/Exchanges.h"
#include "preview/vast/FileLook.h"

namespace velto::preview {

class VideoAdWatch {
 public:
  // Both outlive it.
  VideoAdWatch(Journal& journal, ListeningPlatform& platform);
  VideoAdWatch(const VideoAdWatch&) = delete;
  VideoAdWatch& operator=(const VideoAdWatch&) = delete;
  ~VideoAdWatch();

  // Files are looked into from now on.
  void lookIntoFiles();
  // A new document from its file or address, with how long that took (ms); what was before it is forgotten.
  void begin(const std::string& source, const std::string& text, double duration);
  // Waits a moment for what is under way, and tells what is not over then.
  void finish();

  // As Network has them.
  const std::vector<JSON::Object>& requests() const { return requests_; }

 private:
  struct Known {  // an address of a document
    DocumentAddress address;
    std::vector<std::string> parts;  // between its macros
    size_t document = 0;
    int told = 0;
  };
  struct Place {
    std::string url;
    std::vector<std::string> tags;
  };

  void read(Place place, const std::string& text, JSON::Object details);
  void heard(const Exchange& exchange, bool isOver = true);
  Known* find(const std::string& url);
  void found(const FileFacts& facts);

  Journal& journal_;
  ListeningPlatform& platform_;
  std::unique_ptr<FileLook> files_;
  std::vector<Place> documents_;
  std::vector<Known> addresses_;
  std::vector<JSON::Object> requests_;
  gint64 since_ = 0;  // requests from then on are of this document
};

}  // namespace velto::preview
