// The headless platform as the ground that ads stand on. A window of the application has a headless one behind it, which
// is where the window's banners and interstitials are; whoever has no display gets one that stands for any. Main thread.
#pragma once

#include <map>

#include "../velto-ground-private.h"
#include "velto-test-private.h"

namespace velto_test {

class TestSlot;

class TestGround final : public velto_glib::Ground {
 public:
  // Installed in place of the toolkit's on first use.
  static TestGround& current();

  // The world begins anew.
  void begin();
  velto::headless::Platform& platform() { return *platform_; }
  // For who lets things happen in it, one of which may begin the world anew.
  std::shared_ptr<velto::headless::Platform> kept() const { return platform_; }
  // Lets everything happen that is due, and the toolkit do its layout.
  void settle();

  // The window behind one of the application's, made on first use.
  velto::headless::HostWindow& windowOf(GtkWindow* window);
  // Where an interstitial or a video ad is presented; null before.
  std::shared_ptr<velto::headless::HostWindow> windowOf(GObject* ad);
  // What a video ad is played in; null where it has all of the window.
  std::shared_ptr<velto::UIView> placeOf(GObject* ad);
  void add(TestSlot* slot) { slots_.push_back(slot); }
  bool isInSlot(const velto::UIView& view) const;
  void remove(TestSlot* slot) { std::erase(slots_, slot); }

  std::optional<std::string> missing() const override { return std::nullopt; }
  void install(const velto::gtk::Options& options) override;
  void uninstall() override {}
  void setCalendarAccess(velto::gtk::Access access) override;
  void setPicturesAccess(velto::gtk::Access access) override;
  void setInForeground(std::optional<bool> inForeground) override;
  GtkWidget* makeSlot() override;
  void setSlotRoom(GtkWidget* slot, std::optional<velto::CGSize> room) override;
  std::shared_ptr<velto::UIViewController> slotController(GtkWidget* slot) override;
  std::shared_ptr<velto::UIViewController> windowController(GObject* ad, GtkWidget* parent,
                                                            const char*& why) override;
  std::shared_ptr<velto::UIView> hostView(GObject* ad, GtkWidget* widget, const char*& why) override;
  std::shared_ptr<velto::UIView> adView(GtkWidget* widget) override;
  void onMainThread(std::function<void()> work) override;

 private:
  using Window = std::shared_ptr<velto::headless::HostWindow>;

  void fit();
  bool awaitsLayout() const;
  void forget(GtkWindow* window);
  Window windowAround(GtkWidget* widget);  // null: the widget is in none
  void leave(GtkWidget* widget);
  static void follow(GtkWidget* widget, velto::UIView& place);

  std::shared_ptr<velto::headless::Platform> platform_;
  std::map<GtkWindow*, Window> windows_;
  Window nobodys_;  // for who has no display
  std::vector<TestSlot*> slots_;
  std::map<GtkWidget*, std::shared_ptr<velto::UIView>> places_;  // what video ads are played in
  bool inForeground_ = true;
};

}  // namespace velto_test
