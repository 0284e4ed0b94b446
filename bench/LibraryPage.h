// A banner of the library's with a given page, in a window of its own, and questions to that page: for programs that measure
// inside of pages. Main thread.
#pragma once

#include "velto/ads/VeltoAd.h"
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/velto.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto::bench {

inline void runUntil(const std::function<bool()>& condition) {
  while (!condition()) g_main_context_iteration(nullptr, TRUE);
}

// The question whether a page is done is work for it, too: not too often.
inline void wait(guint milliseconds) {
  bool over = false;
  g_timeout_add_once(
      milliseconds, [](gpointer flag) { *static_cast<bool*>(flag) = true; }, &over);
  runUntil([&] { return over; });
}

struct HostOf : VeltoBannerViewControllerDelegate {
  std::shared_ptr<UIViewController> controller;
  std::shared_ptr<UIViewController> presentViewController() override { return controller; }
};

class LibraryPage {
 public:
  explicit LibraryPage(const std::string& html) : window_(GTK_WINDOW(gtk_window_new())) {
    gtk::install({.applicationIdentifier = "org.example.bench"});
    gtk_window_set_default_size(window_, 390, 600);
    host_->controller = gtk::hostViewController(window_);
    gtk_window_present(window_);
    banner_ =
        VeltoBannerViewController::initWithDelegate(host_, VeltoBannerSize320x50, VeltoBannerPositionBottom);
    const auto ad = VeltoAd::adWithHTML(html, std::nullopt, nullptr);
    ad->size = {320, 50};
    banner_->vc()->fetchBannerSuccess(ad);
    runUntil([&] { return evaluate("window.mraid ? mraid.getState() : ''") == "default"; });
  }
  LibraryPage(const LibraryPage&) = delete;
  LibraryPage& operator=(const LibraryPage&) = delete;
  ~LibraryPage() {
    banner_.reset();
    host_->controller.reset();
    gtk_window_destroy(window_);
    gtk::uninstall();
  }

  std::string evaluate(const std::string& script) const {
    std::optional<std::string> answer;
    banner_->vc()->webView()->evaluateJavaScript(
        "String(" + script + ")",
        [&](const auto& value, const auto&) { answer = value && value->string() ? *value->string() : ""; });
    runUntil([&] { return answer.has_value(); });
    return *answer;
  }

 private:
  GtkWindow* const window_;
  const std::shared_ptr<HostOf> host_ = std::make_shared<HostOf>();
  std::shared_ptr<VeltoBannerViewController> banner_;
};

}  // namespace velto::bench
