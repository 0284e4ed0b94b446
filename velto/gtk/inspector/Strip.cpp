// The widget class, and what drawing takes.
#include "velto/gtk/inspector/Strip.h"

#include "velto/gtk/GtkVersions.h"
#include "velto/gtk/ProcessNames.h"
#include "velto/platform/foundation/GMemory.h"

#include <utility>

namespace velto::gtk {
namespace {

struct Strip {
  GtkWidget parent;
  StripPainter* painter;
  int width, height;
};

GtkWidgetClass* stripParentClass = nullptr;

Strip& stripOf(gpointer widget) {
  return *static_cast<Strip*>(widget);
}

void measureStrip(GtkWidget* widget, GtkOrientation orientation, int, int* minimum, int* natural, int*,
                  int*) noexcept {
  const auto& strip = stripOf(widget);
  *minimum = *natural = orientation == GTK_ORIENTATION_HORIZONTAL ? strip.width : strip.height;
}

void snapshotStrip(GtkWidget* widget, GtkSnapshot* snapshot) noexcept {
  const auto& strip = stripOf(widget);
  if (!*strip.painter) return;
  (*strip.painter)({widget, snapshot, static_cast<float>(gtk_widget_get_width(widget)),
                    static_cast<float>(gtk_widget_get_height(widget)), textColorOf(widget)});
}

void finalizeStrip(GObject* object) noexcept {
  delete stripOf(object).painter;
  G_OBJECT_CLASS(stripParentClass)->finalize(object);
}

void stripClassInit(gpointer klass, gpointer) noexcept {
  stripParentClass = GTK_WIDGET_CLASS(g_type_class_peek_parent(klass));
  G_OBJECT_CLASS(klass)->finalize = finalizeStrip;
  auto* widgets = GTK_WIDGET_CLASS(klass);
  widgets->measure = measureStrip;
  widgets->snapshot = snapshotStrip;
  gtk_widget_class_set_accessible_role(widgets, GTK_ACCESSIBLE_ROLE_IMG);
}

void stripInit(GTypeInstance* instance, gpointer) noexcept {
  reinterpret_cast<Strip*>(instance)->painter = new StripPainter;
}

GType stripType() {
  static const GType type = registerOwnType(GTK_TYPE_WIDGET, "VeltoInspectorStrip", sizeof(GtkWidgetClass),
                                            stripClassInit, sizeof(Strip), stripInit);
  return type;
}

GPtr<PangoLayout> smallLayout(GtkWidget* widget, const std::string& words) {
  auto layout = GPtr<PangoLayout>::adopt(gtk_widget_create_pango_layout(widget, words.c_str()));
  auto* attributes = pango_attr_list_new();
  pango_attr_list_insert(attributes, pango_attr_scale_new(PANGO_SCALE_SMALL));
  pango_layout_set_attributes(layout, attributes);
  pango_attr_list_unref(attributes);
  return layout;
}

}  // namespace

void StripCanvas::fill(const GdkRGBA& color, float x, float y, float w, float h, float rounding) const {
  if (w <= 0 || h <= 0) return;
  const auto area = GRAPHENE_RECT_INIT(x, y, w, h);
  if (rounding > 0) {
    GskRoundedRect rounded;
    gsk_rounded_rect_init_from_rect(&rounded, &area, rounding);
    gtk_snapshot_push_rounded_clip(snapshot, &rounded);
  }
  gtk_snapshot_append_color(snapshot, &color, &area);
  if (rounding > 0) gtk_snapshot_pop(snapshot);
}

void StripCanvas::write(const std::string& words, float x, float y) const {
  constexpr double subdued = 0.65;
  const auto layout = smallLayout(widget, words);
  const auto color = withAlpha(text, subdued);
  const auto place = GRAPHENE_POINT_INIT(x, y);
  gtk_snapshot_save(snapshot);
  gtk_snapshot_translate(snapshot, &place);
  gtk_snapshot_append_layout(snapshot, layout, &color);
  gtk_snapshot_restore(snapshot);
}

float StripCanvas::widthOf(const std::string& words) const {
  int across = 0;
  pango_layout_get_pixel_size(smallLayout(widget, words), &across, nullptr);
  return static_cast<float>(across);
}

GtkWidget* newStrip(int minimumWidth, int height) {
  auto* widget = GTK_WIDGET(g_object_new(stripType(), "hexpand", TRUE, nullptr));
  stripOf(widget).width = minimumWidth;
  stripOf(widget).height = height;
  return widget;
}

void setStrip(GtkWidget* strip, StripPainter painter, const std::string& text) {
  *stripOf(strip).painter = std::move(painter);
  gtk_accessible_update_property(GTK_ACCESSIBLE(strip), GTK_ACCESSIBLE_PROPERTY_LABEL, text.c_str(), -1);
  gtk_widget_queue_draw(strip);
}

}  // namespace velto::gtk
