// The widget class: explicit frames, background, picking.
#include "velto/gtk/views/ViewWidget.h"

#include "velto/gtk/ProcessNames.h"
#include "velto/gtk/views/PaintedOver.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace velto::gtk {
namespace {

// What setFrame() gave, on the pixel grid.
struct PixelFrame {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelFrame&) const = default;
};

struct ViewState {
  PixelFrame frame;
  std::optional<GdkRGBA> color;
  ViewPainter painter;
  ViewTarget target = ViewTarget::WhenPainted;
  bool marked = false;
};

struct ViewWidget {
  GtkWidget parent;
  ViewState* state;
};

GType viewWidgetType();
GtkWidgetClass* parentClass = nullptr;

bool isViewWidget(GtkWidget* widget) {
  return G_TYPE_CHECK_INSTANCE_TYPE(widget, viewWidgetType());
}

ViewState& stateOf(gpointer widget) {
  return *static_cast<ViewWidget*>(widget)->state;
}

int pixel(double value) {
  constexpr double limit = 1 << 20;  // far outside any screen, far inside an int
  return std::isfinite(value) ? static_cast<int>(std::lround(std::clamp(value, -limit, limit))) : 0;
}

void measure(GtkWidget*, GtkOrientation, int, int* minimum, int* natural, int* minimumBaseline,
             int* naturalBaseline) noexcept {
  *minimum = *natural = 0;
  *minimumBaseline = *naturalBaseline = -1;
}

void sizeAllocate(GtkWidget* widget, int width, int height, int) noexcept {
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child)) {
    if (!gtk_widget_should_layout(child)) continue;
    const PixelFrame frame = isViewWidget(child) ? stateOf(child).frame : PixelFrame{0, 0, width, height};
    // The toolkit wants to be asked what a child needs before it is told what it gets.
    int minimum = 0;
    gtk_widget_measure(child, GTK_ORIENTATION_HORIZONTAL, -1, &minimum, nullptr, nullptr, nullptr);
    const graphene_point_t origin =
        GRAPHENE_POINT_INIT(static_cast<float>(frame.x), static_cast<float>(frame.y));
    gtk_widget_allocate(child, frame.width, frame.height, -1, gsk_transform_translate(nullptr, &origin));
  }
}

void snapshot(GtkWidget* widget, GtkSnapshot* snapshot) noexcept {
  const ViewState& state = stateOf(widget);
  const auto width = static_cast<float>(gtk_widget_get_width(widget));
  const auto height = static_cast<float>(gtk_widget_get_height(widget));
  if (state.color) {
    const graphene_rect_t bounds = GRAPHENE_RECT_INIT(0, 0, width, height);
    gtk_snapshot_append_color(snapshot, &*state.color, &bounds);
  }
  if (state.painter) state.painter(widget, snapshot, width, height);
  if (state.marked) return snapshotMarked(widget, parentClass, snapshot);
  parentClass->snapshot(widget, snapshot);
}

// An empty, clear view lets the application's widgets below have the events. Its children are asked first.
gboolean contains(GtkWidget* widget, double x, double y) noexcept {
  const ViewState& state = stateOf(widget);
  const bool wants = state.target == ViewTarget::Always || state.color ||
                     (state.target == ViewTarget::WhenFilled && gtk_widget_get_first_child(widget));
  return wants && x >= 0 && y >= 0 && x < gtk_widget_get_width(widget) && y < gtk_widget_get_height(widget);
}

void dispose(GObject* object) noexcept {
  while (auto* child = gtk_widget_get_first_child(GTK_WIDGET(object))) gtk_widget_unparent(child);
  stateOf(object).painter = nullptr;
  G_OBJECT_CLASS(parentClass)->dispose(object);
}

void finalize(GObject* object) noexcept {
  delete reinterpret_cast<ViewWidget*>(object)->state;
  G_OBJECT_CLASS(parentClass)->finalize(object);
}

void classInit(gpointer klass, gpointer) noexcept {
  parentClass = GTK_WIDGET_CLASS(g_type_class_peek_parent(klass));
  auto* object = G_OBJECT_CLASS(klass);
  object->dispose = dispose;
  object->finalize = finalize;
  auto* widget = GTK_WIDGET_CLASS(klass);
  widget->measure = measure;
  widget->size_allocate = sizeAllocate;
  widget->snapshot = snapshot;
  widget->contains = contains;
  gtk_widget_class_set_css_name(widget, "velto-view");
}

void instanceInit(GTypeInstance* instance, gpointer) noexcept {
  reinterpret_cast<ViewWidget*>(instance)->state = new ViewState;
}

GType viewWidgetType() {
  static const GType type = registerOwnType(GTK_TYPE_WIDGET, "VeltoView", sizeof(GtkWidgetClass), classInit,
                                            sizeof(ViewWidget), instanceInit);
  return type;
}

}  // namespace

GtkWidget* newViewWidget(GtkAccessibleRole role) {
  return GTK_WIDGET(g_object_new(viewWidgetType(), "accessible-role", role, nullptr));
}

void setViewFrame(GtkWidget* view, const CGRect& frame) {
  PixelFrame pixels{pixel(frame.minX()), pixel(frame.minY())};
  pixels.width = std::max(0, pixel(frame.maxX()) - pixels.x);
  pixels.height = std::max(0, pixel(frame.maxY()) - pixels.y);
  if (pixels == std::exchange(stateOf(view).frame, pixels)) return;
  if (auto* parent = gtk_widget_get_parent(view)) gtk_widget_queue_allocate(parent);
}

void setViewColor(GtkWidget* view, const UIColor& color) {
  const auto components = color.components();
  auto& painted = stateOf(view).color;
  painted.reset();
  if (components && components->alpha > 0) painted = clamped(*components);
  gtk_widget_queue_draw(view);
}

void setViewPainter(GtkWidget* view, ViewPainter painter) {
  stateOf(view).painter = std::move(painter);
  gtk_widget_queue_draw(view);
}

void markView(GtkWidget* view) {
  stateOf(view).marked = true;
}

void setViewTarget(GtkWidget* view, ViewTarget target) {
  stateOf(view).target = target;
}

// The toolkit has it as a resolution: that of a display on which nothing was changed is 96, in 1024ths.
double textScale() {
  constexpr double usual = 96 * 1024;
  constexpr double most = 3;
  int resolution = 0;
  if (auto* settings = gtk_settings_get_default())
    g_object_get(settings, "gtk-xft-dpi", &resolution, nullptr);
  return resolution > 0 ? std::clamp(resolution / usual, 1.0, most) : 1;
}

GdkRGBA clamped(const RGBA& color) {
  const auto part = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
  return {part(color.red), part(color.green), part(color.blue), part(color.alpha)};
}

}  // namespace velto::gtk
