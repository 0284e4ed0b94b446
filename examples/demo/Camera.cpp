// See Camera.h.
#include "Camera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace demo {
namespace {

bool isNear(std::optional<Color> a, Color b) {
  constexpr int tolerance = 6;
  if (!a) return false;
  for (const int shift : {0, 8, 16})
    if (std::abs(int(*a >> shift & 0xff) - int(b >> shift & 0xff)) > tolerance) return false;
  return true;
}

}  // namespace

Picture::Picture(GdkTexture* texture)
    : texture_(texture, g_object_unref),
      width_(gdk_texture_get_width(texture)),
      height_(gdk_texture_get_height(texture)),
      pixels_(size_t(width_) * size_t(height_)) {
  gdk_texture_download(texture, reinterpret_cast<guchar*>(pixels_.data()), size_t(width_) * 4);
}

std::optional<Color> Picture::at(double x, double y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return std::nullopt;
  return pixels_[size_t(y) * size_t(width_) + size_t(x)] & 0xffffff;
}

bool Picture::shows(const velto::CGRect& frame, Color color) const {
  const auto corners = [&](double inward) {
    const double left = std::round(frame.minX()) + inward;
    const double right = std::round(frame.maxX()) - 1 - inward;
    const double top = std::round(frame.minY()) + inward;
    const double bottom = std::round(frame.maxY()) - 1 - inward;
    return std::array{at(left, top), at(right, top), at(left, bottom), at(right, bottom)};
  };
  for (const auto& inside : corners(0))
    if (!isNear(inside, color)) return false;
  for (const auto& outside : corners(-1))
    if (isNear(outside, color)) return false;
  return true;
}

std::optional<int> Picture::rightEnd(int row, Color color) const {
  for (int x = width_; x > 0; --x)
    if (isNear(at(x - 1, row), color)) return x;
  return std::nullopt;
}

std::optional<Picture::Columns> Picture::otherThan(Color color, int row) const {
  std::optional<Columns> found;
  for (int x = 0; x < width_; ++x) {
    if (isNear(at(x, row), color)) continue;
    if (!found) found = Columns{x, x};
    found->last = x;
  }
  return found;
}

int Picture::brightest(const velto::CGRect& frame) const {
  int most = 0;
  for (double y = frame.minY(); y < frame.maxY(); ++y) {
    for (double x = frame.minX(); x < frame.maxX(); ++x) {
      const Color color = at(x, y).value_or(0);
      most = std::max(most, int(std::min({color >> 16 & 0xff, color >> 8 & 0xff, color & 0xff})));
    }
  }
  return most;
}

bool Picture::save(const std::filesystem::path& file) const {
  return texture_ && gdk_texture_save_to_png(texture_.get(), file.c_str());
}

Picture Camera::take() const {
  const int width = gtk_widget_get_width(widget_);
  const int height = gtk_widget_get_height(widget_);
  GskRenderer* renderer = gtk_native_get_renderer(gtk_widget_get_native(widget_));
  if (!renderer || width <= 0 || height <= 0) return {};
  // The whole window, from its shadow on: what lies below the widget belongs to the picture, since ads may be half clear.
  auto* window = GTK_WIDGET(gtk_widget_get_root(widget_));
  graphene_rect_t all, bounds;
  if (!gtk_widget_compute_bounds(window, window, &all) ||
      !gtk_widget_compute_bounds(widget_, window, &bounds))
    return {};
  if (!window_) window_.reset(gtk_widget_paintable_new(window), g_object_unref);
  GtkSnapshot* snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(window_.get(), GDK_SNAPSHOT(snapshot), all.size.width, all.size.height);
  GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
  if (!node) return {};
  graphene_rect_offset(&bounds, -all.origin.x, -all.origin.y);
  GdkTexture* texture = gsk_renderer_render_texture(renderer, node, &bounds);
  gsk_render_node_unref(node);
  return Picture(texture);
}

}  // namespace demo
