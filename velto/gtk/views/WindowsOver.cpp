// Surfaces by their places; the order of windows by Xlib.
#include "velto/gtk/views/WindowsOver.h"

#include "velto/gtk/views/ScreenPart.h"
#include "velto/platform/foundation/GMemory.h"

#include <optional>

namespace velto::gtk {
namespace {

CGRect boundsAt(CGPoint place, GtkWidget* widget) {
  return {place,
          {static_cast<double>(gtk_widget_get_width(widget)),
           static_cast<double>(gtk_widget_get_height(widget))}};
}

CGPoint between(CGPoint from, CGPoint to) {
  return {to.x - from.x, to.y - from.y};
}

// Where a popup's surface begins on another one, over which it stands, maybe by way of other popups.
std::optional<CGPoint> placeOver(GdkSurface* surface, GdkSurface* below) {
  CGPoint place;
  for (; surface != below; surface = gdk_popup_get_parent(GDK_POPUP(surface))) {
    if (!GDK_IS_POPUP(surface)) return std::nullopt;
    place.x += gdk_popup_get_position_x(GDK_POPUP(surface));
    place.y += gdk_popup_get_position_y(GDK_POPUP(surface));
  }
  return place;
}

void addPopovers(GtkWidget* within, GtkWidget* over, std::vector<CGRect>& rects) {
  auto* below = gtk_native_get_surface(gtk_widget_get_native(over));
  for (auto* child = gtk_widget_get_first_child(within); child; child = gtk_widget_get_next_sibling(child)) {
    if (child == over || !gtk_widget_get_mapped(child)) continue;
    auto* surface = GTK_IS_POPOVER(child) ? gtk_native_get_surface(GTK_NATIVE(child)) : nullptr;
    if (const auto place = surface ? placeOver(surface, below) : std::nullopt) {
      const CGPoint inside = placeOnSurface(child);
      rects.push_back(
          boundsAt(between(placeOnSurface(over), {place->x + inside.x, place->y + inside.y}), child));
    }
    addPopovers(child, over, rects);
  }
}

std::optional<CGRect> placeOfWindow(GtkWindow* other, GtkWidget* widget) {
  auto* window = GTK_WIDGET(gtk_widget_get_native(widget));
  auto* shown = GTK_WIDGET(other);
  if (shown == window || !gtk_widget_get_mapped(shown)) return std::nullopt;
  const auto own = placeOnScreen(widget);
  const auto theirs = placeOnScreen(shown);
  if (own && theirs) {
    const bool isAbove =
        isStackedOver(gtk_native_get_surface(GTK_NATIVE(other)), gtk_native_get_surface(GTK_NATIVE(window)));
    return isAbove ? std::optional(boundsAt(between(*own, *theirs), shown)) : std::nullopt;
  }
  if (GTK_WIDGET(gtk_window_get_transient_for(other)) != window) return std::nullopt;
  const CGPoint origin = placeOnSurface(widget);
  const CGPoint corner = placeOnSurface(window);
  return boundsAt(
      {corner.x - origin.x + (gtk_widget_get_width(window) - gtk_widget_get_width(shown)) / 2.0,
       corner.y - origin.y + (gtk_widget_get_height(window) - gtk_widget_get_height(shown)) / 2.0},
      shown);
}

}  // namespace

std::vector<CGRect> windowsOver(GtkWidget* widget) {
  std::vector<CGRect> rects;
  GListModel* windows = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
    const auto other = GPtr<GtkWindow>::adopt(GTK_WINDOW(g_list_model_get_item(windows, i)));
    if (const auto rect = placeOfWindow(other, widget)) rects.push_back(*rect);
  }
  return rects;
}

std::vector<CGRect> popoversOver(GtkWidget* window, GtkWidget* widget) {
  std::vector<CGRect> rects;
  addPopovers(window, widget, rects);
  return rects;
}

}  // namespace velto::gtk
