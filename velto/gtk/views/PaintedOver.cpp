// A walk through the window's render nodes; popovers and windows by their surfaces.
#include "velto/gtk/views/PaintedOver.h"

#include "velto/gtk/GtkVersions.h"
#include "velto/gtk/views/ScreenPart.h"
#include "velto/gtk/views/WindowsOver.h"
#include "velto/platform/foundation/GMemory.h"

#include <cmath>
#include <cstdint>
#include <string>

namespace velto::gtk {
namespace {

constexpr float leastVisible = 0.004F;  // less than one step of an eight-bit colour

// Shadows included.
graphene_rect_t boundsOf(GtkWidget* window) {
  graphene_rect_t bounds;
  return gtk_widget_compute_bounds(window, window, &bounds) ? bounds : graphene_rect_t{};
}

// Edges that meet still do so after the way through a matrix and back.
double settled(float value) {
  return std::round(value * 64) / 64;
}

// Of what is turned, a rectangle says too little.
bool isUpright(const graphene_matrix_t& matrix) {
  double xx, yx, xy, yy, x, y;
  constexpr double least = 1e-4;
  return graphene_matrix_to_2d(&matrix, &xx, &yx, &xy, &yy, &x, &y) && std::abs(xy) < least &&
         std::abs(yx) < least;
}

std::string markerOf(GtkWidget* widget) {
  return "velto " + std::to_string(reinterpret_cast<uintptr_t>(widget));
}

// Finds the marked node, and from there on collects the bounds of what is painted.
class Walk {
 public:
  explicit Walk(std::string marker) : marker_(std::move(marker)) {}

  struct State {
    graphene_matrix_t matrix;  // to the window's coordinates
    std::optional<graphene_rect_t> clip;
    float opacity = 1;
  };

  void visit(GskRenderNode* node, const State& state) {
    switch (gsk_render_node_get_node_type(node)) {
      case GSK_CONTAINER_NODE:
        for (guint i = 0; i < gsk_container_node_get_n_children(node); ++i)
          visit(gsk_container_node_get_child(node, i), state);
        return;
      case GSK_DEBUG_NODE:
        if (marker_ != gsk_debug_node_get_message(node)) return visit(gsk_debug_node_get_child(node), state);
        place = state;
        return;  // what is inside belongs to the widget
      case GSK_TRANSFORM_NODE: {
        State inner = state;
        graphene_matrix_t own;
        gsk_transform_to_matrix(gsk_transform_node_get_transform(node), &own);
        graphene_matrix_multiply(&own, &state.matrix, &inner.matrix);
        return visit(gsk_transform_node_get_child(node), inner);
      }
      case GSK_CLIP_NODE:
        return visitClipped(gsk_clip_node_get_child(node), state, *gsk_clip_node_get_clip(node));
      case GSK_ROUNDED_CLIP_NODE:
        return visitClipped(gsk_rounded_clip_node_get_child(node), state,
                            gsk_rounded_clip_node_get_clip(node)->bounds);
      case GSK_OPACITY_NODE:
        return visitFaded(gsk_opacity_node_get_child(node), state, gsk_opacity_node_get_opacity(node));
      case GSK_CROSS_FADE_NODE: {
        const float progress = gsk_cross_fade_node_get_progress(node);
        visitFaded(gsk_cross_fade_node_get_start_child(node), state, 1 - progress);
        return visitFaded(gsk_cross_fade_node_get_end_child(node), state, progress);
      }
      case GSK_SHADOW_NODE:
        return visit(gsk_shadow_node_get_child(node), state);
      case GSK_BLUR_NODE:
        return visit(gsk_blur_node_get_child(node), state);
      case GSK_COLOR_MATRIX_NODE:
        return visit(gsk_color_matrix_node_get_child(node), state);
      case GSK_COLOR_NODE:
        if (gsk_color_node_get_color(node)->alpha < leastVisible) return;
        break;
      case GSK_OUTSET_SHADOW_NODE:
      case GSK_INSET_SHADOW_NODE:
        return;  // softens what is below and does not hide it
      case GSK_BORDER_NODE:
        return visitBorder(node, state);
      default:
        isWhole = isWhole && !mayHold(node);
        break;
    }
    graphene_rect_t bounds;
    gsk_render_node_get_bounds(node, &bounds);
    add(bounds, state);
  }

  std::optional<State> place;           // of the marked widget
  bool isWhole = true;                  // nothing was met that could hold it unseen
  std::vector<graphene_rect_t> covers;  // in the window's coordinates

 private:
  static graphene_rect_t toWindow(const graphene_rect_t& rect, const State& state) {
    graphene_rect_t result;
    graphene_matrix_transform_bounds(&state.matrix, &rect, &result);
    return result;
  }

  // Nodes with others in them, whose picture is not the sum of those.
  static bool mayHold(GskRenderNode* node) {
    const auto type = gsk_render_node_get_node_type(node);
    return type == GSK_BLEND_NODE || type == GSK_REPEAT_NODE || isMask(node);
  }

  void visitFaded(GskRenderNode* child, const State& state, float opacity) {
    State inner = state;
    inner.opacity *= opacity;
    if (inner.opacity >= leastVisible) visit(child, inner);
  }

