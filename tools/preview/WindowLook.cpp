// What the window is made of, and what it shows.
#include <velto/gtk/inspector/Charts.h>
#include <velto/gtk/inspector/InspectorPage.h>
#include <velto/platform/Clock.h>
#include <velto/platform/Platform.h>

#include <filesystem>
#include <set>

#include "preview/Window.h"

namespace velto::preview {
namespace {

constexpr int margin = 10;

GtkLabel* line(GtkWidget* box) {
  GtkWidget* label = gtk_label_new(nullptr);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  gtk_box_append(GTK_BOX(box), label);
  return GTK_LABEL(label);
}

bool isEvent(const std::string&) {
  return true;
}
bool isOfConsole(const std::string& event) {
  static const std::set<std::string> kinds{"console", "script-error", "resource-error",
                                           "refused", "dialog",       "failure"};
  return kinds.count(event) > 0;
}
bool isOfNetwork(const std::string& event) {
  return event == "resource" || event == "navigation" || event == "navigation-failed" || event == "open";
}
// What the page is asked for to judge it, which is no news.
bool isAsked(const std::string& event) {
  static const std::set<std::string> kinds{"page",  "weight",    "library", "storage",
                                           "sound", "vibration", "early",   "unresponsive",
                                           "fault", "file",      "part"};
  return kinds.count(event) > 0;
}
bool isFinding(const std::string& event) {
  return event == "finding";
}

}  // namespace

Window::Window(Screen& screen, Journal& journal, std::string creative, const std::string& base, Offer offer)
    : screen_(screen),
      journal_(journal),
      creative_(std::move(creative)),
      offer_(std::move(offer)),
      device_(screen),
      events_(isEvent),
      console_(isOfConsole),
      network_(isOfNetwork),
      findings_(isFinding),
      requests_(journal) {
  window_ = GTK_WINDOW(gtk_window_new());
  loadLook(gtk_widget_get_display(GTK_WIDGET(window_)));
  gtk_window_set_default_size(window_, 720, 820);
  actions_ = g_simple_action_group_new();
  for (const auto& command : commands) {
    auto* action = command.isSwitch
                       ? g_simple_action_new_stateful(command.name, nullptr, g_variant_new_boolean(FALSE))
                       : g_simple_action_new(command.name, nullptr);
    g_signal_connect(action, "activate", G_CALLBACK(activated), this);
    g_action_map_add_action(G_ACTION_MAP(actions_), G_ACTION(action));
    g_object_unref(action);
  }
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(box), tools());
  gtk_box_append(GTK_BOX(box), sight());
  gtk_box_append(GTK_BOX(box), pages());
  gtk_window_set_child(window_, box);
  addKeys(GTK_WIDGET(window_));
  addKeys(GTK_WIDGET(screen.window()));
  g_signal_connect(window_, "destroy", G_CALLBACK(closed), this);
  feed_ = std::make_shared<gtk::InspectorFeed>([this] { showSight(); });
  feed_->connect();
  // The journal outlives this.
  journal_.observe([this, alive = std::weak_ptr(feed_)](const JSON::Object& entry) {
    if (!alive.expired()) add(entry);
  });
  begin(base);
  watchFile();
  update();
  gtk_window_present(window_);
}

Window::~Window() {
  feed_->stop();
  for (const guint timer : {settling_, judging_})
    if (timer) g_source_remove(timer);
  fileDialog_.reset();
  if (window_) gtk_window_destroy(window_);
  g_object_unref(actions_);
}

void Window::closed(GtkWidget*, Window* self) noexcept {
  self->fileDialog_.reset();
  self->window_ = nullptr;
}

// As many in a row as there is room for.
GtkWidget* Window::tools() {
  GtkWidget* flow = gtk_flow_box_new();
  gtk_widget_add_css_class(flow, "velto-tools");
  gtk_flow_box_set_selection_mode(GTK_FLOW_BOX(flow), GTK_SELECTION_NONE);
  gtk_flow_box_set_max_children_per_line(GTK_FLOW_BOX(flow), static_cast<guint>(commands.size()));
  for (auto* set : {gtk_widget_set_margin_top, gtk_widget_set_margin_bottom, gtk_widget_set_margin_start,
                    gtk_widget_set_margin_end})
    set(flow, margin / 2);
  for (const auto& command : commands) {
    GtkWidget* button = command.isSwitch ? gtk_toggle_button_new_with_label(command.label)
                                         : gtk_button_new_with_label(command.label);
    gtk_actionable_set_action_name(GTK_ACTIONABLE(button), (std::string("preview.") + command.name).c_str());
    guint key = 0;
    GdkModifierType modifiers{};
    gtk_accelerator_parse(command.keys, &key, &modifiers);
    char* keys = gtk_accelerator_get_label(key, modifiers);
    gtk_widget_set_tooltip_text(button, (std::string(command.tip) + " (" + keys + ")").c_str());
    g_free(keys);
    gtk_flow_box_insert(GTK_FLOW_BOX(flow), button, -1);
    gtk_widget_set_focusable(gtk_widget_get_parent(button), FALSE);  // the button itself has the focus
  }
  return flow;
}

