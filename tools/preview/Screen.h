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

class VideoAdStage;

class Screen {
 public:
  // Drawn as a device, or the screen alone.
  Screen(const Arguments& arguments, Journal& journal, bool drawn);
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen();

  // Once more: what is shown goes first.
  void load();
  // A video ad: the document that is loaded, and what is to be done before.
  void setDocument(std::string document) { document_ = std::move(document); }
  std::function<void()> willLoad;
  bool isOpen() const { return window_ != nullptr; }
  GtkWindow* window() const { return window_; }
  GtkWidget* content() const { return gtk_window_get_child(window_); }

  bool hasLoaded() const;
  bool hasFailed() const;
  bool hasEnded() const;  // a video ad: it is over
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
  // A video ad's; false when it may not be skipped yet, or at all.
  bool skip();
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
  std::unique_ptr<VideoAdStage> stage_;
  std::string document_;
  std::optional<CGRect> lastFrame_;
  bool isLandscape_ = false;
  bool appeared_ = false;
  bool failed_ = false;
};

}  // namespace velto::preview
