// The places of the last frames.
#include "velto/gtk/web/PlaceWatch.h"

#include <algorithm>

namespace velto::gtk {
namespace {
constexpr size_t mostPlaces = 256;  // of a movement that goes on; what is older is forgotten
}

PlaceWatch::PlaceWatch(GtkWidget* view) : view_(view) {
  g_signal_connect_after(view_, "map", G_CALLBACK(mapped), this);
  g_signal_connect(view_, "unmap", G_CALLBACK(unmapped), this);
}

PlaceWatch::~PlaceWatch() {
  unmapped(view_, this);
  g_signal_handlers_disconnect_by_data(view_, this);
}

void PlaceWatch::mapped(GtkWidget*, PlaceWatch* self) noexcept {
  self->clock_ = gtk_widget_get_frame_clock(self->view_);
  if (!self->clock_) return;
  g_object_ref(self->clock_);
  g_signal_connect(self->clock_, "after-paint", G_CALLBACK(painted), self);
}

void PlaceWatch::unmapped(GtkWidget*, PlaceWatch* self) noexcept {
  self->moveTo({});
  if (!self->clock_) return;
  g_signal_handlers_disconnect_by_data(self->clock_, self);
  g_clear_object(&self->clock_);
}

void PlaceWatch::painted(GdkFrameClock*, PlaceWatch* self) noexcept {
  self->moveTo(self->bounds());
}

CGRect PlaceWatch::bounds() const {
  graphene_rect_t found;
  auto* native = gtk_widget_get_native(view_);
  if (!native || !gtk_widget_compute_bounds(view_, GTK_WIDGET(native), &found)) return {};
  return {{found.origin.x, found.origin.y}, {found.size.width, found.size.height}};
}

void PlaceWatch::moveTo(const CGRect& bounds) {
  if (bounds == now_) return;
  if (before_.size() == mostPlaces) before_.erase(before_.begin());
  before_.push_back({std::exchange(now_, bounds), g_get_monotonic_time()});
}

bool PlaceWatch::held(GdkEvent* event, std::chrono::milliseconds time) const {
  CGPoint point, inset;
  auto* native = gtk_widget_get_native(view_);
  if (!native || !gdk_event_get_position(event, &point.x, &point.y)) return true;
  gtk_native_get_surface_transform(native, &inset.x, &inset.y);
  return held({point.x - inset.x, point.y - inset.y}, time);
}

bool PlaceWatch::held(CGPoint point, std::chrono::milliseconds time) const {
  const gint64 since = g_get_monotonic_time() - std::chrono::microseconds(time).count();
  return bounds().contains(point) && now_.contains(point) &&
         std::all_of(before_.begin(), before_.end(), [&](const Place& place) {
           return place.until <= since || place.bounds.contains(point);
         });
}

}  // namespace velto::gtk