  void visitClipped(GskRenderNode* child, const State& state, const graphene_rect_t& clip) {
    State inner = state;
    inner.clip = toWindow(clip, state);
    if (state.clip && !graphene_rect_intersection(&*inner.clip, &*state.clip, &*inner.clip))
      inner.clip = GRAPHENE_RECT_INIT(0, 0, 0, 0);
    visit(child, inner);
  }

  // Only its four sides are painted: windows have one around all of their content, above that.
  void visitBorder(GskRenderNode* node, const State& state) {
    graphene_rect_t all;
    gsk_render_node_get_bounds(node, &all);
    const auto& [x, y] = all.origin;
    const auto& [width, height] = all.size;
    const float* widths = gsk_border_node_get_widths(node);
    const GdkRGBA* colors = gsk_border_node_get_colors(node);
    const graphene_rect_t sides[] = {
        GRAPHENE_RECT_INIT(x, y, width, widths[0]),
        GRAPHENE_RECT_INIT(x + width - widths[1], y, widths[1], height),
        GRAPHENE_RECT_INIT(x, y + height - widths[2], width, widths[2]),
        GRAPHENE_RECT_INIT(x, y, widths[3], height),
    };
    for (int side = 0; side < 4; ++side)
      if (widths[side] > 0 && colors[side].alpha >= leastVisible) add(sides[side], state);
  }

  void add(const graphene_rect_t& rect, const State& state) {
    if (!place) return;
    graphene_rect_t bounds = toWindow(rect, state);
    if (state.clip && !graphene_rect_intersection(&bounds, &*state.clip, &bounds)) return;
    covers.push_back(bounds);
  }

  std::string marker_;
};

}  // namespace

void snapshotMarked(GtkWidget* widget, const GtkWidgetClass* parentClass, GtkSnapshot* snapshot) {
  auto* inside = gtk_snapshot_new();
  parentClass->snapshot(widget, inside);
  PaintedNodes node(gtk_snapshot_free_to_node(inside));
  if (!node) node.reset(gsk_container_node_new(nullptr, 0));
  const PaintedNodes marked(gsk_debug_node_new(node.get(), g_strdup(markerOf(widget).c_str())));
  gtk_snapshot_append_node(snapshot, marked.get());
}

// The window's own nodes, as they are: nothing is painted for this.
PaintedNodes paintedNodes(GtkWidget* window) {
  const auto size = boundsOf(window).size;
  const auto painted = GPtr<GdkPaintable>::adopt(gtk_widget_paintable_new(window));
  auto* snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(painted, snapshot, size.width, size.height);
  return PaintedNodes(gtk_snapshot_free_to_node(snapshot));
}

Painted paintedOver(GtkWidget* widget, GskRenderNode* nodes) {
  Painted result;
  auto* window = GTK_WIDGET(gtk_widget_get_native(widget));
  if (!window || !nodes) return result;
  const auto bounds = boundsOf(window);
  Walk walk(markerOf(widget));
  Walk::State start;
  const graphene_point3d_t origin = GRAPHENE_POINT3D_INIT(bounds.origin.x, bounds.origin.y, 0);
  graphene_matrix_init_translate(&start.matrix, &origin);
  walk.visit(nodes, start);
  graphene_matrix_t back;
  result.measurable = walk.place ? isUpright(walk.place->matrix) : walk.isWhole;
  if (!walk.place || !graphene_matrix_inverse(&walk.place->matrix, &back)) return result;

  const auto own = [&](const graphene_rect_t& rect) {
    graphene_rect_t inside;
    graphene_matrix_transform_bounds(&back, &rect, &inside);
    const double left = settled(inside.origin.x);
    const double top = settled(inside.origin.y);
    return CGRect{{left, top},
                  {settled(inside.origin.x + inside.size.width) - left,
                   settled(inside.origin.y + inside.size.height) - top}};
  };
  result.found = true;
  const auto popovers = popoversOver(window, widget);
  const auto windows = windowsOver(widget);
  if (walk.place->clip) result.clip = own(*walk.place->clip);
  graphene_rect_t shown =
      GRAPHENE_RECT_INIT(0, 0, float(gtk_widget_get_width(window)), float(gtk_widget_get_height(window)));
  if (const auto screen = screenAround(window)) {
    const auto onScreen = GRAPHENE_RECT_INIT(float(screen->minX()), float(screen->minY()),
                                             float(screen->size.width), float(screen->size.height));
    if (!graphene_rect_intersection(&shown, &onScreen, &shown)) shown = GRAPHENE_RECT_INIT(0, 0, 0, 0);
  }
  result.window = own(shown);
  const double width = gtk_widget_get_width(widget);
  const double height = gtk_widget_get_height(widget);
  for (const auto& cover : walk.covers)
    if (const CGRect inside = own(cover);
        inside.maxX() > 0 && inside.maxY() > 0 && inside.minX() < width && inside.minY() < height)
      result.covers.push_back(inside);
  for (auto* over : {&popovers, &windows})
    result.covers.insert(result.covers.end(), over->begin(), over->end());
  return result;
}

}  // namespace velto::gtk
