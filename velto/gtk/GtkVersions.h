// What differs between the versions of GTK that this builds with, 4.8 (Debian 12) to 4.18 (Debian 13): the newer
// interface where it is there. Nowhere else in the library is a version asked for.
#pragma once

#include <gtk/gtk.h>

#include <cmath>

namespace velto::gtk {

// The states of a window that nobody sees. Some compositors tell only the newer one of a minimised window.
#if GTK_CHECK_VERSION(4, 12, 0)
constexpr unsigned outOfSightStates = GDK_TOPLEVEL_STATE_MINIMIZED | GDK_TOPLEVEL_STATE_SUSPENDED;
#else
constexpr unsigned outOfSightStates = GDK_TOPLEVEL_STATE_MINIMIZED;
#endif

inline bool isMask([[maybe_unused]] GskRenderNode* node) {
#if GTK_CHECK_VERSION(4, 10, 0)
  return gsk_render_node_get_node_type(node) == GSK_MASK_NODE;
#else
  return false;
#endif
}

// Pixels a point. Older toolkits know only whole numbers. The newer divide a size in pixels by one in rounded points, and so
// come near the 120ths that compositors count in (fractional-scale-v1).
#if GTK_CHECK_VERSION(4, 14, 0)
inline double scaleOf(GdkMonitor* monitor) {
  return std::round(gdk_monitor_get_scale(monitor) * 120) / 120;
}
constexpr char monitorScaleChanged[] = "notify::scale";
#else
inline double scaleOf(GdkMonitor* monitor) {
  return gdk_monitor_get_scale_factor(monitor);
}
constexpr char monitorScaleChanged[] = "notify::scale-factor";
#endif

inline void loadStyle(GtkCssProvider* provider, const char* style) {
#if GTK_CHECK_VERSION(4, 12, 0)
  gtk_css_provider_load_from_string(provider, style);
#else
  gtk_css_provider_load_from_data(provider, style, -1);
#endif
}

inline GdkRGBA textColorOf(GtkWidget* widget) {
  GdkRGBA color;
#if GTK_CHECK_VERSION(4, 10, 0)
  gtk_widget_get_color(widget, &color);
#else
  gtk_style_context_get_color(gtk_widget_get_style_context(widget), &color);
#endif
  return color;
}

// Around calls of GTK's X11 part: newer GTK deprecates all of it and has nothing in its place.
#define VELTO_X11_BEGIN G_GNUC_BEGIN_IGNORE_DEPRECATIONS
#define VELTO_X11_END G_GNUC_END_IGNORE_DEPRECATIONS

}  // namespace velto::gtk
