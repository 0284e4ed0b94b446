// The page's widgets, and what is written into them.
#include "velto/gtk/inspector/Charts.h"
#include "velto/gtk/inspector/InspectorPage.h"
#include "velto/platform/Clock.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <utility>

namespace velto::gtk {
namespace {

constexpr char pageLayout[] = R"(
<interface>
  <object class="GtkPaned" id="page">
    <property name="position">230</property>
    <property name="shrink-start-child">0</property>
    <property name="shrink-end-child">0</property>
    <property name="resize-start-child">0</property>
    <property name="start-child"><object class="GtkScrolledWindow">
      <property name="hscrollbar-policy">never</property>
      <property name="width-request">150</property>
      <property name="child"><object class="GtkListBox" id="placements">
        <property name="selection-mode">browse</property>
        <accessibility><property name="label">Placements</property></accessibility>
        <child type="placeholder"><object class="GtkLabel">
          <property name="label">No banner and no interstitial so far</property>
          <property name="wrap">1</property>
          <property name="margin-top">24</property>
          <style><class name="dim-label"/></style>
        </object></child>
      </object></property>
    </object></property>
    <property name="end-child"><object class="GtkBox">
      <property name="orientation">vertical</property>
      <child><object class="GtkBox" id="bar">
        <property name="spacing">6</property>
        <property name="margin-top">10</property>
        <property name="margin-bottom">10</property>
        <property name="margin-start">14</property>
        <property name="margin-end">14</property>
        <child><object class="GtkBox">
          <property name="orientation">vertical</property>
          <property name="hexpand">1</property>
          <child><object class="GtkLabel" id="title">
            <property name="xalign">0</property>
            <property name="ellipsize">end</property>
            <style><class name="heading"/></style>
          </object></child>
          <child><object class="GtkLabel" id="state">
            <property name="xalign">0</property>
            <property name="ellipsize">end</property>
            <style><class name="dim-label"/></style>
          </object></child>
        </object></child>
      </object></child>
      <child><object class="GtkSeparator"/></child>
      <child><object class="GtkPaned">
        <property name="orientation">vertical</property>
        <property name="position">132</property>
        <property name="vexpand">1</property>
        <property name="shrink-start-child">0</property>
        <property name="resize-start-child">0</property>
        <property name="start-child"><object class="GtkScrolledWindow">
          <property name="height-request">60</property>
          <property name="child"><object class="GtkListBox" id="loads">
            <property name="selection-mode">browse</property>
            <accessibility><property name="label">Loads, the newest first</property></accessibility>
          </object></property>
        </object></property>
        <property name="end-child"><object class="GtkScrolledWindow">
          <property name="child"><object class="GtkBox" id="story">
            <property name="orientation">vertical</property>
            <property name="spacing">10</property>
            <property name="margin-top">12</property>
            <property name="margin-bottom">14</property>
            <property name="margin-start">14</property>
            <property name="margin-end">14</property>
            <child><object class="GtkLabel" id="end">
              <property name="xalign">0</property>
              <property name="wrap">1</property>
              <property name="selectable">1</property>
              <style><class name="heading"/></style>
            </object></child>
            <child><object class="GtkLabel" id="advice">
              <property name="xalign">0</property>
              <property name="wrap">1</property>
              <property name="selectable">1</property>
            </object></child>
            <child><object class="GtkGrid" id="chart">
              <property name="column-spacing">12</property>
              <accessibility><property name="label">Chart of the load</property></accessibility>
            </object></child>
            <child><object class="GtkLabel" id="sight-words">
              <property name="xalign">0</property>
              <property name="margin-top">8</property>
              <style><class name="heading"/></style>
            </object></child>
          </object></property>
        </object></property>
      </object></child>
    </object></property>
  </object>
</interface>)";

GtkWidget* newLabel(const std::string& text, const char* style = nullptr) {
  auto* label = gtk_label_new(text.c_str());
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  if (style) gtk_widget_add_css_class(label, style);
  return label;
}

void setText(GtkLabel* label, const std::string& text) {
  if (text != gtk_label_get_text(label)) gtk_label_set_text(label, text.c_str());
  gtk_widget_set_visible(GTK_WIDGET(label), !text.empty());
}

// Told apart by more than a colour.
constexpr char came[] = "✓ ", failed[] = "✗ ";
std::string markedHeadline(const VeltoAdTimeline& load) {
  return (load.filled() ? came : load.end ? failed : "") + headlineOf(load);
}

std::string askedBy(const VeltoAdTimeline& load) {
  const auto* asked = load.first(VeltoTimelineKind::Asked);
  if (!asked) return "";
  const auto fields = asked->fields();
  const auto by = fields.find("by");
  return by != fields.end() && by->second.string() ? *by->second.string() : "";
}

// The rows anew, with the keyboard's focus where it was.
template <class Make>
void refill(GtkListBox* list, size_t count, size_t selected, Make make) {
  const bool hadFocus = gtk_widget_get_focus_child(GTK_WIDGET(list)) != nullptr;
  while (auto* row = gtk_list_box_get_row_at_index(list, 0)) gtk_list_box_remove(list, GTK_WIDGET(row));
  for (size_t i = 0; i < count; ++i) {
    auto* box = make(i);
    for (auto* set : {gtk_widget_set_margin_start, gtk_widget_set_margin_end}) set(box, 10);
    for (auto* set : {gtk_widget_set_margin_top, gtk_widget_set_margin_bottom}) set(box, 5);
    gtk_list_box_append(list, box);
  }
  auto* row = gtk_list_box_get_row_at_index(list, static_cast<int>(selected));
  gtk_list_box_select_row(list, row);
  if (hadFocus && row) gtk_widget_grab_focus(GTK_WIDGET(row));
}

double nowSeconds() {
  auto* platform = Platform::currentOrNull();
  return platform ? platform->clock().monotonicSeconds() : 0;
}

}  // namespace

