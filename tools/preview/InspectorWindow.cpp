// Labels, buttons, log.
#include "preview/InspectorWindow.h"

#include <functional>

namespace velto::preview {
namespace {

using Action = std::function<void(Screen&)>;

void addButton(GtkWidget* box, const char* label, Screen& screen, void (*action)(Screen&)) {
  struct Press {
    Screen* screen;
    void (*action)(Screen&);
  };
  GtkWidget* button = gtk_button_new_with_label(label);
  const auto clicked = +[](GtkButton*, gpointer data) {
    const auto* press = static_cast<Press*>(data);
    if (press->screen->isOpen()) press->action(*press->screen);
  };
  const auto forget = +[](gpointer data, GClosure*) { delete static_cast<Press*>(data); };
  g_signal_connect_data(button, "clicked", G_CALLBACK(clicked), new Press{&screen, action}, forget,
                        GConnectFlags{});
  gtk_box_append(GTK_BOX(box), button);
}

void volumeChanged(GtkRange* range, Screen* screen) noexcept {
  if (screen->isOpen()) screen->setVolume(static_cast<float>(gtk_range_get_value(range)));
}

}  // namespace

InspectorWindow::InspectorWindow(Screen& screen, Journal& journal) : screen_(screen), journal_(journal) {
  window_ = GTK_WINDOW(gtk_window_new());
  gtk_window_set_title(window_, "velto-preview: inspector");
  gtk_window_set_default_size(window_, 560, 640);

  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
  for (auto* set : {gtk_widget_set_margin_top, gtk_widget_set_margin_bottom, gtk_widget_set_margin_start,
                    gtk_widget_set_margin_end})
    set(box, 12);
  state_ = GTK_LABEL(gtk_label_new("waiting for the ad"));
  gtk_label_set_xalign(state_, 0);
  gtk_box_append(GTK_BOX(box), GTK_WIDGET(state_));

  GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  addButton(buttons, "Portrait", screen_, [](Screen& s) { s.rotate(false); });
  addButton(buttons, "Landscape", screen_, [](Screen& s) { s.rotate(true); });
  addButton(buttons, "Hide", screen_, [](Screen& s) { s.setShown(false); });
  addButton(buttons, "Show", screen_, [](Screen& s) { s.setShown(true); });
  addButton(buttons, "Close", screen_, [](Screen& s) { s.pressClose(); });
  GtkWidget* volume = gtk_scale_new_with_range(GTK_ORIENTATION_HORIZONTAL, 0, 1, 0.05);
  gtk_widget_set_hexpand(volume, TRUE);
  gtk_widget_set_tooltip_text(volume, "Volume");
  gtk_range_set_value(GTK_RANGE(volume), 1);
  g_signal_connect(volume, "value-changed", G_CALLBACK(volumeChanged), &screen_);
  gtk_box_append(GTK_BOX(buttons), volume);
  gtk_box_append(GTK_BOX(box), buttons);

  log_ = GTK_TEXT_VIEW(gtk_text_view_new());
  gtk_text_view_set_editable(log_, FALSE);
  gtk_text_view_set_monospace(log_, TRUE);
  gtk_text_view_set_wrap_mode(log_, GTK_WRAP_WORD_CHAR);
  GtkWidget* scrolled = gtk_scrolled_window_new();
  gtk_widget_set_vexpand(scrolled, TRUE);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), GTK_WIDGET(log_));
  gtk_box_append(GTK_BOX(box), scrolled);

  gtk_window_set_child(window_, box);
  g_signal_connect(window_, "destroy", G_CALLBACK(closed), this);
  journal_.onEntry = [this](const std::string& line) { add(line); };
  gtk_window_present(window_);
}

InspectorWindow::~InspectorWindow() {
  journal_.onEntry = nullptr;
  if (window_) gtk_window_destroy(window_);
}

void InspectorWindow::closed(GtkWidget*, InspectorWindow* self) noexcept {
  self->journal_.onEntry = nullptr;
  self->window_ = nullptr;
}

void InspectorWindow::add(const std::string& line) {
  const std::string state = journal_.state().empty()
                                ? "no rich media so far"
                                : "state: " + journal_.state() + " · " + journal_.placement();
  gtk_label_set_text(state_, state.c_str());
  GtkTextBuffer* buffer = gtk_text_view_get_buffer(log_);
  GtkTextIter end;
  gtk_text_buffer_get_end_iter(buffer, &end);
  gtk_text_buffer_insert(buffer, &end, (line + "\n").c_str(), -1);
  GtkTextMark* mark = gtk_text_buffer_create_mark(buffer, nullptr, &end, FALSE);
  gtk_text_view_scroll_mark_onscreen(log_, mark);
  gtk_text_buffer_delete_mark(buffer, mark);
}

}  // namespace velto::preview
