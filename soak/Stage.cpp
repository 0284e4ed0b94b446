// Windows, placements, and whether they can show ads.
#include "Stage.h"

#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

namespace velto::soak {
namespace {

enum : int { FirstSlot, SecondSlot, Wanderer, AtBottom, AtPoint, OverWidget, FirstScreen, SecondScreen };

}  // namespace

Stage::Stage(Dice& dice, Surroundings& around, Turns& turns, Counts& counts)
    : dice_(dice), around_(around), turns_(turns), counts_(counts) {
  for (auto& slot : slots_)
    slot = {GTK_WIDGET(g_object_ref_sink(gtk::adSlot())), [](GtkWidget* widget) { g_object_unref(widget); }};
  for (int window = 0; window < windows; ++window) open(window);
}

Stage::~Stage() {
  late_.clear();
  for (auto& place : places_) place = {};
  for (int window = 0; window < windows; ++window) close(window);
}

int Stage::windowOf(int place) const {
  if (place < slots) {
    const auto* root = gtk_widget_get_root(slots_[static_cast<size_t>(place)].get());
    for (int window = 0; window < windows; ++window) {
      const auto* candidate = windows_[static_cast<size_t>(window)].window;
      if (candidate && static_cast<const void*>(candidate) == static_cast<const void*>(root)) return window;
    }
    return -1;
  }
  const int window = place == AtBottom || place == FirstScreen ? 0 : 1;
  return windows_[static_cast<size_t>(window)].window ? window : -1;
}

void Stage::open(int number) {
  auto& [window, scrolled, box] = windows_[static_cast<size_t>(number)];
  ++counts_.windows;
  window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_decorated(window, false);
  gtk_window_set_default_size(window, 500, 600);
  box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 40);
  gtk_box_append(GTK_BOX(box), gtk_label_new("What the application is about"));
  scrolled = gtk_scrolled_window_new();
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), box);
  gtk_window_set_child(window, scrolled);
  for (int slot = 0; slot < slots; ++slot)
    if (!gtk_widget_get_parent(slots_[static_cast<size_t>(slot)].get()) && (slot == Wanderer || number == 0))
      putSlot(slot, number);
  // The list is long enough that banners go out of sight.
  auto* filler = gtk_label_new("and more of it");
  gtk_widget_set_size_request(filler, -1, 1500);
  gtk_box_append(GTK_BOX(box), filler);
  gtk::hostViewController(window);
  gtk_window_present(window);
  for (int place = 0; place < places; ++place)
    if (windowOf(place) == number && !places_[static_cast<size_t>(place)].ears) make(place);
}

void Stage::close(int number) {
  auto& window = windows_[static_cast<size_t>(number)];
  if (!window.window) return;
  for (int place = 0; place < places; ++place) {
    if (windowOf(place) != number) continue;
    auto& gone = places_[static_cast<size_t>(place)];
    if (drawn(dice_, 2) == 0) late_.push_back(gone);
    gone = {};
  }
  for (const auto& slot : slots_)
    if (gtk_widget_get_parent(slot.get()) == window.box) gtk_box_remove(GTK_BOX(window.box), slot.get());
  gtk_window_destroy(window.window);
  window = {};
}

void Stage::putSlot(int slot, int number) {
  const auto& window = windows_[static_cast<size_t>(number)];
  gtk_box_insert_child_after(GTK_BOX(window.box), slots_[static_cast<size_t>(slot)].get(),
                             gtk_widget_get_first_child(window.box));
}

