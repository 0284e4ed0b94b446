// Model, rows, search.
#include "preview/EventList.h"

#include <cmath>
#include <set>
#include <utility>

#include "preview/Story.h"

namespace velto::preview {
namespace {

const std::set<std::string> errorKinds{"failure", "script-error", "resource-error", "navigation-failed"};

std::string shown(const JSON& value) {
  if (const auto* text = value.string()) return *text;
  return writeJSON(value, false).value_or("");
}

std::string partOf(const JSON::Object& entry, const char* key) {
  const auto found = entry.find(key);
  return found == entry.end() || found->second.isNull() ? std::string() : shown(found->second);
}

// Where in its document a finding is, if it is in one.
std::string linesOf(const JSON::Object& entry) {
  std::string lines;
  for (const auto& place : listIn(objectIn(entry, "evidence"), "places"))
    if (const auto* object = place.object(); object && object->contains("line"))
      lines += (lines.empty() ? "  line " : ", ") + partOf(*object, "line");
  return lines;
}

const char* gradeOf(const std::string& event, const JSON::Object& entry) {
  const auto level = partOf(entry, event == "finding" ? "severity" : "level");
  static const std::set<std::string> answers{"resource", "told", "wrapper", "file-look"};
  const bool isLost = answers.count(event) > 0 && entry.contains("error");
  if (errorKinds.count(event) || isLost || level == "error" || numberIn(entry, "status") >= 400)
    return "error";
  return event == "refused" || level == "warn" || level == "warning" ? "warning" : nullptr;
}

std::string weightOf(double bytes) {
  char* text = g_format_size(static_cast<guint64>(std::max(bytes, 0.0)));
  std::string words = text;
  g_free(text);
  return words;
}

GtkWidget* cell(const char* name, int width, float alignment) {
  GtkWidget* label = gtk_label_new(nullptr);
  gtk_widget_add_css_class(label, name);
  gtk_label_set_xalign(GTK_LABEL(label), alignment);
  gtk_label_set_width_chars(GTK_LABEL(label), width);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  if (width > 0) gtk_label_set_max_width_chars(GTK_LABEL(label), width);
  return label;
}

}  // namespace

std::string summaryOf(const JSON::Object& entry) {
  const auto event = partOf(entry, "event");
  if (event == "resource")
    return std::to_string(std::lround(numberIn(entry, "status"))) + "  " +
           weightOf(numberIn(entry, "bytes")) + "  " +
           std::to_string(std::lround(numberIn(entry, "duration"))) + " ms  " + partOf(entry, "url") + "  " +
           partOf(entry, "error");
  if (event == "told" || event == "wrapper")
    return partOf(entry, "name") + "  " + std::to_string(std::lround(numberIn(entry, "status"))) + "  " +
           std::to_string(std::lround(numberIn(entry, "duration"))) + " ms  " + partOf(entry, "url") + "  " +
           partOf(entry, "error");
  if (event == "frame") {
    const auto found = entry.find("frame");
    const auto* frame = found == entry.end() ? nullptr : found->second.object();
    if (!frame) return "none";
    return partOf(*frame, "x") + ", " + partOf(*frame, "y") + "   " + partOf(*frame, "width") + " × " +
           partOf(*frame, "height");
  }
  for (const char* key : {"text", "message"})
    if (const auto text = partOf(entry, key); !text.empty()) {
      const auto id = partOf(entry, "id");
      return (id.empty() ? text : id + ": " + text) + linesOf(entry);
    }
  std::string words;
  for (const char* first : {"name", "state", "type"})
    if (const auto text = partOf(entry, first); !text.empty()) words += (words.empty() ? "" : "  ") + text;
  for (const auto& [key, value] : entry)
    if (key != "event" && key != "t" && key != "name" && key != "state" && key != "type") {
      if (value == JSON(false)) continue;
      words += (words.empty() ? "" : "  ") + (value == JSON(true) ? key : shown(value));
    }
  return words;
}

EventList::EventList(Takes takes) : takes_(takes), entries_(g_list_store_new(GTK_TYPE_STRING_OBJECT)) {
  auto* expression = gtk_property_expression_new(GTK_TYPE_STRING_OBJECT, nullptr, "string");
  auto* filter = gtk_string_filter_new(expression);
  auto* filtered =
      gtk_filter_list_model_new(G_LIST_MODEL(g_object_ref(entries_)), GTK_FILTER(g_object_ref(filter)));
  auto* selection = gtk_single_selection_new(G_LIST_MODEL(filtered));
  gtk_single_selection_set_autoselect(selection, FALSE);
  gtk_single_selection_set_can_unselect(selection, TRUE);
  gtk_single_selection_set_selected(selection, GTK_INVALID_LIST_POSITION);
  auto* factory = gtk_signal_list_item_factory_new();
  g_signal_connect(factory, "setup", G_CALLBACK(made), nullptr);
  g_signal_connect(factory, "bind", G_CALLBACK(bound), nullptr);
  view_ = gtk_list_view_new(GTK_SELECTION_MODEL(selection), factory);

  search_ = gtk_search_entry_new();
  g_object_set(search_, "placeholder-text", "Search", nullptr);
  g_signal_connect_data(
      search_, "search-changed", G_CALLBACK(searched), filter,
      [](gpointer data, GClosure*) { g_object_unref(data); }, GConnectFlags{});
  g_signal_connect(search_, "stop-search", G_CALLBACK(searchStopped), view_);
  scrolled_ = gtk_scrolled_window_new();
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled_), view_);
  gtk_widget_set_vexpand(scrolled_, TRUE);
  gtk_widget_set_size_request(scrolled_, -1, 80);

  details_ = gtk_text_view_new();
  gtk_text_view_set_editable(GTK_TEXT_VIEW(details_), FALSE);
  gtk_text_view_set_monospace(GTK_TEXT_VIEW(details_), TRUE);
  gtk_text_view_set_wrap_mode(GTK_TEXT_VIEW(details_), GTK_WRAP_WORD_CHAR);
  gtk_text_view_set_left_margin(GTK_TEXT_VIEW(details_), 8);
  GtkWidget* below = gtk_scrolled_window_new();
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(below), details_);
  gtk_widget_set_size_request(below, -1, 120);
  gtk_widget_set_visible(below, FALSE);
  g_signal_connect(selection, "notify::selected-item", G_CALLBACK(selected), this);

  GtkWidget* paned = gtk_paned_new(GTK_ORIENTATION_VERTICAL);
  gtk_paned_set_start_child(GTK_PANED(paned), scrolled_);
  gtk_paned_set_end_child(GTK_PANED(paned), below);
  gtk_paned_set_resize_end_child(GTK_PANED(paned), FALSE);
  gtk_paned_set_shrink_start_child(GTK_PANED(paned), FALSE);
  gtk_paned_set_shrink_end_child(GTK_PANED(paned), FALSE);
  box_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(box_), search_);
  gtk_box_append(GTK_BOX(box_), paned);
}