// --- made once

void InspectorPage::build() {
  auto* builder = gtk_builder_new_from_string(pageLayout, -1);
  const auto object = [builder](const char* id) { return gtk_builder_get_object(builder, id); };
  placementList_ = GTK_LIST_BOX(object("placements"));
  loadList_ = GTK_LIST_BOX(object("loads"));
  title_ = GTK_LABEL(object("title"));
  state_ = GTK_LABEL(object("state"));
  chart_ = GTK_GRID(object("chart"));
  end_ = GTK_LABEL(object("end"));
  advice_ = GTK_LABEL(object("advice"));
  sightWords_ = GTK_LABEL(object("sight-words"));
  story_ = GTK_WIDGET(object("story"));
  auto* page = GTK_WIDGET(object("page"));
  gtk_widget_set_hexpand(page, TRUE);
  gtk_widget_set_vexpand(page, TRUE);
  gtk_box_append(GTK_BOX(box_), page);
  sight_ = newStrip(200, 84);
  gtk_box_append(GTK_BOX(story_), sight_);
  gtk_box_append(GTK_BOX(story_), newLegend());
  addActions(GTK_WIDGET(object("bar")));
  g_object_unref(builder);

  const auto placementChosen = +[](GtkListBox*, GtkListBoxRow* row, InspectorPage* self) noexcept {
    if (row && !self->isUpdating_) self->select(static_cast<size_t>(gtk_list_box_row_get_index(row)));
  };
  const auto loadChosen = +[](GtkListBox*, GtkListBoxRow* row, InspectorPage* self) noexcept {
    if (!row || self->isUpdating_) return;
    const auto index = static_cast<size_t>(gtk_list_box_row_get_index(row));
    if (index >= self->loads_.size()) return;
    // Who has chosen the newest goes on to the next one with it.
    self->selectedLoad_ = index == 0 ? std::nullopt : std::optional(self->loads_[index].load);
    self->showLoad();
  };
  g_signal_connect(placementList_, "row-selected", G_CALLBACK(placementChosen), this);
  g_signal_connect(loadList_, "row-selected", G_CALLBACK(loadChosen), this);
}