// The device once more, small, and what is to be said of its ad.
GtkWidget* Window::sight() {
  GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 14);
  for (auto* set : {gtk_widget_set_margin_bottom, gtk_widget_set_margin_start, gtk_widget_set_margin_end})
    set(row, margin);
  GdkPaintable* live = gtk_widget_paintable_new(screen_.content());
  small_ = gtk_picture_new_for_paintable(live);
  g_object_unref(live);
  gtk_widget_add_css_class(small_, "velto-small-device");
  gtk_widget_set_size_request(small_, 96, 176);
  gtk_widget_set_halign(small_, GTK_ALIGN_START);
  gtk_widget_set_valign(small_, GTK_ALIGN_START);
  gtk_widget_set_overflow(small_, GTK_OVERFLOW_HIDDEN);
  gtk_accessible_update_property(GTK_ACCESSIBLE(small_), GTK_ACCESSIBLE_PROPERTY_LABEL, "the device", -1);
  gtk_box_append(GTK_BOX(row), small_);
  GtkWidget* words = gtk_box_new(GTK_ORIENTATION_VERTICAL, 4);
  gtk_widget_set_hexpand(words, TRUE);
  state_ = line(words);
  gtk_widget_add_css_class(GTK_WIDGET(state_), "heading");
  frame_ = line(words);
  load_ = line(words);
  seen_ = line(words);
  graph_ = gtk::newStrip(120, 84);
  gtk_box_append(GTK_BOX(words), graph_);
  gtk_box_append(GTK_BOX(row), words);
  return row;
}

GtkWidget* Window::pages() {
  notebook_ = gtk_notebook_new();
  gtk_notebook_set_scrollable(GTK_NOTEBOOK(notebook_), TRUE);
  gtk_widget_set_vexpand(notebook_, TRUE);
  const auto add = [this](GtkWidget* page, const char* title) {
    gtk_notebook_append_page(GTK_NOTEBOOK(notebook_), page, gtk_label_new(title));
  };
  add(events_.widget(), "Timeline");
  add(console_.widget(), "Console");
  add(network_.widget(), "Network");
  add(findings_.widget(), "Findings");
  GtkWidget* loads = gtk_scrolled_window_new();
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(loads), gtk::newInspectorPage());
  add(loads, "Loads");
  return notebook_;
}

void Window::add(const JSON::Object& entry) {
  story_.add(entry);
  const auto event = textIn(entry, "event");
  if (!window_ || isAsked(event)) return;
  judgeSoon();
  for (auto* list : {&events_, &console_, &network_, &findings_}) list->add(entry);
  if (event == "load-finished") device_.renew();
  if (event == "statement" && textIn(entry, "name") == "ready") device_.renewVolume();
  update();
}

void Window::update() {
  if (!window_) return;
  const auto name = std::filesystem::path(creative_).filename().string();
  gtk_window_set_title(window_, (name + " – velto-preview").c_str());
  gtk_label_set_text(state_, story_.isOfVideoAd() ? "video ad"
                             : journal_.state().empty()
                                 ? "no rich media"
                                 : (journal_.state() + " · " + journal_.placement()).c_str());
  const auto frame = screen_.isOpen() ? screen_.frame() : std::nullopt;
  const auto text = [](double value) { return writeJSON(JSON(value), false).value_or("?"); };
  gtk_label_set_text(frame_, !frame ? "not on the screen"
                                    : (text(frame->size.width) + " × " + text(frame->size.height) + " at " +
                                       text(frame->origin.x) + ", " + text(frame->origin.y))
                                          .c_str());
  showSight();
}

// Of the newest load.
void Window::showSight() {
  const auto placements = feed_->placements();
  if (!window_ || placements.empty()) return;
  const auto loads = placements.back()->record()->timelines();
  if (loads.empty()) return;
  const auto& load = loads.back();
  const double until = load.end ? load.endSeconds : Platform::current().clock().monotonicSeconds();
  const auto points = feed_->sight(load);
  gtk_label_set_text(load_, headlineOf(load).c_str());
  gtk_label_set_text(seen_, gtk::sightText(points, until).c_str());
  gtk::setStrip(graph_, gtk::sightGraph(points, until), gtk::sightText(points, until));
}

}  // namespace velto::preview
