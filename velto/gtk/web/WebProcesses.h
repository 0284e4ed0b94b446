// Where a web view's process comes from. Starting one takes nearly all of the time
// to a first ad (some 150 ms), so it is brought up while the ad is still being
// fetched, and a view that replaces another shares its process. Main thread only.
#pragma once

#include "velto/platform/ViewSystem.h"
#include "velto/platform/foundation/GMemory.h"

#include <sys/types.h>
#include <webkit/webkit.h>

#include <memory>
#include <optional>
#include <vector>

namespace velto::gtk {

class WebSession;

// One web process, as far as it can be known from outside; shared by the views that live in it.
class WebProcess {
 public:
  WebProcess();  // to be made just before its first view

  void pageArrived();  // the first page of it is up, so it can be told which process it is
  void adLoaded() { ++ads_; }
  void ended() { ended_ = true; }
  bool hasEnded() const { return ended_; }
  // Whether one more ad may run in it. Pages leave memory behind,
  // so it is left to die after some dozens, or grown large.
  bool hasRoom() const;

 private:
  std::vector<pid_t> before_;
  pid_t pid_ = 0;  // unknown
  int ads_ = 0;
  bool ended_ = false;
};

// A web view of the engine, closed when the last copy of this goes.
class SharedView {
 public:
  SharedView() = default;
  explicit SharedView(GPtr<WebKitWebView> view);
  WebKitWebView* get() const { return view_.get(); }
  operator WebKitWebView*() const { return get(); }
  explicit operator bool() const { return view_ != nullptr; }

 private:
  std::shared_ptr<WebKitWebView> view_;
};

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
};

Engine freshEngine(WebSession& session);
Engine relatedEngine(const Engine& other);  // in the other's process

// A hidden web view whose process is up, or coming. The next web view takes it over; if
// none does, it and its process go with this object, or by themselves after their time.
class PreparedEngine final : public PreparedWebContent {
 public:
  explicit PreparedEngine(WebSession& session, guint secondsToLive = 30);
  PreparedEngine(const PreparedEngine&) = delete;
  PreparedEngine& operator=(const PreparedEngine&) = delete;
  ~PreparedEngine() override;

  bool isUp() const { return static_cast<bool>(engine_.view); }
  // Nothing when it was taken before, timed out, or its process died.
  std::optional<Engine> take();

 private:
  static void terminated(WebKitWebView*, WebKitWebProcessTerminationReason, PreparedEngine* self) noexcept;
  static gboolean timedOut(gpointer self) noexcept;
  void letGo();

  Engine engine_;
  guint timer_ = 0;
};

}  // namespace velto::gtk