void InspectorPage::addActions(GtkWidget* bar) {
  const auto add = [&](const char* label, const char* tip, auto* clicked) {
    auto* button = gtk_button_new_with_mnemonic(label);
    gtk_widget_set_tooltip_text(button, tip);
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    g_signal_connect(button, "clicked", G_CALLBACK(clicked), this);
    gtk_box_append(GTK_BOX(bar), button);
    return button;
  };
  reload_ = add(
      "_Reload", "Loads as the application does", +[](GtkButton*, InspectorPage* self) noexcept {
        if (const auto placement = self->selectedPlacement()) placement->reload();
      });

  auto* choices = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  auto* popover = gtk_popover_new();
  gtk_popover_set_child(GTK_POPOVER(popover), choices);
  for (const auto reason : InspectedPlacement::simulatedReasons()) {
    const auto& words = wordsOf(reason);
    auto* choice = gtk_button_new_with_label(std::string(words.sentence).c_str());
    gtk_widget_set_name(choice, std::string(words.name).c_str());
    gtk_widget_add_css_class(choice, "flat");
    gtk_widget_set_halign(gtk_button_get_child(GTK_BUTTON(choice)), GTK_ALIGN_START);
    g_object_set_data(G_OBJECT(choice), reasonKey, GINT_TO_POINTER(static_cast<int>(reason)));
    g_signal_connect(choice, "clicked", G_CALLBACK(failureChosen), this);
    gtk_box_append(GTK_BOX(choices), choice);
  }
  fail_ = gtk_menu_button_new();
  gtk_menu_button_set_label(GTK_MENU_BUTTON(fail_), "Simulate failure");
  gtk_widget_set_valign(fail_, GTK_ALIGN_CENTER);
  gtk_menu_button_set_popover(GTK_MENU_BUTTON(fail_), popover);
  gtk_box_append(GTK_BOX(bar), fail_);

  copy_ = add(
      "_Copy as JSON", "The timelines of this placement",
      +[](GtkButton* button, InspectorPage* self) noexcept {
        gdk_clipboard_set_text(gtk_widget_get_clipboard(GTK_WIDGET(button)), self->json().c_str());
      });
}

void InspectorPage::failureChosen(GtkButton* choice, InspectorPage* self) noexcept {
  gtk_menu_button_popdown(GTK_MENU_BUTTON(self->fail_));
  const auto placement = self->selectedPlacement();
  const auto reason = GPOINTER_TO_INT(g_object_get_data(G_OBJECT(choice), reasonKey));
  if (placement && !placement->simulate(static_cast<VeltoAdEndReason>(reason)))
    setText(self->state_, "There is no page that could fail");
}

std::shared_ptr<InspectedPlacement> InspectorPage::selectedPlacement() const {
  const auto* shown = selected();
  return shown ? shown->placement.lock() : nullptr;
}

// --- written anew

void InspectorPage::showPlacements() {
  std::string shape;
  size_t index = 0;
  for (size_t i = 0; i < shown_.size(); ++i) {
    shape.append(shown_[i].name).append("\n").append(shown_[i].kind).append(shown_[i].state).append("\n");
    if (shown_[i].record == selected_) index = i;
  }
  if (shape != placementShape_ || index != placementIndex_)
    refill(placementList_, shown_.size(), index, [this](size_t i) {
      const auto& shown = shown_[i];
      auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
      auto* name = newLabel(shown.name);
      gtk_label_set_ellipsize(GTK_LABEL(name), PANGO_ELLIPSIZE_END);
      gtk_box_append(GTK_BOX(box), name);
      gtk_box_append(GTK_BOX(box), newLabel(shown.kind + " · " + shown.state, "dim-label"));
      return box;
    });
  placementShape_ = std::move(shape);
  placementIndex_ = index;
  const auto* now = selected();
  const bool isLive = now && !now->placement.expired();
  setText(title_, now ? now->name : "");
  setText(state_, now ? now->kind + " · " + now->state : "");
  for (auto* action : {reload_, fail_}) gtk_widget_set_sensitive(action, isLive);
  gtk_widget_set_sensitive(copy_, now != nullptr);
}

void InspectorPage::showLoads() {
  std::string shape;
  for (const auto& load : loads_)
    shape.append(std::to_string(load.load)).append(askedBy(load)).append(headlineOf(load)).append("\n");
  const auto* chosen = selectedLoad();
  const auto index = chosen ? static_cast<size_t>(chosen - loads_.data()) : 0;
  if (shape != loadShape_)
    refill(loadList_, loads_.size(), index, [this](size_t i) {
      const auto& load = loads_[i];
      auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
      auto* number = newLabel("Load " + std::to_string(load.load));
      gtk_label_set_width_chars(GTK_LABEL(number), 8);
      gtk_box_append(GTK_BOX(box), number);
      auto* by = newLabel(askedBy(load), "dim-label");
      gtk_label_set_width_chars(GTK_LABEL(by), 11);
      gtk_box_append(GTK_BOX(box), by);
      auto* headline = newLabel(markedHeadline(load));
      gtk_label_set_ellipsize(GTK_LABEL(headline), PANGO_ELLIPSIZE_END);
      gtk_box_append(GTK_BOX(box), headline);
      return box;
    });
  loadShape_ = std::move(shape);
}

