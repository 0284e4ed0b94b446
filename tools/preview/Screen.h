// The virtual screen: a window of the size asked for, and the ad in it, with what its delegate hears. Main
// thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/ui/WKWebView.h>
#include <velto/velto.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "preview/Arguments.h"
#include "preview/Journal.h"

namespace velto::preview {

class Screen {
 public:
  // Drawn as a device, or the screen alone.
  Screen(const Arguments& arguments, Journal& journal, bool drawn);
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen();

  // Once more: what is shown goes first.
  void load();
  bool isOpen() const { return window_ != nullptr; }
  GtkWindow* window() const { return window_; }
  GtkWidget* content() const { return gtk_window_get_child(window_); }

  bool hasLoaded() const;
  bool hasFailed() const { return failed_; }
  std::shared_ptr<WKWebView> webView() const;
  // Of the ad view, points of the screen; nothing while there is none.
  std::optional<CGRect> frame() const;

  // What its page has cost so far.
  std::optional<VeltoAdWeight> weight() const;

  void rotate(bool landscape);
  void setShown(bool shown);
  void setVolume(float fraction);
  // Presses the close button that is on the screen now; whether there is one.
  bool pressClose();
  // Called with the step that does the same, when somebody has turned, hidden or closed it, or changed the volume.
  std::function<void(const std::string& step)> onChange;
  bool photograph(const std::string& file, GtkWindow* beside = nullptr) const;

 private:
  class BannerDelegate;
  class InterstitialDelegate;
  static void painted(GdkFrameClock*, Screen* self) noexcept;
  static void closed(GtkWidget*, Screen* self) noexcept;
  void heard(const char* name, const VeltoErrorAd* error = nullptr);
  void tellChange(const std::string& step) const;
  void followFrame();
  void followOrientation();

  Journal& journal_;
  const Arguments arguments_;
  GtkWindow* window_ = nullptr;  // null once closed
  GdkFrameClock* frames_ = nullptr;
  std::shared_ptr<UIViewController> host_;
  std::shared_ptr<BannerDelegate> bannerDelegate_;
  std::shared_ptr<InterstitialDelegate> interstitialDelegate_;
  std::shared_ptr<VeltoBannerViewController> banner_;
  std::shared_ptr<VeltoInterstitialViewController> interstitial_;
  std::optional<CGRect> lastFrame_;
  bool isLandscape_ = false;
  bool appeared_ = false;
  bool failed_ = false;
};

}  // namespace velto::preview
