// What becomes of a video ad's documents on the network: each that comes is read and told with what is wrong with it, and each
// address that is told, with what it answered. Main thread.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "preview/Journal.h"
#include "preview/vast/AddressBook.h"
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

  // Files are looked into from now on, for at most so long each.
  void lookIntoFiles(std::chrono::milliseconds longest);
  // A new document from its file or address, with how long that took (ms); what was before it is forgotten.
  void begin(const std::string& source, const std::string& text, double duration);
  // Waits a moment for what is under way: answers, and looks into files.
  void settle();
  // Does so, and tells what is not over then.
  void finish();

  // As Network has them.
  const std::vector<JSON::Object>& requests() const { return requests_; }

 private:
  class Ears;
  struct Place {
    std::string url;
    std::vector<std::string> tags;
  };

  void read(Place place, const std::string& text, JSON::Object details);
  void heard(const Exchange& exchange, bool isOver = true);
  bool isOfNow(const Exchange& exchange) const { return exchange.begun >= since_; }
  void found(const FileFacts& facts);

  Journal& journal_;
  ListeningPlatform& platform_;
  std::shared_ptr<Ears> ears_;
  std::unique_ptr<FileLook> files_;
  std::chrono::milliseconds longestLook_{0};
  std::vector<Place> documents_;
  AddressBook addresses_;
  std::vector<JSON::Object> requests_;
  gint64 since_ = 0;  // requests from then on are of this document
};

}  // namespace velto::preview
