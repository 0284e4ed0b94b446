// An application with ads in every place that there is: slots in a list, one of which wanders, banners over a window's content and
// over a widget, and interstitials, in two windows. It does at random what applications and people do. Main thread.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/velto.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Surroundings.h"
#include "Turns.h"

namespace velto::soak {

struct Counts {
  uint64_t steps = 0, loads = 0, finished = 0, failed = 0, screens = 0, windows = 0;
};

// What one placement tells.
class Ears : public VeltoBannerViewControllerDelegate, public VeltoInterstitialViewControllerDelegate {
 public:
  explicit Ears(Counts& counts) : counts_(counts) {}
  std::shared_ptr<UIViewController> presentViewController() override { return host; }
  void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override { finish(); }
  void veltoBannerViewControllerDidFail(VeltoBannerViewControllerPrivate&, const VeltoErrorAd&) override {
    fail();
  }
  void veltoInterstitialViewControllerDidFinishLoad(VeltoInterstitialViewControllerPrivate&) override {
    finish();
  }
  void veltoInterstitialViewControllerDidFail(VeltoInterstitialViewControllerPrivate&,
                                              const VeltoErrorAd&) override {
    fail();
  }
  void veltoInterstitialViewControllerDidAppear(VeltoInterstitialViewControllerPrivate&) override {
    ++counts_.screens;
    ++appeared;
  }

  std::shared_ptr<UIViewController> host;
  int finished = 0, failed = 0, appeared = 0;

 private:
  void finish() { ++finished, ++counts_.finished; }
  void fail() { ++failed, ++counts_.failed; }
  Counts& counts_;
};

struct Place {
  std::shared_ptr<Ears> ears;  // null while its window is closed
  std::shared_ptr<VeltoBannerViewController> banner;
  std::shared_ptr<VeltoInterstitialViewController> interstitial;

  void load() const { banner ? banner->load() : interstitial->load(); }
};

class Stage {
 public:
  static constexpr int windows = 2, slots = 3, places = 8;

  Stage(Dice& dice, Surroundings& around, Turns& turns, Counts& counts);
  // Everything of the ads is let go.
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  void step();
  // Whether every placement can still show an ad: all of them are told to, again and again within the time. The slowest's
  // milliseconds, or what is wrong.
  struct Healing {
    int milliseconds = 0;
    std::optional<std::string> broken;
  };
  Healing heal(int milliseconds, const std::string& key);

 private:
  struct Window {
    GtkWindow* window = nullptr;
    GtkWidget* scrolled = nullptr;
    GtkWidget* box = nullptr;
  };

  void open(int window);
  void close(int window);
  void make(int place);
  int windowOf(int place) const;
  void putSlot(int slot, int window);
  bool healed(Place& place, int finishedBefore, int failedBefore, int appearedBefore);

  // The steps.
  Place& anyPlace() { return places_[static_cast<size_t>(drawn(dice_, places))]; }
  Window& anyWindow() { return windows_[static_cast<size_t>(drawn(dice_, windows))]; }
  void load();
  void letGo();
  void changeRefresh();
  void screen();
  void resize();
  void hideOrShow();
  void openOrClose();
  void moveSlot();
  void scroll();
  void askPage();

  Dice& dice_;
  Surroundings& around_;
  Turns& turns_;
  Counts& counts_;
  std::array<Window, windows> windows_;
  std::array<Place, places> places_;
  std::array<std::shared_ptr<GtkWidget>, slots> slots_;
  std::vector<Place> late_;  // their windows were closed first
};

}  // namespace velto::soak
