// The demo's window: a page with room for banners, buttons for those and for interstitials, and a log of what
// their delegates hear. main() makes one; its buttons and the tour show the same cases. Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/foundation/JSON.h>
#include <velto/velto.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "CoveredPage.h"
#include "Interstitials.h"
#include "VideoAds.h"

namespace demo {

enum class Place { Top, Bottom, AtPoint, InPage };

// One thing to show. Its key tells the sandbox what to answer.
struct Case {
  std::string name;
  std::string label;
  Place place;
  velto::VeltoBannerSize size;
  velto::VeltoAnimation animation = velto::VeltoAnimationNone;
  int refreshSeconds = 0;
  std::string key = "demo";
};

// What a delegate heard.
struct Event {
  double ms;  // since the window was made
  std::string name;
  std::string what;
};

class Stage {
 public:
  static const std::vector<Case>& cases();

  // `application` shows the one that is written with the GObject library; empty where there is none.
  explicit Stage(const std::function<void()>& application = nullptr);
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  ~Stage();

  // Puts the case's banner into its place, instead of the one that is there. The name must be one of cases().
  void show(const std::string& name);
  // Once more, in the banner that is there.
  void loadAgain(const std::string& name);
  Interstitials& interstitials() { return *interstitials_; }
  VideoAds& videoAds() { return *videoAds_; }
  void clear();

  bool isOpen() const { return window_ != nullptr; }
  GtkWindow* window() const { return window_; }
  GtkWidget* content() const { return gtk_window_get_child(window_); }  // banners included
  // Where a case's banner of that size belongs, in points of the content.
  velto::CGRect expectedFrame(const std::string& name, velto::CGSize size) const;
  // Where it is now; empty while it is not there.
  velto::CGRect adFrame(const std::string& name) const;

  const std::vector<Event>& events() const { return events_; }
  int count(const std::string& name, const std::string& what) const;

 private:
  class Banner;
  static const Case& caseOf(const std::string& name);
  void load(const Case& c, velto::VeltoBannerViewController& banner);
  void hear(const std::string& name, const std::string& what);  // from a delegate
  void add(const std::string& name, const std::string& what);
  void addMeasured(const velto::JSON& event);
  // Follows the click that a press just made until the server has acknowledged it, which takes it out of the
  // store.
  struct Click;
  void followClick(const std::string& name);

  GtkWindow* window_ = nullptr;  // null once closed
  GtkWidget* slot_ = nullptr;    // the widget that a banner can be put into
  GtkTextView* log_ = nullptr;
  std::shared_ptr<velto::UIViewController> host_;
  std::map<Place, std::shared_ptr<Banner>> banners_;
  std::unique_ptr<Interstitials> interstitials_;
  std::unique_ptr<VideoAds> videoAds_;
  std::unique_ptr<CoveredPage> covered_;  // while somebody looks at it
  std::vector<Event> events_;
  std::shared_ptr<Stage*> self_ = std::make_shared<Stage*>(this);  // expires with the stage
  const gint64 start_ = g_get_monotonic_time();
};

}  // namespace demo
