// Runs the library's statements in a web view's page without lending the page a person's gesture. Owned by
// the web view's peer; main thread only.
//
// The engine treats whatever the application evaluates as if a person had just touched the page, and for a
// second lets it open windows and leave for other applications. So statements go as messages to a module in the web
// process (modules/PageModule.cpp), which runs them as global code, outside any gesture, also where the page's content
// security policy refuses eval().
//
// A message costs the engine more than what the library has to say in it. So statements whose result nobody
// asks for wait for the end of the main loop's turn and go together, each still run by itself; one with a completion goes
// at once and takes those along. Those for a view that shows no page yet wait for its first.
#pragma once

#include "velto/platform/NSError.h"
#include "velto/platform/foundation/JSON.h"

#include <webkit/webkit.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto::gtk {

NSError errorFrom(const GError& error);

class PageScripts : public std::enable_shared_from_this<PageScripts> {
 public:
  using Completion = std::function<void(std::optional<JSON>, std::optional<NSError>)>;

  // The view outlives this.
  explicit PageScripts(WebKitWebView* view);
  PageScripts(const PageScripts&) = delete;
  PageScripts& operator=(const PageScripts&) = delete;

  ~PageScripts();

  // In the order of the calls. The completion may be null; it comes later, and not at all once this is gone.
  void run(std::string statement, Completion completion);
  // What waits for the end of the turn goes now: to the page that is there.
  void flush();
  // The main frame has another document from now on. Statements that went with the old one get an error.
  void documentChanged();
  // Nobody is left to answer: all of them get one, at once.
  void processEnded();

 private:
  struct Reply;
  static gboolean turnEnded(gpointer self) noexcept;
  void dropPending();
  static void answered(GObject* view, GAsyncResult* result, gpointer data) noexcept;
  void send(GAsyncReadyCallback whenAnswered,
            gpointer data);  // what is pending, with the last one's answer to that
  void abandonBefore(uint64_t call);

  WebKitWebView* view_;
  bool hasDocument_ = false;
  std::vector<std::string> pending_;                       // until the end of the turn
  std::vector<std::pair<std::string, Completion>> early_;  // until there is a page
  guint turnEnd_ = 0;                                      // while some are pending
  std::map<uint64_t, Completion> calls_;                   // not answered yet
  uint64_t nextCall_ = 0;
};

}  // namespace velto::gtk
