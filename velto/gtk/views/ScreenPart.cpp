// Places: on the surface, and by Xlib on the screens.
#include "velto/gtk/views/ScreenPart.h"

#include "velto/gtk/GtkVersions.h"
#include "velto/platform/ui/ViewChanges.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#ifdef GDK_WINDOWING_X11
#include <X11/Xatom.h>
#include <gdk/x11/gdkx.h>
#endif

namespace velto::gtk {

CGPoint placeOnSurface(GtkWidget* widget) {
  auto* native = gtk_widget_get_native(widget);
  CGPoint place;
  gtk_native_get_surface_transform(native, &place.x, &place.y);
  const graphene_point_t corner = GRAPHENE_POINT_INIT(0, 0);
  graphene_point_t there;
  if (!gtk_widget_compute_point(widget, GTK_WIDGET(native), &corner, &there)) return place;
  return {place.x + static_cast<double>(there.x), place.y + static_cast<double>(there.y)};
}

#ifdef GDK_WINDOWING_X11
VELTO_X11_BEGIN

namespace {

constexpr unsigned long onAllDesktops = 0xFFFFFFFF;  // EWMH, _NET_WM_DESKTOP

constexpr char stackingOrder[] = "_NET_CLIENT_LIST_STACKING";

using Number = std::optional<unsigned long>;

// What the display has answered. Who asks waits for it, so it is asked again only after it told of a change, as it does while
// somebody watches.
struct Answers {
  int watchers = 0;
  std::map<std::pair<GdkDisplay*, Window>, CGPoint> corners;  // pixels from the root window's
  std::map<std::pair<GdkDisplay*, Window>, Number>
      workspaces;                                    // of a window; of the root window, the one that is shown
  std::map<std::pair<Window, Window>, bool> orders;  // whether the first lies over the second
};
Answers answers;

CGRect allMonitors(GdkDisplay* display) {
  GListModel* monitors = gdk_display_get_monitors(display);
  GdkRectangle all{};
  for (guint i = 0; i < g_list_model_get_n_items(monitors); ++i) {
    const auto monitor = GPtr<GdkMonitor>::adopt(GDK_MONITOR(g_list_model_get_item(monitors, i)));
    GdkRectangle one{};
    gdk_monitor_get_geometry(monitor, &one);
    if (i == 0)
      all = one;
    else
      gdk_rectangle_union(&all, &one, &all);
  }
  return {{static_cast<double>(all.x), static_cast<double>(all.y)},
          {static_cast<double>(all.width), static_cast<double>(all.height)}};
}

// Any window of the application may come to lie over another one, or may go to another workspace.
gboolean eventCame(GdkDisplay* display, gpointer data, gpointer switched) noexcept {
  const auto& event = *static_cast<XEvent*>(data);
  if (event.type == ConfigureNotify || event.type == ReparentNotify || event.type == MapNotify ||
      event.type == UnmapNotify) {
    answers.corners.clear();
    answers.orders.clear();
    ViewChanges::note();
  }
  if (event.type != PropertyNotify) return FALSE;
  const auto isNamed = [&](const char* name) {
    return event.xproperty.atom == gdk_x11_get_xatom_by_name_for_display(display, name);
  };
  if (isNamed(stackingOrder)) {
    answers.orders.clear();
    ViewChanges::note();
  }
  if (isNamed("_NET_CURRENT_DESKTOP") || isNamed("_NET_WM_DESKTOP")) {
    answers.workspaces.clear();
    reinterpret_cast<void (*)()>(switched)();
  }
  return FALSE;
}

void watchEnded(gpointer, GClosure*) noexcept {
  if (--answers.watchers > 0) return;
  answers = {};
}

bool hasProperty(GdkDisplay* display, Window window, const char* name) {
  Atom type = None;
  int format = 0;
  unsigned long count = 0, left = 0;
  unsigned char* data = nullptr;
  XGetWindowProperty(gdk_x11_display_get_xdisplay(display), window,
                     gdk_x11_get_xatom_by_name_for_display(display, name), 0, 0, False, AnyPropertyType,
                     &type, &format, &count, &left, &data);
  if (data) XFree(data);
  return type != None;
}

// A property of a window, as window managers keep them.
Number numberOf(GdkDisplay* display, Window window, const char* name) {
  Atom type = 0;
  int format = 0;
  unsigned long count = 0, left = 0;
  unsigned char* data = nullptr;
  gdk_x11_display_error_trap_push(display);
  XGetWindowProperty(gdk_x11_display_get_xdisplay(display), window,
                     gdk_x11_get_xatom_by_name_for_display(display, name), 0, 1, False, XA_CARDINAL, &type,
                     &format, &count, &left, &data);
  gdk_x11_display_error_trap_pop_ignored(display);
  Number number;
  if (type == XA_CARDINAL && format == 32 && count == 1) number = *reinterpret_cast<unsigned long*>(data);
  if (data) XFree(data);
  return number;
}

Number workspaceOf(GdkDisplay* display, Window window, const char* name) {
  const auto known = answers.workspaces.find({display, window});
  if (known != answers.workspaces.end()) return known->second;
  const auto number = numberOf(display, window, name);
  if (answers.watchers > 0) answers.workspaces[{display, window}] = number;
  return number;
}

std::optional<CGPoint> cornerOf(GdkDisplay* display, Window window) {
  const auto known = answers.corners.find({display, window});
  if (known != answers.corners.end()) return known->second;
  int x = 0;
  int y = 0;
  Window child = 0;
  gdk_x11_display_error_trap_push(display);
  const bool isThere = XTranslateCoordinates(gdk_x11_display_get_xdisplay(display), window,
                                             gdk_x11_display_get_xrootwindow(display), 0, 0, &x, &y, &child);
  if (gdk_x11_display_error_trap_pop(display) != 0 || !isThere) return std::nullopt;
  const CGPoint corner{static_cast<double>(x), static_cast<double>(y)};
  if (answers.watchers > 0) answers.corners[{display, window}] = corner;
  return corner;
}

// A window's parent, and its children from the lowest to the highest.
struct Kin {
  Window parent = 0;
  std::vector<Window> children;
};

Kin kinOf(Display* connection, Window window) {
  Window root = 0, parent = 0;
  Window* children = nullptr;
  unsigned count = 0;
  if (!XQueryTree(connection, window, &root, &parent, &children, &count)) return {};
  Kin kin{parent, {children, children + count}};
  if (children) XFree(children);
  return kin;
}

// The window that holds it among those of the screen: a window manager's frame, or itself.
Window outermost(Display* connection, Window window, Window root) {
  for (Window parent = window; parent && parent != root; parent = kinOf(connection, window).parent)
    window = parent;
  return window;
}

}  // namespace

std::optional<CGPoint> placeOnScreen(GtkWidget* widget) {
  auto* native = gtk_widget_get_native(widget);
  auto* surface = native ? gtk_native_get_surface(native) : nullptr;
  if (!surface || !GDK_IS_X11_SURFACE(surface)) return std::nullopt;
  const auto corner = cornerOf(gdk_surface_get_display(surface), gdk_x11_surface_get_xid(surface));
  if (!corner) return std::nullopt;
  const double scale = std::max(1, gdk_surface_get_scale_factor(surface));
  const CGPoint place = placeOnSurface(widget);
  return CGPoint{corner->x / scale + place.x, corner->y / scale + place.y};
}

bool isStackedOver(GdkSurface* surface, GdkSurface* other) {
  auto* display = gdk_surface_get_display(surface);
  const std::pair windows{gdk_x11_surface_get_xid(surface), gdk_x11_surface_get_xid(other)};
  if (const auto known = answers.orders.find(windows); known != answers.orders.end()) return known->second;
  auto* connection = gdk_x11_display_get_xdisplay(display);
  const Window root = gdk_x11_display_get_xrootwindow(display);
  gdk_x11_display_error_trap_push(display);
  const Window high = outermost(connection, windows.first, root);
  const Window low = outermost(connection, windows.second, root);
  const auto order = kinOf(connection, root).children;
  // A window hears when its own place in the order changes, but not when that of a frame around it does.
  const bool isFramed = std::pair{high, low} != windows;
  const bool isTold = answers.watchers > 0 && (!isFramed || hasProperty(display, root, stackingOrder));
  gdk_x11_display_error_trap_pop_ignored(display);
  const auto found = std::find(order.begin(), order.end(), low);
  const bool isOver = std::find(found, order.end(), high) != order.end();
  if (isTold) answers.orders[windows] = isOver;
  return isOver;
}

std::optional<CGRect> screenAround(GtkWidget* widget) {
  const auto place = placeOnScreen(widget);
  if (!place) return std::nullopt;
  CGRect screen = allMonitors(gtk_widget_get_display(widget));
  if (screen.size.width <= 0) return std::nullopt;
  screen.origin.x -= place->x;
  screen.origin.y -= place->y;
  return screen;
}

bool isOnOtherWorkspace(GdkSurface* surface) {
  if (!GDK_IS_X11_SURFACE(surface)) return false;
  auto* display = gdk_surface_get_display(surface);
  const auto own = workspaceOf(display, gdk_x11_surface_get_xid(surface), "_NET_WM_DESKTOP");
  const auto shown = workspaceOf(display, gdk_x11_display_get_xrootwindow(display), "_NET_CURRENT_DESKTOP");
  return own && shown && *own != onAllDesktops && *own != *shown;
}

Signal watchMoves(GdkSurface* surface, void (*switched)()) {
  auto* display = gdk_surface_get_display(surface);
  if (!GDK_IS_X11_DISPLAY(display)) return {};
  // What the toolkit does not listen to: the number of the workspace that is shown.
  auto* connection = gdk_x11_display_get_xdisplay(display);
  const Window root = gdk_x11_display_get_xrootwindow(display);
  XWindowAttributes now{};
  if (XGetWindowAttributes(connection, root, &now))
    XSelectInput(connection, root, now.your_event_mask | PropertyChangeMask);
  ++answers.watchers;
  return Signal(display, "xevent", G_CALLBACK(eventCame), reinterpret_cast<gpointer>(switched), watchEnded);
}

unsigned long x11WindowOf(GtkWidget* widget) {
  auto* native = gtk_widget_get_native(widget);
  auto* surface = native ? gtk_native_get_surface(native) : nullptr;
  return surface && GDK_IS_X11_SURFACE(surface) ? gdk_x11_surface_get_xid(surface) : 0;
}

VELTO_X11_END
#else
std::optional<CGRect> screenAround(GtkWidget*) {
  return std::nullopt;
}
std::optional<CGPoint> placeOnScreen(GtkWidget*) {
  return std::nullopt;
}
bool isStackedOver(GdkSurface*, GdkSurface*) {
  return false;
}
bool isOnOtherWorkspace(GdkSurface*) {
  return false;
}
Signal watchMoves(GdkSurface*, void (*)()) {
  return {};
}
unsigned long x11WindowOf(GtkWidget*) {
  return 0;
}
#endif

}  // namespace velto::gtk
