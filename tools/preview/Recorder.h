// Writes down as steps what a person does to the ad by hand: touches and keys on the screen, and what becomes of the device.
// Each is followed by the time until the next. Main thread.
#pragma once

#include <gtk/gtk.h>

#include <fstream>
#include <string>

#include "preview/Screen.h"

namespace velto::preview {

class Recorder {
 public:
  // Throws UsageError when the file cannot be written. The screen outlives this.
  Recorder(Screen& screen, const std::string& file);
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;
  ~Recorder();

 private:
  static gboolean heard(GtkEventController*, GdkEvent* event, Recorder* self) noexcept;
  void pressed(CGPoint point);
  void released(CGPoint point);
  void scrolled(GdkEvent* event, CGPoint point);
  void typed(guint key);
  void write(const std::string& step);
  void endText();

  Screen& screen_;
  std::ofstream file_;
  GtkEventController* events_ = nullptr;
  CGPoint pointer_;  // of the window's surface, where it was last
  CGPoint pressedAt_;
  gint64 pressedSince_ = 0;  // microseconds
  gint64 lastStep_ = 0;
  guint32 lastScroll_ = 0;
  std::string text_;  // typed, and not written yet
};

}  // namespace velto::preview
