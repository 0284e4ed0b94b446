// A person's hand on the demo's window: real clicks and keys, from the X server through xdotool. Throws
// std::runtime_error where there is none. Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/Geometry.h>

#include <string>
#include <vector>

namespace demo {

class Hand {
 public:
  explicit Hand(GtkWidget* content) : content_(content) {}

  void click(velto::CGPoint point);    // of the content
  void press(const std::string& key);  // such as "Escape"
  // Without a window manager nobody else does.
  void giveKeyboard();

 private:
  std::string window() const;
  static void act(std::vector<std::string> words);

  GtkWidget* content_;
};

}  // namespace demo
