// A window of the toolkit that ads are shown in, and a person's hand on it. With a display of the test's own.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/views/ScreenPart.h"
#include "velto/platform/ui/UIViewController.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "MainLoop.h"
#include "Program.h"

namespace velto::test {

// Not presented yet. The caller destroys it.
inline GtkWindow* newWindow(int width, int height, GtkWidget* child = nullptr) {
  auto* window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_decorated(window, false);
  gtk_window_set_default_size(window, width, height);
  if (child) gtk_window_set_child(window, child);
  return window;
}

// Presents it, and returns once it has its size.
inline std::shared_ptr<UIViewController> present(GtkWindow* window) {
  int width = 0, height = 0;
  gtk_window_get_default_size(window, &width, &height);
  auto host = gtk::hostViewController(window);
  gtk_window_present(window);
  const auto& root = *host->view();
  EXPECT_TRUE(runUntil([&] {
    return root.isInWindow() && root.bounds().size.width >= width && root.bounds().size.height >= height;
  }));
  return host;
}

inline bool isX11(GtkWindow* window) {
  return gtk::x11WindowOf(GTK_WIDGET(window)) != 0;
}
// What the tools know the window by.
inline std::string idOf(GtkWindow* window) {
  return std::to_string(gtk::x11WindowOf(GTK_WIDGET(window)));
}

inline void xdotool(const std::string& words) {
  ASSERT_EQ(run({"sh", "-c", "exec xdotool " + words}).code, 0) << words;
}
// The compositor of with-display --wayland does what a person would.
inline void swaymsg(const std::string& words) {
  const auto answer = run({"swaymsg", "--", words});
  ASSERT_EQ(answer.code, 0) << words << answer.output;
}

// Keys go to that window from here on. A compositor gives them to a new window by itself.
inline void giveKeyboard(GtkWindow* window) {
  if (isX11(window)) xdotool("windowmap --sync " + idOf(window) + " windowfocus --sync " + idOf(window));
  ASSERT_TRUE(runUntil([&] { return gtk_window_is_active(window); }));
}

// What was put in is where it will be seen: until a frame was painted, a pointer finds what was there before.
inline void awaitFrame(GtkWindow* window) {
  bool painted = false;
  auto* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window));
  const auto handler = g_signal_connect(
      clock, "after-paint", G_CALLBACK(+[](GdkFrameClock*, bool* done) { *done = true; }), &painted);
  gtk_widget_queue_draw(GTK_WIDGET(window));
  EXPECT_TRUE(runUntil([&] { return painted; }));
  g_signal_handler_disconnect(clock, handler);
}

// Under the compositor of with-display each window is in the display's corner.
inline void click(GtkWindow* window, CGPoint point, int button = 1) {
  awaitFrame(window);
  if (!isX11(window)) xdotool("mousemove 1023 1023");  // a pointer that comes in
  xdotool("mousemove " + (isX11(window) ? "--window " + idOf(window) + " " : "") +
          std::to_string(std::lround(point.x)) + " " + std::to_string(std::lround(point.y)) + " click " +
          std::to_string(button));
}

}  // namespace velto::test