void InspectorPage::showLoad() {
  const auto* load = selectedLoad();
  gtk_widget_set_visible(story_, load != nullptr);
  if (!load) return follow(false);
  showEnd(*load);
  showChart(*load);
  const auto points = feed_->sight(*load);
  const double until = load->end ? load->endSeconds : nowSeconds();
  setText(sightWords_, "Viewability: " + sightText(points, until));
  gtk_widget_set_visible(sight_, !points.empty());
  setStrip(sight_, sightGraph(points, until), sightText(points, until));
}

void InspectorPage::showEnd(const VeltoAdTimeline& load) {
  if (!load.end) {
    setText(end_, markedHeadline(load));
    return setText(advice_, "");
  }
  const auto& words = wordsOf(*load.end);
  setText(end_,
          load.filled() ? markedHeadline(load) + ". " + std::string(words.sentence) : markedHeadline(load));
  setText(advice_, std::string(words.advice) + " (" + std::string(words.name) + ")");
}

void InspectorPage::showChart(const VeltoAdTimeline& load) {
  const auto chart = std::make_shared<const Waterfall>(waterfallOf(load, nowSeconds()));
  std::string shape;
  for (const auto& row : chart->rows)
    shape.append(row.name).append("\n").append(row.note).append(
        row.outcome == WaterfallRow::Outcome::Failed ? "!\n" : "\n");
  if (shape != chartShape_) makeLines(*chart);
  chartShape_ = std::move(shape);
  setStrip(ruler_, rulerOf(chart), "from 0 to " + durationText(chart->length + chart->leftOut));
  for (size_t i = 0; i < lines_.size(); ++i) {
    const auto& row = chart->rows[i];
    setStrip(lines_[i].bars, barsOf(chart, i), textOf(row));
    setText(lines_[i].time, row.bars.empty() ? "" : durationText(row.seconds));
  }
  follow(chart->isUnderWay && isShown_);
}

// A line of the grid for the ruler, and two for each row: its bars, and what is known of it.
void InspectorPage::makeLines(const Waterfall& chart) {
  constexpr int narrowest = 160, height = 22;
  while (auto* child = gtk_widget_get_first_child(GTK_WIDGET(chart_))) gtk_grid_remove(chart_, child);
  lines_.clear();
  ruler_ = newStrip(narrowest, height);
  gtk_grid_attach(chart_, ruler_, 1, 0, 1, 1);
  int line = 1;
  for (const auto& row : chart.rows) {
    const bool hasFailed = row.outcome == WaterfallRow::Outcome::Failed;
    auto* name = newLabel(row.name);
    gtk_label_set_ellipsize(GTK_LABEL(name), PANGO_ELLIPSIZE_MIDDLE);
    gtk_label_set_max_width_chars(GTK_LABEL(name), 28);
    gtk_widget_set_tooltip_text(name, row.name.c_str());
    auto* bars = newStrip(narrowest, height);
    auto* time = GTK_LABEL(newLabel(""));
    gtk_label_set_xalign(time, 1);
    gtk_label_set_width_chars(time, 8);
    gtk_grid_attach(chart_, name, 0, line, 1, 1);
    gtk_grid_attach(chart_, bars, 1, line, 1, 1);
    gtk_grid_attach(chart_, GTK_WIDGET(time), 2, line++, 1, 1);
    lines_.push_back({bars, time});
    if (row.note.empty()) continue;
    auto* note = newLabel((hasFailed ? failed : "") + row.note, hasFailed ? nullptr : "dim-label");
    gtk_label_set_wrap(GTK_LABEL(note), TRUE);
    gtk_widget_set_margin_bottom(note, 4);
    gtk_grid_attach(chart_, note, 1, line++, 2, 1);
  }
}

}  // namespace velto::gtk
