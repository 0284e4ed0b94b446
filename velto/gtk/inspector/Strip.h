// A widget that a function draws: one line of a chart, or a graph. For a screen reader it is a picture with a text.
// Main thread.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>

namespace velto::gtk {

struct StripCanvas {
  GtkWidget* widget;
  GtkSnapshot* snapshot;
  float width, height;
  GdkRGBA text;  // the theme's

  void fill(const GdkRGBA& color, float x, float y, float w, float h, float rounding = 0) const;
  void write(const std::string& words, float x, float y) const;  // small, and not so bright
  float widthOf(const std::string& words) const;
};

using StripPainter = std::function<void(const StripCanvas&)>;

// As wide as there is room.
GtkWidget* newStrip(int minimumWidth, int height);
// Draws it anew.
void setStrip(GtkWidget* strip, StripPainter painter, const std::string& text);

inline GdkRGBA withAlpha(GdkRGBA color, double alpha) {
  color.alpha = static_cast<float>(color.alpha * alpha);
  return color;
}

}  // namespace velto::gtk