void Stage::make(int number) {
  auto& place = places_[static_cast<size_t>(number)];
  place = {};
  const int at = windowOf(number);
  if (at < 0) return;
  auto* window = windows_[static_cast<size_t>(at)].window;
  place.ears = std::make_shared<Ears>(counts_);
  place.ears->host = number < slots ? gtk::hostViewController(slots_[static_cast<size_t>(number)].get())
                                    : gtk::hostViewController(window);
  using Banner = VeltoBannerViewController;
  switch (number) {
    case FirstScreen:
    case SecondScreen:
      place.interstitial = VeltoInterstitialViewController::initWithDelegate(place.ears);
      place.interstitial->setAnimation(static_cast<VeltoAnimation>(drawn(dice_, 6)));
      break;
    case AtPoint:
      place.banner = Banner::initWithDelegate(place.ears, VeltoBannerSize300x250, CGPoint{20, 80});
      break;
    case OverWidget:
      place.banner = Banner::initWithDelegate(
          place.ears, VeltoBannerSize320x50,
          gtk::hostView(gtk_widget_get_first_child(windows_[static_cast<size_t>(at)].box)));
      break;
    default:
      place.banner = Banner::initWithDelegate(
          place.ears, number == Wanderer ? VeltoBannerSize300x250 : VeltoBannerSize320x50,
          number == AtBottom ? VeltoBannerPositionBottom : VeltoBannerPositionTop);
  }
  if (place.banner) place.banner->setAnimation(static_cast<VeltoAnimation>(drawn(dice_, 6)));
}

// Goes on with one placement. An interstitial has to appear, and is closed as by a person.
bool Stage::healed(Place& place, int finishedBefore, int failedBefore, int appearedBefore) {
  auto& ears = *place.ears;
  if (place.banner) {
    if (ears.finished > finishedBefore) return true;
    if (ears.failed > failedBefore || place.banner->state() == VeltoBannerStateEmpty) place.banner->load();
    return false;
  }
  auto& interstitial = *place.interstitial;
  if (interstitial.state() == VeltoInterstitialStatePresented) {
    if (ears.appeared > appearedBefore || ears.finished == finishedBefore)
      interstitial.vc()->_tapCloseButton();
    return false;
  }
  if (ears.appeared > appearedBefore) return true;
  if (interstitial.isReady())
    interstitial.show();
  else if (!interstitial.isLoading())
    interstitial.load();
  return false;
}

Stage::Healing Stage::heal(int milliseconds, const std::string& key) {
  around_.settle();
  turns_.call("heal", [&] { VeltoFramework::addVeltoKey(key); });
  late_.clear();
  for (int number = 0; number < windows; ++number) {
    auto& window = windows_[static_cast<size_t>(number)];
    if (!window.window) open(number);
    gtk_window_set_default_size(window.window, 500, 600);
    gtk_window_present(window.window);
  }
  for (int slot = 0; slot < slots; ++slot)
    if (!gtk_widget_get_parent(slots_[static_cast<size_t>(slot)].get())) putSlot(slot, 0);
  for (int number = 0; number < places; ++number)
    if (!places_[static_cast<size_t>(number)].ears) make(number);
  const gint64 begin = g_get_monotonic_time();
  const auto since = [begin] { return static_cast<int>((g_get_monotonic_time() - begin) / 1000); };
  for (int number = 0; number < places; ++number) {
    auto& place = places_[static_cast<size_t>(number)];
    const auto& ears = *place.ears;
    const int finished = ears.finished, appeared = ears.appeared;
    int failed = ears.failed;
    turns_.call("heal", [&] {
      if (place.banner) place.banner->setEnableAutoRefresh(false);
      if (place.banner) place.banner->load();
    });
    while (true) {
      bool done = false;
      turns_.call("heal",
                  [&] { done = healed(place, finished, std::exchange(failed, ears.failed), appeared); });
      if (done) break;
      if (since() > milliseconds) {
        const auto story =
            place.banner ? place.banner->veltoAdTimeline() : place.interstitial->veltoAdTimeline();
        return {since(),
                "placement " + std::to_string(number) + " shows no ad within " +
                    std::to_string(milliseconds / 1000) + " s: " +
                    (story.empty() || !story.back().end ? "its load goes on"
                                                        : std::string(wordsOf(*story.back().end).sentence))};
      }
      turns_.runFor(100);
    }
  }
  return {since(), std::nullopt};
}

}  // namespace velto::soak
