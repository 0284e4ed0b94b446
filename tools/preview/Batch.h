// Many creatives: each is played by a process of this program itself, with a display of its own, several at once. One that
// crashes or hangs is a finding, not the end. Main thread; needs no display.
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "preview/Arguments.h"
#include "preview/BatchReport.h"

namespace velto::preview {

// One creative of many.
struct BatchItem {
  std::string creative;              // as its process is given it
  std::string name;                  // of its folder in the report; no two have the same
  std::vector<std::string> options;  // its own
  bool isVideoAd = false;            // a document of video ads

  bool operator==(const BatchItem&) const = default;
};

// What is to be played: of a folder each page (of one that holds index.html only that) and each document of video ads, of a
// list each line, sorted by name; then what falls to the shard. A page "ad.html" beside which stands "ad.steps" is played with these. Throws
// UsageError when a path cannot be read, or there is nothing in all.
std::vector<BatchItem> batchOf(const Arguments& arguments);

class Batch {
 public:
  struct Setting {
    std::string program;               // that plays one creative
    std::vector<std::string> options;  // for each
    std::string folder;                // for the report
    int jobs = 1;
    std::chrono::milliseconds timeLimit{120'000};
    std::optional<Baseline> baseline{};  // over many
  };
  // Called in the order of the items, as soon as that is possible.
  using Told = std::function<void(const BatchResult&)>;
  Batch(Setting setting, Told told);
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;
  ~Batch();

  // What came of each, in order. At SIGINT, SIGTERM and SIGHUP the plays are told to end, and those that have come to
  // their end are returned.
  std::vector<BatchResult> play(const std::vector<BatchItem>& items);
  int signal() const { return signal_; }  // that ended it, or 0

 private:
  struct Running;
  std::vector<std::string> optionsOf(const BatchItem& item) const;
  static std::vector<std::string> wordsFor(const BatchItem& item);
  Tolerance toleranceOf(const BatchItem& item) const;
  void start(const BatchItem& item, size_t index);
  void ended(Running& running);
  void take(const Running& running, int code);
  void fail();
  void tell();
  void stop(int signal);

  const Setting setting_;
  const Told told_;
  std::vector<Running*> running_;
  std::vector<std::optional<BatchResult>> results_;
  size_t toldOf_ = 0;
  int signal_ = 0;
  std::exception_ptr fault_;
};

// Plays all, writes the report, and returns the exit code: 0, 1 when one of them has failed, 2 when none could be played.
int playAll(const Arguments& arguments);

}  // namespace velto::preview
