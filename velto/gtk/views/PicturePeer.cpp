// Painting a picture into a view.
#include "velto/gtk/views/PicturePeer.h"

#include <algorithm>

namespace velto::gtk {
namespace {

void paint(const Picture& picture, GtkSnapshot* snapshot, float width, float height) {
  auto* texture = picture.texture();
  if (!texture || width <= 0 || height <= 0) return;
  const auto ownWidth = static_cast<float>(gdk_texture_get_width(texture));
  const auto ownHeight = static_cast<float>(gdk_texture_get_height(texture));
  const float scale = std::min(width / ownWidth, height / ownHeight);
  const graphene_rect_t rect = GRAPHENE_RECT_INIT(
      (width - ownWidth * scale) / 2, (height - ownHeight * scale) / 2, ownWidth * scale, ownHeight * scale);
  gtk_snapshot_append_texture(snapshot, texture, &rect);
}

}  // namespace

void Picture::set(GPtr<GdkTexture> texture) {
  texture_ = std::move(texture);
  for (auto* widget : shownBy_) gtk_widget_queue_draw(widget);
}

PicturePeer::PicturePeer(std::shared_ptr<Picture> picture) : picture_(std::move(picture)) {
  picture_->shownBy_.push_back(widget());
  setViewPainter(widget(), [picture = picture_](GtkWidget*, GtkSnapshot* snapshot, float width,
                                                float height) { paint(*picture, snapshot, width, height); });
}

PicturePeer::~PicturePeer() {
  setViewPainter(widget(), nullptr);
  std::erase(picture_->shownBy_, widget());
}

}  // namespace velto::gtk
