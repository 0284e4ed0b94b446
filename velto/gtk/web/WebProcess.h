// One web process, as far as it can be known from outside, and the views in it. See WebProcesses.h; main thread only.
#pragma once

#include "velto/gtk/web/UseWatch.h"
#include "velto/platform/foundation/GMemory.h"

#include <sys/types.h>
#include <webkit/webkit.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velto::gtk {

// A web view of the engine, closed when the last copy of this goes.
class SharedView {
 public:
  SharedView() = default;
  explicit SharedView(GPtr<WebKitWebView> view);
  explicit SharedView(std::shared_ptr<WebKitWebView> view) : view_(std::move(view)) {}
  const std::shared_ptr<WebKitWebView>& held() const { return view_; }
  WebKitWebView* get() const { return view_.get(); }
  operator WebKitWebView*() const { return get(); }
  explicit operator bool() const { return view_ != nullptr; }

 private:
  std::shared_ptr<WebKitWebView> view_;
};

// One web process, as far as it can be known from outside; shared by the views that live in it.
class WebProcess : public std::enable_shared_from_this<WebProcess> {
 public:
  // Sets the flag, which others share, with the first ad.
  explicit WebProcess(std::shared_ptr<bool> sessionHadPages);
  WebProcess(const WebProcess&) = delete;
  WebProcess& operator=(const WebProcess&) = delete;
  ~WebProcess();
  std::shared_ptr<WebProcess> next() const { return std::make_shared<WebProcess>(sessionHadPages_); }

  // The engine starts it inside the call that needs it first, and does not tell which one it is. A call in
  // which none comes up does not count.
  void startIn(const std::function<void()>& call);
  // A page of it is up: so is the process. A question to the page before is lost with that.
  void pageArrived();
  void identify();                             // it is up, as whatever it says shows
  pid_t pid() const { return pid_; }           // 0: unknown
  uint64_t number() const { return number_; }  // none other has it
  void adLoaded() { *sessionHadPages_ = ++ads_ > 0; }
  void ended() { ended_ = true; }
  bool hasEnded() const { return ended_; }

  // Whether it still answers: one whose page is in an endless loop would hold up each further page. It has no room for any
  // until it has answered, and is ended when it has owed that for 5 s.
  void ask();
  void fellSilent();  // the engine, which asks by itself when somebody uses a page, has had no answer for 3 s
  bool isHung() const { return hung_; }  // and was ended for it

  // The views in it; one of them, or none.
  void add(const SharedView& view);
  SharedView view() const;
  bool areAllHidden() const;
  bool isResponsive() const;
  UseWatch& useWatch() { return useWatch_; }
  // Whose pages live in it; empty: those of one place.
  const std::string& site() const { return site_; }
  void setSite(std::string site) { site_ = std::move(site); }

  // Whether one more ad may run in it. Pages leave memory behind,
  // so it is left to die after some dozens, or grown large.
  bool hasRoom() const;

 private:
  static void answered(GObject* view, GAsyncResult* result, gpointer weak) noexcept;
  static gboolean patienceEnded(gpointer self) noexcept;
  void waitFor(guint seconds);
  void forgive();

  const uint64_t number_;
  const std::shared_ptr<bool> sessionHadPages_;
  std::vector<pid_t> started_;  // by the engine, in that call
  pid_t pid_ = 0;
  std::vector<std::weak_ptr<WebKitWebView>> views_;
  std::string site_;
  UseWatch useWatch_;
  int ads_ = 0;
  bool hasPage_ = false;  // or had
  bool ended_ = false;
  bool owesAnswer_ = false;
  bool hung_ = false;
  guint patience_ = 0;
};

}  // namespace velto::gtk
