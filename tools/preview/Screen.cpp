// Window, controllers, delegates.
#include "preview/Screen.h"

#include <velto/gtk/VeltoGtk.h>
#include <velto/gtk/web/WebView.h>
#include <velto/platform/Platform.h>
#include <velto/platform/UIDevice.h>
#include <velto/ui/VeltoBannerViewControllerPrivate.h>
#include <velto/ui/VeltoInterstitialViewControllerPrivate.h>

#include <cmath>
#include <functional>

#include "preview/Device.h"
#include "preview/Photograph.h"
#include "preview/vast/Stage.h"

namespace velto::preview {
namespace {

constexpr int64_t portrait = 1;
constexpr int64_t landscapeRight = 4;

VeltoCloseButton* closeButtonIn(UIView& view) {
  const auto subviews = view.subviews();
  for (auto subview = subviews.rbegin(); subview != subviews.rend(); ++subview) {
    if (auto* button = dynamic_cast<VeltoCloseButton*>(subview->get())) return button;
    if (auto* button = closeButtonIn(**subview)) return button;
  }
  return nullptr;
}

// Those that a person can see something of.
void addPages(UIView& view, std::vector<WebKitWebView*>& pages) {
  for (const auto& subview : view.subviews()) {
    if (auto* page = dynamic_cast<WKWebView*>(subview.get()); page && page->isInWindow())
      if (const auto* peer = dynamic_cast<gtk::WebView*>(&page->webPeer()))
        if (gtk_widget_get_mapped(GTK_WIDGET(peer->engine().view.get())))
          pages.push_back(peer->engine().view);
    addPages(*subview, pages);
  }
}

}  // namespace

class Screen::BannerDelegate : public VeltoBannerViewControllerDelegate {
 public:
  explicit BannerDelegate(Screen& screen) : screen_(screen) {}

 private:
  std::shared_ptr<UIViewController> presentViewController() override { return screen_.host_; }
  void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override {
    screen_.heard("DidFinishLoad");
  }
  void veltoBannerViewControllerDidPress(VeltoBannerViewControllerPrivate&) override {
    screen_.heard("DidPress");
  }
  void veltoBannerViewControllerDidFail(VeltoBannerViewControllerPrivate&,
                                        const VeltoErrorAd& error) override {
    screen_.heard("DidFail", &error);
  }
  void veltoBannerViewControllerDidClose(VeltoBannerViewControllerPrivate&) override {
    screen_.heard("DidClose");
  }

  Screen& screen_;
};

class Screen::InterstitialDelegate : public VeltoInterstitialViewControllerDelegate {
 public:
  explicit InterstitialDelegate(Screen& screen) : screen_(screen) {}

 private:
  using Controller = VeltoInterstitialViewControllerPrivate;
  std::shared_ptr<UIViewController> presentViewController() override { return screen_.host_; }
  void veltoInterstitialViewControllerDidFinishLoad(Controller&) override { screen_.heard("DidFinishLoad"); }
  void veltoInterstitialViewControllerDidFail(Controller&, const VeltoErrorAd& error) override {
    screen_.heard("DidFail", &error);
  }
  void veltoInterstitialViewControllerDidAppear(Controller&) override {
    screen_.appeared_ = true;
    screen_.heard("DidAppear");
  }
  void veltoInterstitialViewControllerDidPress(Controller&) override { screen_.heard("DidPress"); }
  void veltoInterstitialViewControllerDidClose(Controller&) override {
    screen_.appeared_ = true;  // or was about to
    screen_.heard("DidClose");
  }
  void onVeltoInterstitialDismissed(Controller&) override { screen_.heard("Dismissed"); }

