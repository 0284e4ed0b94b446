// Looks into an ad's files, apart from playing them: what kind, how large and how long they really are. On a thread of its
// own, one file after the other, a few seconds for each; results come on the main thread.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace velto::preview {

// What cannot be told is 0 or empty.
struct FileFacts {
  std::string url;
  int status = 0;                              // of HTTP
  double bytes = 0;                            // of the file
  std::string servedAs;                        // MIME type that its server says
  std::string container;                       // MIME type of what it is: "video/webm", "video/mp4" …
  std::string codecs;                          // for people
  double width = 0, height = 0, duration = 0;  // pixels, seconds
  std::string error;                           // why nothing could be told of its content
};

class FileLook {
 public:
  // More files than that are nobody's ad.
  static constexpr size_t mostFiles = 12;

  // `longest` is for each of them; `caFile` as of the platform (VeltoGtk.h).
  FileLook(std::chrono::milliseconds longest, std::filesystem::path caFile,
           std::function<void(const FileFacts&)> found);
  FileLook(const FileLook&) = delete;
  FileLook& operator=(const FileLook&) = delete;
  ~FileLook();  // ends soon, wherever it is

  // Of http and https. Each address once.
  void look(const std::string& url);
  // What was asked for so far is of no interest any more, and is not told.
  void forget();
  size_t pending() const { return asked_ - told_; }

 private:
  struct Shared;
  static void work(const std::shared_ptr<Shared>& shared);

  std::shared_ptr<Shared> shared_;
  std::thread thread_;
  size_t asked_ = 0, told_ = 0;
};

}  // namespace velto::preview
