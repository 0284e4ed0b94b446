// Laying out a hundred banners of one window that is resized, each with its page in it: by the library's
// constraints, and by the toolkit's own alignment of as many widgets in the same tree. Both ask how large
// things want to be, give all of them their frames, and end with the same ones.
#include "velto/headless/VeltoHeadless.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/velto.h"

#include <benchmark/benchmark.h>
#include <gtk/gtk.h>

#include <vector>

namespace velto {
namespace {

constexpr int banners = 100;
constexpr CGSize bannerSize{320, 50};
constexpr int height = 844;
constexpr int widths[] = {390, 412};

CGRect frameByHand(int width) {
  return {{(width - bannerSize.width) / 2, height - bannerSize.height}, bannerSize};
}

class HundredBanners {
 public:
  HundredBanners() {
    platform_->setPagesFinishByThemselves(true);
    platform_->urlSession().respond(
        "", {.headers = {{"x-content", "html"}, {"x-width", "320"}, {"x-height", "50"}},
             .body = "<a href='velto://loadFinished'></a>"});
    VeltoFramework::addVeltoKey("bench");
    delegate_->host = window_.controller();
    for (int i = 0; i < banners; ++i) {
      banners_.push_back(VeltoBannerViewController::initWithDelegate(delegate_, VeltoBannerSize320x50,
                                                                     VeltoBannerPositionBottom));
      banners_.back()->load();
      platform_->runUntilIdle();
    }
  }
  ~HundredBanners() {
    banners_.clear();
    headless::Platform::uninstall();
  }

  void layOut(int width) {
    window_.resize({static_cast<double>(width), height});
    window_.view().layoutIfNeeded();
  }

  CGRect frame(int banner) const {
    const auto& view = banners_.at(static_cast<size_t>(banner))->vc()->view();
    const CGSize page = view->subviews().front()->frame().size;
    return {view->frame().origin, page};
  }

 private:
  struct Delegate : VeltoBannerViewControllerDelegate {
    std::shared_ptr<UIViewController> presentViewController() override { return host; }
    std::shared_ptr<UIViewController> host;
  };

  std::shared_ptr<headless::Platform> platform_ = headless::Platform::install();
  headless::HostWindow window_;
  std::shared_ptr<Delegate> delegate_ = std::make_shared<Delegate>();
  std::vector<std::shared_ptr<VeltoBannerViewController>> banners_;
};

class HundredWidgets {
 public:
  HundredWidgets() {
    g_object_ref_sink(root_);
    gtk_overlay_set_child(GTK_OVERLAY(root_), gtk_fixed_new());
    for (int i = 0; i < banners; ++i) {
      auto* banner = gtk_overlay_new();
      auto* page = gtk_drawing_area_new();
      gtk_widget_set_size_request(page, static_cast<int>(bannerSize.width),
                                  static_cast<int>(bannerSize.height));
      gtk_overlay_set_child(GTK_OVERLAY(banner), page);
      gtk_widget_set_halign(banner, GTK_ALIGN_CENTER);
      gtk_widget_set_valign(banner, GTK_ALIGN_END);
      gtk_overlay_add_overlay(GTK_OVERLAY(root_), banner);
      pages_.push_back(page);
    }
  }
  ~HundredWidgets() { g_object_unref(root_); }

  void layOut(int width) {
    int minimum = 0;
    gtk_widget_measure(root_, GTK_ORIENTATION_HORIZONTAL, -1, &minimum, nullptr, nullptr, nullptr);
    gtk_widget_measure(root_, GTK_ORIENTATION_VERTICAL, width, &minimum, nullptr, nullptr, nullptr);
    gtk_widget_allocate(root_, width, height, -1, nullptr);
  }

  CGRect frame(int banner) const {
    graphene_rect_t bounds;
    if (!gtk_widget_compute_bounds(pages_.at(static_cast<size_t>(banner)), root_, &bounds)) return {};
    return {{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}};
  }

 private:
  GtkWidget* root_ = gtk_overlay_new();
  std::vector<GtkWidget*> pages_;
};

template <class Ads>
void layOut(benchmark::State& state) {
  Ads ads;
  for (const int width : widths) {
    ads.layOut(width);
    for (int i = 0; i < banners; ++i)
      if (ads.frame(i) != frameByHand(width)) state.SkipWithError("a banner is not where it belongs");
  }
  for (auto _ : state)
    for (const int width : widths) ads.layOut(width);
}

void BM_LayoutByLibrary(benchmark::State& state) {
  layOut<HundredBanners>(state);
}
BENCHMARK(BM_LayoutByLibrary);

void BM_LayoutByToolkit(benchmark::State& state) {
  layOut<HundredWidgets>(state);
}
BENCHMARK(BM_LayoutByToolkit);

}  // namespace
}  // namespace velto

int main(int count, char** words) {
  if (!gtk_init_check()) return 1;
  benchmark::Initialize(&count, words);
  benchmark::RunSpecifiedBenchmarks();
}
