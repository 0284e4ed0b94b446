// A tool that looks on: hears what ads and the library say to each other, as velto-preview shows it.
// Applications need none, and without one nothing is written down. Main thread.
#pragma once

#include "velto/platform/foundation/JSON.h"

#include <string>
#include <utility>

namespace velto {

class WKWebView;
struct WKWebViewConfiguration;

class VeltoInspector {
 public:
  virtual ~VeltoInspector() = default;

  // One thing that happened: its kind ("navigation", "command", "statement", "state", "open" …) and its
  // particulars; "refused" is what a page asked for in vain, also where the page is told nothing of it.
  virtual void inspect(const std::string& event, JSON::Object details) = 0;
  // Before each web view of an ad is made: may add scripts.
  virtual void prepare(WKWebViewConfiguration& /*configuration*/) {}
  // Before each load of an ad's markup, when the library's own scripts are in place: may add others.
  virtual void willLoad(WKWebView& /*webView*/) {}

  // At most one; null ends it. The caller keeps it alive.
  static void install(VeltoInspector* inspector);
  static VeltoInspector* current();
};

// Tells the inspector, if there is one; the particulars are made only then.
template <class Details>
void inspect(const char* event, Details details) {
  if (auto* inspector = VeltoInspector::current()) inspector->inspect(event, details());
}

// What a page asked for, by the command's name, and why it does not get it.
inline void inspectRefusal(const std::string& command, const std::string& reason) {
  inspect("refused", [&] { return JSON::Object{{"command", command}, {"reason", reason}}; });
}

}  // namespace velto
