// What the page of a web view costs: its process by the kernel's figures, its network by what the engine tells of each
// answer. Owned by the web view; main thread.
//
// An answer counts when it has come whole, by the length that it told. One without (in chunks) counts nothing: pages
// may not see the size of what comes from elsewhere, and the engine keeps it to itself. What the engine finds in its
// memory counts again.
#pragma once

#include "velto/gtk/web/WebProcesses.h"

#include <functional>
#include <memory>
#include <utility>

namespace velto::gtk {

class PageCost {
 public:
  explicit PageCost(WebKitWebView* view);
  PageCost(const PageCost&) = delete;
  PageCost& operator=(const PageCost&) = delete;
  ~PageCost();

  void loadBegins();  // what the page before still loads is not the new one's
  // Whether somebody waits to look, in a turn of its own, at the process without the page. Of one that is not known yet
  // nothing can be told before the page has arrived.
  bool pageComes(const WebProcess& process) { return isAwaited_ = process.pid() != 0 && tell(); }
  void pageArrived() {
    if (!std::exchange(isAwaited_, false)) tell();
  }
  WebPageUse use(const std::shared_ptr<WebProcess>& process) const;
  Handle afterUse(WebProcess& process, double processorSeconds, std::function<void()> then);

 private:
  struct Traffic {
    uint64_t bytes = 0;
    std::function<void()> came;
  };
  struct Answer;
  struct Wait;
  static void started(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest* request,
                      PageCost* self) noexcept;
  static void failed(WebKitWebResource*, GError*, Answer* answer) noexcept;
  static void finished(WebKitWebResource* resource, Answer* answer) noexcept;
  bool tell();

  WebKitWebView* view_;
  std::shared_ptr<Traffic> traffic_;
  std::weak_ptr<Wait> wait_;  // its handle holds it
  bool isAwaited_ = false;    // the page, by who looks at what it costs
};

}  // namespace velto::gtk
