// What a page costs the device, as its web view tells when it is asked. Part of WebViewPeer.h; main thread.
#pragma once

#include <cstdint>
#include <optional>

namespace velto {

// Nothing stands for what the platform cannot tell.
struct WebPageUse {
  // Of the process that the page runs in, since the process began. No two processes have the same number; 0 is
  // none, or one that is not known, of which nothing is told.
  uint64_t process = 0;
  int pages = 1;  // of the library that are in the process now, this one among them
  std::optional<double> processorSeconds = {};   // all its threads together
  std::optional<double> mainThreadSeconds = {};  // the thread that runs pages' scripts and lays them out
  std::optional<uint64_t> memoryBytes = {};      // that nobody else uses: no programs or other files
  std::optional<uint64_t> wakeUps = {};          // how often its threads had waited and went on
  // Of the page, since the view's last loadHTMLString(): answers that came whole, as they were sent.
  std::optional<uint64_t> networkBytes = {};
  bool touched = false;  // by a person: a finger, a button or a key went to the page
  bool hidden =
      false;  // the page, and each other that the process is shared with, has been told that nobody sees it
  bool isShared = false;  // there are such: pages of other places that stay in the process
};

}  // namespace velto