EventList::~EventList() {
  g_object_unref(entries_);
}

void EventList::made(GtkSignalListItemFactory*, GtkListItem* item) noexcept {
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
  gtk_widget_add_css_class(row, "velto-event");
  gtk_box_append(GTK_BOX(row), cell("time", 8, 1));
  gtk_box_append(GTK_BOX(row), cell("kind", 13, 0));
  GtkWidget* what = cell("what", -1, 0);
  gtk_widget_set_hexpand(what, TRUE);
  gtk_box_append(GTK_BOX(row), what);
  gtk_list_item_set_child(item, row);
}

void EventList::bound(GtkSignalListItemFactory*, GtkListItem* item) noexcept {
  GtkWidget* row = gtk_list_item_get_child(item);
  const auto json = readJSON(gtk_string_object_get_string(GTK_STRING_OBJECT(gtk_list_item_get_item(item))));
  const auto* entry = json ? json->object() : nullptr;
  if (!entry) return;
  const auto event = partOf(*entry, "event");
  char time[32];
  g_snprintf(time, sizeof time, "%.3f", numberIn(*entry, "t") / 1000);
  auto* label = gtk_widget_get_first_child(row);
  std::string line = summaryOf(*entry);
  for (char& c : line)
    if (c == '\n' || c == '\r') c = ' ';
  for (const auto& words : {std::string(time), event, line.substr(0, 400)}) {
    char* valid = g_utf8_make_valid(words.c_str(), -1);  // it may be cut in the middle of a letter
    gtk_label_set_text(GTK_LABEL(label), valid);
    g_free(valid);
    label = gtk_widget_get_next_sibling(label);
  }
  for (const char* grade : {"error", "warning"}) gtk_widget_remove_css_class(row, grade);
  if (const char* grade = gradeOf(event, *entry)) gtk_widget_add_css_class(row, grade);
}

void EventList::selected(GtkSingleSelection* selection, GParamSpec*, EventList* self) noexcept {
  auto* item = gtk_single_selection_get_selected_item(selection);
  const auto json = item ? readJSON(gtk_string_object_get_string(GTK_STRING_OBJECT(item))) : std::nullopt;
  gtk_widget_set_visible(gtk_widget_get_parent(self->details_), json.has_value());
  if (!json) return;
  const auto text = writeJSON(*json, true).value_or("");
  gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(self->details_)), text.c_str(), -1);
}

void EventList::searched(GtkEditable* search, GtkStringFilter* filter) noexcept {
  gtk_string_filter_set_search(filter, gtk_editable_get_text(search));
}

// By Escape.
void EventList::searchStopped(GtkSearchEntry* search, GtkWidget* view) noexcept {
  gtk_editable_set_text(GTK_EDITABLE(search), "");
  gtk_widget_grab_focus(view);
}

bool EventList::isAtEnd() const {
  auto* adjustment = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled_));
  constexpr double slack = 40;
  const double value = gtk_adjustment_get_value(adjustment);
  // Its height is a guess, and may have become another since it was scrolled to the end.
  return value + slack >= end_ ||
         value + gtk_adjustment_get_page_size(adjustment) + slack >= gtk_adjustment_get_upper(adjustment);
}

// Who reads further up is left there.
void EventList::add(const JSON::Object& entry) {
  if (!takes_(partOf(entry, "event"))) return;
  follows_ = follows_ || isAtEnd();
  if (count() >= most) g_list_store_splice(entries_, 0, most / 4, nullptr, 0);
  auto* line = gtk_string_object_new(writeJSON(JSON(entry), false).value_or("{}").c_str());
  g_list_store_append(entries_, line);
  g_object_unref(line);
  if (!follows_ || std::exchange(isToScroll_, true)) return;
  gtk_widget_add_tick_callback(view_, scrolled, this, nullptr);
}

// For all that came since the last frame, and by way of its height, which the list only knows after a frame or two: sent to
// the last of a thousand new rows it draws none.
gboolean EventList::scrolled(GtkWidget*, GdkFrameClock*, gpointer data) noexcept {
  auto* self = static_cast<EventList*>(data);
  auto* adjustment = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(self->scrolled_));
  gtk_adjustment_set_value(adjustment, gtk_adjustment_get_upper(adjustment));
  self->end_ = gtk_adjustment_get_value(adjustment);
  if (++self->framesScrolled_ < framesOfScroll) return G_SOURCE_CONTINUE;
  self->framesScrolled_ = 0;
  self->follows_ = self->isToScroll_ = false;
  return G_SOURCE_REMOVE;
}

}  // namespace velto::preview