  Screen& screen_;
};

Screen::Screen(const Arguments& arguments, Journal& journal, bool drawn)
    : journal_(journal), arguments_(arguments) {
  gtk::setScreenSize(arguments.screen);
  isLandscape_ = arguments.screen.width > arguments.screen.height;
  window_ = GTK_WINDOW(gtk_window_new());
  gtk_window_set_title(window_, "velto-preview");
  if (drawn) {
    drawDevice(window_, arguments.screen);
  } else {
    gtk_window_set_decorated(window_, FALSE);  // the window is the screen, to the point
    gtk_window_set_default_size(window_, static_cast<int>(arguments.screen.width),
                                static_cast<int>(arguments.screen.height));
  }
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_window_set_child(window_, box);
  host_ = gtk::hostViewController(window_);
  if (arguments_.isVideoAd) stage_ = std::make_unique<VideoAdStage>(arguments_, journal, GTK_BOX(box), host_);
  g_signal_connect(window_, "destroy", G_CALLBACK(closed), this);
  gtk_widget_realize(GTK_WIDGET(window_));
  frames_ = GDK_FRAME_CLOCK(g_object_ref(gtk_widget_get_frame_clock(GTK_WIDGET(window_))));
  g_signal_connect(frames_, "after-paint", G_CALLBACK(painted), this);
  gtk_window_present(window_);
}

Screen::~Screen() {
  stage_.reset();
  banner_.reset();
  interstitial_.reset();
  if (window_) gtk_window_destroy(window_);
  g_signal_handlers_disconnect_by_data(frames_, this);
  g_object_unref(frames_);
}

void Screen::closed(GtkWidget*, Screen* self) noexcept {
  self->window_ = nullptr;
}

void Screen::load() {
  banner_.reset();
  interstitial_.reset();
  appeared_ = failed_ = false;
  if (willLoad) willLoad();
  if (stage_) return stage_->load(document_);
  if (arguments_.interstitial) {
    interstitialDelegate_ = std::make_shared<InterstitialDelegate>(*this);
    interstitial_ = VeltoInterstitialViewController::initWithDelegate(interstitialDelegate_);
    interstitial_->setAutoShowWhenReady(true);
    interstitial_->setPlacement("preview");
    interstitial_->load();
  } else {
    bannerDelegate_ = std::make_shared<BannerDelegate>(*this);
    banner_ = VeltoBannerViewController::initWithDelegate(
        bannerDelegate_, VeltoBannerSize320x50,
        arguments_.atTop ? VeltoBannerPositionTop : VeltoBannerPositionBottom);
    banner_->setPlacement("preview");
    banner_->load();
  }
}

void Screen::heard(const char* name, const VeltoErrorAd* error) {
  JSON::Object details{{"name", name}};
  if (error) {
    failed_ = true;
    details["code"] = static_cast<int64_t>(error->errorCode);
    details["description"] = error->descriptionError().value_or("");
  }
  journal_.add("callback", std::move(details));
}

bool Screen::hasLoaded() const {
  if (stage_) return stage_->hasStarted();
  return journal_.count("load-finished") > 0 && (!arguments_.interstitial || appeared_);
}

bool Screen::hasFailed() const {
  return failed_ || (stage_ && stage_->hasFailed());
}

bool Screen::hasEnded() const {
  return stage_ && stage_->hasEnded();
}

bool Screen::skip() {
  if (!stage_ || !stage_->skip()) return false;
  tellChange("skip");
  return true;
}

std::shared_ptr<WKWebView> Screen::webView() const {
  if (banner_) return banner_->vc()->activeWebView();
  return interstitial_ ? interstitial_->vc()->activeWebView() : nullptr;
}

std::optional<CGRect> Screen::frame() const {
  if (stage_) {
    graphene_rect_t place;
    auto* widget = arguments_.interstitial && isOpen() ? content() : stage_->widget();
    if (!isOpen() || !stage_->hasStarted() || stage_->hasEnded() ||
        !gtk_widget_compute_bounds(widget, content(), &place))
      return std::nullopt;
    return CGRect{{place.origin.x, place.origin.y}, {place.size.width, place.size.height}};
  }
  const auto view = webView();
  if (!view || !view->isInWindow()) return std::nullopt;
  return CGRect{host_->view()->convertPointFromView({0, 0}, *view), view->frame().size};
}

std::optional<VeltoAdWeight> Screen::weight() const {
  if (banner_) return banner_->adWeight();
  return interstitial_ ? interstitial_->adWeight() : std::nullopt;
}

// Asks for no frame of its own: a still screen costs nothing.
void Screen::painted(GdkFrameClock*, Screen* self) noexcept {
  if (!self->window_) return;
  self->followOrientation();
  self->followFrame();
}

void Screen::followFrame() {
  const auto now = frame();
  if (now == lastFrame_) return;
  lastFrame_ = now;
  if (!now) return journal_.add("frame", {{"frame", JSON()}});
  journal_.add("frame", {{"frame", JSON::Object{{"x", now->origin.x},
                                                {"y", now->origin.y},
                                                {"width", now->size.width},
                                                {"height", now->size.height}}}});
}

// The window follows unless the ad that is shown allows only other orientations.
void Screen::rotate(bool landscape) {
  tellChange(landscape ? "rotate landscape" : "rotate portrait");
  Platform::current().device().setOrientation(landscape ? landscapeRight : portrait);
  UIViewController::attemptRotationToDeviceOrientation();
}

// The screen turns with its window, whoever turned that.
void Screen::followOrientation() {
  const bool isLandscape = gtk_widget_get_width(content()) > gtk_widget_get_height(content());
  if (isLandscape == isLandscape_) return;
  isLandscape_ = isLandscape;
  const auto& [width, height] = arguments_.screen;
  const bool asGiven = isLandscape == (width > height);
  gtk::setScreenSize(asGiven ? arguments_.screen : CGSize{height, width});
}

void Screen::tellChange(const std::string& step) const {
  if (onChange) onChange(step);
}

void Screen::setShown(bool shown) {
  tellChange(shown ? "show" : "hide");
  gtk_widget_set_visible(GTK_WIDGET(window_), shown);
}

void Screen::setVolume(float fraction) {
  tellChange("volume " +
             writeJSON(JSON(static_cast<double>(std::lround(fraction * 100)) / 100), false).value_or("1"));
  if (stage_) stage_->setMuted(fraction <= 0);
  if (banner_) banner_->vc()->audioVolumeChange(fraction, webView());
  if (interstitial_) interstitial_->vc()->audioVolumeChange(fraction, webView());
}

bool Screen::pressClose() {
  if (stage_) return skip();
  auto* button = closeButtonIn(*host_->view());
  if (!button) return false;
  const auto held = button->shared_from_this();
  tellChange("close");
  button->sendTouchUpInside();
  return true;
}

bool Screen::photograph(const std::string& file, GtkWindow* beside) const {
  if (!window_) return false;
  std::vector<WebKitWebView*> pages;
  addPages(*host_->view(), pages);
  const auto texture =
      beside ? photographOf(std::vector{window_, beside}, pages) : photographOf(content(), pages);
  return texture && gdk_texture_save_to_png(texture, file.c_str());
}

}  // namespace velto::preview
