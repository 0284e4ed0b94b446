// A list of what happened, for the inspector: a line for each entry of the journal that it takes, made when it comes into
// sight, so that ten thousand cost no more than those that are seen; all of one entry below. Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/foundation/JSON.h>

#include <functional>
#include <string>

namespace velto::preview {

class EventList {
 public:
  using Takes = bool (*)(const std::string& event);
  explicit EventList(Takes takes);
  EventList(const EventList&) = delete;
  EventList& operator=(const EventList&) = delete;
  ~EventList();

  GtkWidget* widget() const { return box_; }
  void add(const JSON::Object& entry);
  void clear() { g_list_store_remove_all(entries_); }
  size_t count() const { return g_list_model_get_n_items(G_LIST_MODEL(entries_)); }
  void find() const { gtk_widget_grab_focus(search_); }

 private:
  static constexpr guint most = 20'000;  // the oldest go
  static constexpr int framesOfScroll = 3;
  static void made(GtkSignalListItemFactory*, GtkListItem* item) noexcept;
  static void bound(GtkSignalListItemFactory*, GtkListItem* item) noexcept;
  static void selected(GtkSingleSelection* selection, GParamSpec*, EventList* self) noexcept;
  static void searched(GtkEditable* search, GtkStringFilter* filter) noexcept;
  static void searchStopped(GtkSearchEntry* search, GtkWidget* view) noexcept;
  static gboolean scrolled(GtkWidget* view, GdkFrameClock*, gpointer self) noexcept;
  bool isAtEnd() const;

  const Takes takes_;
  GListStore* entries_;  // strings, lines of JSON
  GtkWidget *box_, *view_, *search_, *details_, *scrolled_;
  bool follows_ = false, isToScroll_ = false;
  int framesScrolled_ = 0;
  double end_ = 0;  // where it was scrolled to last
};

// What one line says of an entry.
std::string summaryOf(const JSON::Object& entry);

}  // namespace velto::preview
