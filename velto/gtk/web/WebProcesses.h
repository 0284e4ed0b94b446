// Where a web view's process comes from. Starting one takes nearly all of the time
// to a first ad (some 150 ms) and 20 MiB of memory, so it is brought up while the ad
// is still being fetched; a view that replaces another shares its process, and so do
// views of one site, as long as there is room (SharedProcesses.h). Main thread only.
#pragma once

#include "velto/gtk/web/WebProcess.h"
#include "velto/platform/Handle.h"
#include "velto/platform/ViewSystem.h"
#include "velto/platform/foundation/GMemory.h"

#include <webkit/webkit.h>

#include <memory>
#include <optional>
#include <utility>

namespace velto::gtk {

class WebSession;

// A web view of the engine with its process. Moves; the process is ended with the last view in it, at once.
struct Engine {
  Engine() = default;
  Engine(GPtr<WebKitWebView> webView, std::shared_ptr<WebProcess> itsProcess);
  Engine(Engine&&) noexcept = default;
  Engine& operator=(Engine&& other) noexcept;
  ~Engine();

  SharedView view;
  // Whose process this view is to share. The engine asks for
  // it when the first load begins, so it must live until then.
  SharedView related;
  std::shared_ptr<WebProcess> process;
  bool warm = false;  // the process was up, or coming, before this view was asked for

  // For a view that has nothing to load yet: its process comes up as it would for a page.
  void startProcess();
};

Engine freshEngine(WebSession& session);
// In the process of that view.
Engine relatedEngine(const SharedView& other, const std::shared_ptr<WebProcess>& process);

// A hidden web view and its process, brought up when the main loop has nothing else to do, each part in a turn of its
// own. The next web view takes it over, as far as it has come; if none does, it and its process go with this object, or
// by themselves after their time.
class PreparedEngine final : public PreparedWebContent {
 public:
  explicit PreparedEngine(std::shared_ptr<WebSession> session, guint secondsToLive = 30);
  PreparedEngine(const PreparedEngine&) = delete;
  PreparedEngine& operator=(const PreparedEngine&) = delete;
  ~PreparedEngine() override;

  void
  bringUp();  // what is left of it, at once; the web process as soon as it is known that there can be one
  // It was taken, timed out, or its process died.
  bool isOver() const { return !session_; }
  std::optional<Engine> take();

 private:
  static gboolean idle(gpointer self) noexcept;
  bool bringUpNext();
  void goOn();
  static void terminated(WebKitWebView*, WebKitWebProcessTerminationReason, PreparedEngine* self) noexcept;
  static gboolean timedOut(gpointer self) noexcept;
  void letGo();

  std::shared_ptr<WebSession> session_;  // until it is over
  GPtr<WebKitWebContext> context_;
  Handle probed_;  // while it is not known yet whether there can be a web process
  bool isAtOnce_ = false;
  Engine engine_;
  guint idle_ = 0;
  guint timer_ = 0;
};

}  // namespace velto::gtk
