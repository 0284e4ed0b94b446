// Who gets a finger over a web view: the page for as long as nothing around takes it, such as a list that scrolls
// under it; and to the end where the page uses it. Part of the web view; main thread.
#pragma once

#include "velto/gtk/web/WindowEars.h"

#include <webkit/webkit.h>

#include <functional>
#include <optional>
#include <vector>

namespace velto::gtk {

class TouchShare {
 public:
  // `taken` hears that a touch was not the page's after all.
  TouchShare(WebKitWebView* view, std::function<void()> taken);
  TouchShare(const TouchShare&) = delete;
  TouchShare& operator=(const TouchShare&) = delete;
  ~TouchShare();

  // The page as a whole scrolls, so that it uses every touch.
  void setPageScrolls(bool scrolls) { pageScrolls_ = scrolls; }

 private:
  struct Touch {
    GdkEventSequence* sequence;
    double x, y;  // of its begin, on the surface
    int ways;     // that the page uses: TouchUse
    bool kept = false;
    bool taken = false;
    bool isTold = false;  // the page, of that
  };
  struct Question {
    GPtr<JSCContext> context;
    GOwned<WebKitScriptMessageReply, webkit_script_message_reply_unref> reply;
    void answer(bool taken) const;
  };
  static gboolean reachedPage(GtkEventController*, GdkEvent* event, TouchShare* self) noexcept;
  static gboolean reachedWindow(GtkEventController*, GdkEvent* event, TouchShare* self) noexcept;
  static void cancelled(GtkGesture*, GdkEventSequence* sequence, TouchShare* self) noexcept;
  static gboolean told(WebKitUserContentManager*, JSCValue* ways, WebKitScriptMessageReply* reply,
                       TouchShare* self) noexcept;

  bool isPages(const Touch& touch, GdkEvent* event) const;
  void answerAll(bool taken);
  void tellEnd();

  WebKitWebView* view_;
  const std::function<void()> taken_;
  GPtr<GtkEventController> engine_;  // how the engine hears of touches; null when it has none
  GPtr<GtkEventController> drag_;    // the gesture that it sees in them; null when it has none
  GtkEventController* begins_;       // the view's
  WindowEars ears_;
  bool pageScrolls_ = true;
  std::optional<Touch> touch_;             // the latest
  bool isOver_ = true;                     // that one
  std::vector<Question> waiting_;          // for what becomes of it
  GOwned<GdkEvent, gdk_event_unref> end_;  // that the engine has yet to hear of
};

}  // namespace velto::gtk
