// Later siblings all the way up, by what they painted last; popovers by their surfaces.
#include "velto/gtk/views/PaintedOver.h"

#include "velto/gtk/views/ScreenPart.h"
#include "velto/platform/foundation/GMemory.h"

#include <optional>

namespace velto::gtk {
namespace {

constexpr float leastVisible = 0.004F;  // less than one step of an eight-bit colour

CGRect rectOf(const graphene_rect_t& bounds) {
  return {{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}};
}

// Collects the bounds of whatever a tree of render nodes shows.
class Painted {
 public:
  explicit Painted(std::vector<CGRect>& rects) : rects_(rects) {}

  void add(GskRenderNode* node, const graphene_matrix_t& matrix, const std::optional<graphene_rect_t>& clip) {
    switch (gsk_render_node_get_node_type(node)) {
      case GSK_CONTAINER_NODE:
        for (guint i = 0; i < gsk_container_node_get_n_children(node); ++i)
          add(gsk_container_node_get_child(node, i), matrix, clip);
        return;
      case GSK_DEBUG_NODE:
        return add(gsk_debug_node_get_child(node), matrix, clip);
      case GSK_TRANSFORM_NODE: {
        graphene_matrix_t own;
        graphene_matrix_t both;
        gsk_transform_to_matrix(gsk_transform_node_get_transform(node), &own);
        graphene_matrix_multiply(&own, &matrix, &both);
        return add(gsk_transform_node_get_child(node), both, clip);
      }
      case GSK_CLIP_NODE:
        return addClipped(gsk_clip_node_get_child(node), matrix, clip, *gsk_clip_node_get_clip(node));
      case GSK_ROUNDED_CLIP_NODE:
        return addClipped(gsk_rounded_clip_node_get_child(node), matrix, clip,
                          gsk_rounded_clip_node_get_clip(node)->bounds);
      case GSK_OPACITY_NODE:
        if (gsk_opacity_node_get_opacity(node) >= leastVisible)
          add(gsk_opacity_node_get_child(node), matrix, clip);
        return;
      case GSK_COLOR_NODE:
        if (gsk_color_node_get_color(node)->alpha < leastVisible) return;
        break;
      case GSK_OUTSET_SHADOW_NODE:
        return;  // softens what is below and does not hide it
      default:
        break;
    }
    graphene_rect_t bounds;
    gsk_render_node_get_bounds(node, &bounds);
    addRect(transformed(bounds, matrix), clip);
  }

 private:
  static graphene_rect_t transformed(const graphene_rect_t& rect, const graphene_matrix_t& matrix) {
    graphene_rect_t result;
    graphene_matrix_transform_bounds(&matrix, &rect, &result);
    return result;
  }

  void addClipped(GskRenderNode* child, const graphene_matrix_t& matrix,
                  const std::optional<graphene_rect_t>& outer, const graphene_rect_t& inner) {
    graphene_rect_t clip = transformed(inner, matrix);
    if (outer && !graphene_rect_intersection(&clip, &*outer, &clip)) return;
    add(child, matrix, clip);
  }

  void addRect(graphene_rect_t rect, const std::optional<graphene_rect_t>& clip) {
    if (clip && !graphene_rect_intersection(&rect, &*clip, &rect)) return;
    if (rect.size.width > 0 && rect.size.height > 0) rects_.push_back(rectOf(rect));
  }

  std::vector<CGRect>& rects_;
};

void addPainted(GtkWidget* widget, GtkWidget* over, std::vector<CGRect>& rects) {
  graphene_matrix_t matrix;
  if (!gtk_widget_get_mapped(widget) || !gtk_widget_compute_transform(widget, over, &matrix)) return;
  const auto painted = GPtr<GdkPaintable>::adopt(gtk_widget_paintable_new(widget));
  auto* snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(painted, snapshot, gtk_widget_get_width(widget), gtk_widget_get_height(widget));
  GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
  if (!node) return;
  Painted(rects).add(node, matrix, std::nullopt);
  gsk_render_node_unref(node);
}

void addPopovers(GtkWidget* within, GtkWidget* over, std::vector<CGRect>& rects) {
  for (auto* child = gtk_widget_get_first_child(within); child; child = gtk_widget_get_next_sibling(child)) {
    if (child == over || !gtk_widget_get_mapped(child)) continue;
    auto* surface = GTK_IS_POPOVER(child) ? gtk_native_get_surface(GTK_NATIVE(child)) : nullptr;
    if (surface &&
        gdk_popup_get_parent(GDK_POPUP(surface)) == gtk_native_get_surface(gtk_widget_get_native(over))) {
      const CGPoint from = placeOnSurface(over);
      const CGPoint inside = placeOnSurface(child);
      rects.push_back({{gdk_popup_get_position_x(GDK_POPUP(surface)) + inside.x - from.x,
                        gdk_popup_get_position_y(GDK_POPUP(surface)) + inside.y - from.y},
                       {static_cast<double>(gtk_widget_get_width(child)),
                        static_cast<double>(gtk_widget_get_height(child))}});
    }
    addPopovers(child, over, rects);
  }
}

}  // namespace

std::vector<CGRect> paintedOver(GtkWidget* widget) {
  std::vector<CGRect> rects;
  auto* window = GTK_WIDGET(gtk_widget_get_native(widget));
  if (!window) return rects;
  for (auto* below = widget; below && below != window; below = gtk_widget_get_parent(below))
    for (auto* later = gtk_widget_get_next_sibling(below); later; later = gtk_widget_get_next_sibling(later))
      if (!GTK_IS_NATIVE(later)) addPainted(later, widget, rects);
  addPopovers(window, widget, rects);
  return rects;
}

}  // namespace velto::gtk
