// Pages, render nodes, texture.
#include "preview/Photograph.h"

#include <velto/platform/Geometry.h>

#include <algorithm>
#include <map>
#include <memory>

#include "preview/Player.h"

namespace velto::preview {
namespace {

constexpr std::chrono::seconds longestPainting{2};

using Node = GOwned<GskRenderNode, gsk_render_node_unref>;
using Replacements = std::map<GskRenderNode*, GskRenderNode*>;

Node retained(GskRenderNode* node) {
  return Node(gsk_render_node_ref(node));
}

struct Page {
  WebKitWebView* view = nullptr;
  GPtr<GdkTexture> texture;
  bool came = false;
};

void pageCame(GObject* view, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<std::shared_ptr<Page>> page(static_cast<std::shared_ptr<Page>*>(data));
  (*page)->texture =
      GPtr<GdkTexture>::adopt(webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
  (*page)->came = true;
}

std::vector<std::shared_ptr<Page>> paintAnew(const std::vector<WebKitWebView*>& views) {
  std::vector<std::shared_ptr<Page>> pages;
  for (auto* view : views) {
    pages.push_back(std::make_shared<Page>());
    pages.back()->view = view;
    webkit_web_view_get_snapshot(view, WEBKIT_SNAPSHOT_REGION_VISIBLE,
                                 WEBKIT_SNAPSHOT_OPTIONS_TRANSPARENT_BACKGROUND, nullptr, pageCame,
                                 new std::shared_ptr<Page>(pages.back()));
  }
  runUntil(longestPainting, [&] {
    for (const auto& page : pages)
      if (!page->came) return false;
    return true;
  });
  return pages;
}

// What the widget painted last.
Node nodeOf(GtkWidget* widget) {
  const auto paintable = GPtr<GdkPaintable>::adopt(gtk_widget_paintable_new(widget));
  GtkSnapshot* snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(paintable, GDK_SNAPSHOT(snapshot), gdk_paintable_get_intrinsic_width(paintable),
                         gdk_paintable_get_intrinsic_height(paintable));
  return Node(gtk_snapshot_free_to_node(snapshot));
}

// The paintable clips what it shows; its parent's picture has what is inside.
GskRenderNode* insideOf(GskRenderNode* node) {
  while (node && gsk_render_node_get_node_type(node) == GSK_CLIP_NODE) node = gsk_clip_node_get_child(node);
  return node;
}

Node replaced(GskRenderNode* node, const Replacements& replacements) {
  if (const auto found = replacements.find(node); found != replacements.end()) return retained(found->second);
  switch (gsk_render_node_get_node_type(node)) {
    case GSK_CONTAINER_NODE: {
      std::vector<Node> kept;
      std::vector<GskRenderNode*> children;
      for (guint i = 0; i < gsk_container_node_get_n_children(node); ++i) {
        kept.push_back(replaced(gsk_container_node_get_child(node, i), replacements));
        children.push_back(kept.back().get());
      }
      return Node(gsk_container_node_new(children.data(), static_cast<guint>(children.size())));
    }
    case GSK_TRANSFORM_NODE: {
      const auto child = replaced(gsk_transform_node_get_child(node), replacements);
      return Node(gsk_transform_node_new(child.get(), gsk_transform_node_get_transform(node)));
    }
    case GSK_CLIP_NODE: {
      const auto child = replaced(gsk_clip_node_get_child(node), replacements);
      return Node(gsk_clip_node_new(child.get(), gsk_clip_node_get_clip(node)));
    }
    case GSK_ROUNDED_CLIP_NODE: {
      const auto child = replaced(gsk_rounded_clip_node_get_child(node), replacements);
      return Node(gsk_rounded_clip_node_new(child.get(), gsk_rounded_clip_node_get_clip(node)));
    }
    case GSK_OPACITY_NODE: {
      const auto child = replaced(gsk_opacity_node_get_child(node), replacements);
      return Node(gsk_opacity_node_new(child.get(), gsk_opacity_node_get_opacity(node)));
    }
    case GSK_DEBUG_NODE:
      return replaced(gsk_debug_node_get_child(node), replacements);
    default:
      return retained(node);
  }
}

struct Repainted {
  std::vector<Node> held;  // while the nodes are looked for by their addresses
  Replacements replacements;
};

Repainted repainted(const std::vector<WebKitWebView*>& views) {
  const auto pages = paintAnew(views);
  Repainted all;
  for (const auto& page : pages) {
    auto* view = GTK_WIDGET(page->view);
    auto before = nodeOf(view);
    auto* inside = insideOf(before.get());
    if (!page->texture || !inside) continue;
    const graphene_rect_t bounds =
        GRAPHENE_RECT_INIT(0, 0, float(gtk_widget_get_width(view)), float(gtk_widget_get_height(view)));
    all.held.push_back(std::move(before));
    all.held.emplace_back(gsk_texture_node_new(page->texture, &bounds));
    all.replacements[inside] = all.held.back().get();
  }
  return all;
}

struct Part {
  Node seen;
  CGPoint place;
};

// At the scale of the widget's screen.
GPtr<GdkTexture> textureOf(const std::vector<Part>& parts, CGSize size, GtkWidget* widget) {
  GskRenderer* renderer = gtk_native_get_renderer(gtk_widget_get_native(widget));
  const auto scale = float(gtk_widget_get_scale_factor(widget));
  if (!renderer) return {};
  GtkSnapshot* snapshot = gtk_snapshot_new();
  gtk_snapshot_scale(snapshot, scale, scale);
  for (const auto& part : parts) {
    const auto place = GRAPHENE_POINT_INIT(float(part.place.x), float(part.place.y));
    gtk_snapshot_save(snapshot);
    gtk_snapshot_translate(snapshot, &place);
    gtk_snapshot_append_node(snapshot, part.seen.get());
    gtk_snapshot_restore(snapshot);
  }
  const Node scaled(gtk_snapshot_free_to_node(snapshot));
  const graphene_rect_t bounds =
      GRAPHENE_RECT_INIT(0, 0, float(size.width) * scale, float(size.height) * scale);
  return GPtr<GdkTexture>::adopt(gsk_renderer_render_texture(renderer, scaled.get(), &bounds));
}

}  // namespace

GPtr<GdkTexture> photographOf(GtkWidget* widget, const std::vector<WebKitWebView*>& views) {
  const auto pages = repainted(views);
  auto* window = GTK_WIDGET(gtk_widget_get_root(widget));  // which paints what is behind
  const auto painted = nodeOf(window);
  graphene_point_t place;
  graphene_rect_t whole;  // with the window's own border
  if (!painted || !gtk_widget_compute_point(widget, window, graphene_point_zero(), &place) ||
      !gtk_widget_compute_bounds(window, window, &whole))
    return {};
  std::vector<Part> parts;
  parts.push_back(
      {replaced(painted.get(), pages.replacements), {whole.origin.x - place.x, whole.origin.y - place.y}});
  return textureOf(parts, {double(gtk_widget_get_width(widget)), double(gtk_widget_get_height(widget))},
                   widget);
}

GPtr<GdkTexture> photographOf(const std::vector<GtkWindow*>& windows,
                              const std::vector<WebKitWebView*>& views) {
  constexpr double gap = 16;
  const auto pages = repainted(views);
  std::vector<Part> parts;
  CGSize size{gap, 0};
  for (auto* window : windows) {
    const auto painted = nodeOf(GTK_WIDGET(window));
    graphene_rect_t bounds;
    if (!painted || !gtk_widget_compute_bounds(GTK_WIDGET(window), GTK_WIDGET(window), &bounds)) return {};
    parts.push_back({replaced(painted.get(), pages.replacements), {size.width, gap}});
    size.width += bounds.size.width + gap;
    size.height = std::max(size.height, bounds.size.height + 2 * gap);
  }
  return textureOf(parts, size, GTK_WIDGET(windows.front()));
}

}  // namespace velto::preview
