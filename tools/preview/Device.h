// The screen as a device in somebody's hand: how its window is drawn, and what a person does to it beside touching the ad.
// Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/Geometry.h>
#include <webkit/webkit.h>

namespace velto::preview {

class Screen;

// Whatever the engine asks for from there on fails at once, also on this machine; and does so no more.
void setOffline(WebKitWebView* view, bool offline);

// Draws a window, which is not shown yet, as a device around a screen of that size. It can be moved by its edge.
void drawDevice(GtkWindow* window, CGSize screen);
// The look of that and of the inspector; once for each display.
void loadLook(GdkDisplay* display);

// What is switched on stays so for ads that come later; call renew() when one has come.
class Device {
 public:
  explicit Device(Screen& screen) : screen_(screen) {}

  void setCovered(bool covered);  // the lower half of what the ad takes, by something opaque
  void setMuted(bool muted);
  void setOffline(bool offline);  // nothing more is loaded by the page
  bool showWebInspector();        // whether there is a page to look into
  void renew();
  void renewVolume();  // when a page can hear of it

 private:
  GtkWidget* page() const;

  Screen& screen_;
  GtkWidget* cover_ = nullptr;  // while there is one
  bool muted_ = false, offline_ = false;
};

}  // namespace velto::preview
