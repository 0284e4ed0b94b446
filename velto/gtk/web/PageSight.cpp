// Unmapping, and mapping again.
#include "velto/gtk/web/PageSight.h"

#include "velto/gtk/views/ViewWidget.h"

#include <utility>

namespace velto::gtk {
namespace {

constexpr guint timeToDraw = 300;  // milliseconds; far more than a page takes that is alive
constexpr int mostPixels =
    1 << 22;  // what covers a screen is no banner in a list, and its picture would be large

}  // namespace

PageSight::PageSight(WebKitWebView* view, GtkWidget* place)
    : view_(GTK_WIDGET(view)), place_(place), focus_(gtk_event_controller_focus_new()) {
  g_signal_connect(focus_, "leave", G_CALLBACK(focusLeft), this);
  gtk_widget_add_controller(view_, focus_);
  g_signal_connect_after(view_, "map", G_CALLBACK(mapped), this);
  setViewPainter(place_, [this](GtkWidget*, GtkSnapshot* snapshot, float width, float height) {
    paint(snapshot, width, height);
  });
}

PageSight::~PageSight() {
  if (drawing_) g_source_remove(drawing_);
  setViewPainter(place_, nullptr);
  g_signal_handlers_disconnect_by_data(view_, this);
  g_signal_handlers_disconnect_by_data(focus_, this);
  gtk_widget_remove_controller(view_, focus_);
}

void PageSight::set(bool inSight) {
  inSight_ = inSight;
  apply(gtk_event_controller_focus_contains_focus(GTK_EVENT_CONTROLLER_FOCUS(focus_)));
}

void PageSight::focusLeft(GtkEventControllerFocus*, PageSight* self) noexcept {
  self->apply(false);
}

void PageSight::apply(bool hasFocus) {
  const bool shows = inSight_ || hasFocus;
  if (!shows && !isHidden()) takePicture();
  gtk_widget_set_child_visible(view_, shows);
}

// Also when a row of a list that is used again comes back with it. A widget that was to be drawn when it was unmapped passes
// for one whose parents know that: it has to be told to them.
void PageSight::mapped(GtkWidget*, PageSight* self) noexcept {
  gtk_widget_queue_draw(self->place_);
  if (self->drawing_) g_source_remove(std::exchange(self->drawing_, 0));
  if (self->picture_) self->drawing_ = g_timeout_add(timeToDraw, hasDrawn, self);
}

gboolean PageSight::hasDrawn(gpointer data) noexcept {
  auto& self = *static_cast<PageSight*>(data);
  self.drawing_ = 0;
  if (!self.isHidden()) self.dropPicture();
  return G_SOURCE_REMOVE;
}

void PageSight::dropPicture() {
  if (std::exchange(picture_, {})) gtk_widget_queue_draw(place_);
}

// Copied: what the widget has painted last lies in memory that the engine uses again.
void PageSight::takePicture() {
  auto* native = gtk_widget_get_native(view_);
  auto* renderer = native ? gtk_native_get_renderer(native) : nullptr;
  const int scale = gtk_widget_get_scale_factor(view_);
  const int width = gtk_widget_get_width(view_), height = gtk_widget_get_height(view_);
  if (!renderer || width < 1 || height < 1 || width > mostPixels / height / scale / scale) return;
  const auto paintable = GPtr<GdkPaintable>::adopt(gtk_widget_paintable_new(view_));
  auto* snapshot = gtk_snapshot_new();
  gtk_snapshot_scale(snapshot, static_cast<float>(scale), static_cast<float>(scale));
  gdk_paintable_snapshot(paintable, snapshot, width, height);
  const GOwned<GskRenderNode, gsk_render_node_unref> node(gtk_snapshot_free_to_node(snapshot));
  if (!node) return;
  const graphene_rect_t bounds =
      GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width * scale), static_cast<float>(height * scale));
  picture_ = GPtr<GdkTexture>::adopt(gsk_renderer_render_texture(renderer, node.get(), &bounds));
  width_ = width;
  height_ = height;
}

// A place that has got another size shows nothing rather than something else.
void PageSight::paint(GtkSnapshot* snapshot, float width, float height) const {
  if (!picture_ || static_cast<int>(width) != width_ || static_cast<int>(height) != height_) return;
  const graphene_rect_t bounds = GRAPHENE_RECT_INIT(0, 0, width, height);
  gtk_snapshot_append_texture(snapshot, picture_, &bounds);
}

}  // namespace velto::gtk
