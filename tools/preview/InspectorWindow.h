// A window beside the screen, for people: what the ad's state is, what happened, and buttons for what a
// device and its owner do. Main thread.
#pragma once

#include <gtk/gtk.h>

#include <string>

#include "preview/Screen.h"

namespace velto::preview {

class InspectorWindow {
 public:
  InspectorWindow(Screen& screen, Journal& journal);
  InspectorWindow(const InspectorWindow&) = delete;
  InspectorWindow& operator=(const InspectorWindow&) = delete;
  ~InspectorWindow();

 private:
  void add(const std::string& line);
  static void closed(GtkWidget*, InspectorWindow* self) noexcept;

  Screen& screen_;
  Journal& journal_;
  GtkWindow* window_ = nullptr;  // null once closed
  GtkLabel* state_ = nullptr;
  GtkTextView* log_ = nullptr;
};

}  // namespace velto::preview
