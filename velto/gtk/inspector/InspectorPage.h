// A page of the toolkit's inspector (Ctrl+Shift+I, or GTK_DEBUG=interactive): the placements of this process, how their
// loads went, and what a person may do to them. It is a widget like any other, for tools that show it elsewhere. Main
// thread.
#pragma once

#include "velto/gtk/inspector/Feed.h"
#include "velto/timeline/InspectedPlacement.h"

#include <gtk/gtk.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto::gtk {

// Makes the page known to the inspector, which makes one when it is opened. Nothing else happens until then.
void registerInspectorPage();
GtkWidget* newInspectorPage();

// What is on the screen of it while its ad is; null: not of this platform.
GtkWidget* widgetOf(InspectedPlacement& placement);

// What the widget does. Looks at the placements when something has changed and the page is on the screen, and sleeps
// otherwise.
class InspectorPage {
 public:
  explicit InspectorPage(GtkWidget* box);
  InspectorPage(const InspectorPage&) = delete;
  InspectorPage& operator=(const InspectorPage&) = delete;
  ~InspectorPage();

  static InspectorPage& of(GtkWidget* page);
  void select(size_t placement, std::optional<uint64_t> load = std::nullopt);
  void selectAround(GtkWidget* widget);  // the placement whose ad it is, or is a part of
  std::string json() const;              // of the selected placement, as it is copied

  struct Shown {
    std::shared_ptr<const PlacementRecord> record;
    std::weak_ptr<InspectedPlacement> placement;  // expired: it has gone, and its loads can be read still
    std::string name, kind, state;
  };
  const std::vector<Shown>& shown() const { return shown_; }
  // Whether it waits for anything but news.
  bool isAwake() const { return timer_ || tick_; }

 private:
  static constexpr size_t mostGone = 8;
  static constexpr char reasonKey[] = "velto-reason";
  struct Line {
    GtkWidget* bars;
    GtkLabel* time;
  };

  void build();
  void addActions(GtkWidget* bar);
  static void failureChosen(GtkButton* choice, InspectorPage* self) noexcept;
  void setShown(bool shown);
  void changed();
  void follow(bool isUnderWay);
  void update();
  void collect();
  void showPlacements();
  void showLoads();
  void showLoad();
  void showEnd(const VeltoAdTimeline& load);
  void showChart(const VeltoAdTimeline& load);
  void makeLines(const Waterfall& chart);
  const VeltoAdTimeline* selectedLoad() const;
  const Shown* selected() const;
  std::shared_ptr<InspectedPlacement> selectedPlacement() const;

  GtkWidget* box_;
  std::shared_ptr<InspectorFeed> feed_;
  std::vector<Shown> shown_;
  std::shared_ptr<const PlacementRecord> selected_;
  std::vector<VeltoAdTimeline> loads_;    // of the selected placement, newest first
  std::optional<uint64_t> selectedLoad_;  // nothing: the newest, whichever that is
  bool isUpdating_ = false, isShown_ = false;
  guint timer_ = 0, tick_ = 0;

  GtkListBox *placementList_ = nullptr, *loadList_ = nullptr;
  GtkLabel *title_ = nullptr, *state_ = nullptr, *end_ = nullptr, *advice_ = nullptr, *sightWords_ = nullptr;
  GtkWidget *reload_ = nullptr, *fail_ = nullptr, *copy_ = nullptr;
  GtkWidget *story_ = nullptr, *ruler_ = nullptr, *sight_ = nullptr;
  GtkGrid* chart_ = nullptr;
  std::vector<Line> lines_;                              // of the chart
  std::string placementShape_, loadShape_, chartShape_;  // what the widgets were made for
  size_t placementIndex_ = 0;
};

}  // namespace velto::gtk
