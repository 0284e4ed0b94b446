// Events in, lines out.
#include "preview/Recorder.h"

#include <cmath>

namespace velto::preview {
namespace {

constexpr double leastSwipe = 12;         // points
constexpr gint64 leastPress = 600'000;    // microseconds
constexpr gint64 shortestWait = 100'000;  // what is quicker is one movement

std::string whole(double value) {
  return std::to_string(std::lround(value));
}

std::string textOf(CGPoint point) {
  return whole(point.x) + " " + whole(point.y);
}

}  // namespace

Recorder::Recorder(Screen& screen, const std::string& file) : screen_(screen), file_(file) {
  if (!file_) throw UsageError(file + ": cannot be written");
  file_ << "wait-for event load-finished\n" << std::flush;
  lastStep_ = g_get_monotonic_time();
  events_ = gtk_event_controller_legacy_new();
  gtk_event_controller_set_propagation_phase(events_, GTK_PHASE_CAPTURE);
  g_signal_connect(events_, "event", G_CALLBACK(heard), this);
  gtk_widget_add_controller(GTK_WIDGET(screen.window()), events_);
  screen.onChange = [this](const std::string& step) { write(step); };
}

Recorder::~Recorder() {
  endText();
  screen_.onChange = nullptr;
  if (!screen_.isOpen()) return;
  g_signal_handlers_disconnect_by_data(events_, this);
  gtk_widget_remove_controller(GTK_WIDGET(screen_.window()), events_);
}

gboolean Recorder::heard(GtkEventController*, GdkEvent* event, Recorder* self) noexcept {
  auto* content = self->screen_.content();
  auto* window = GTK_WIDGET(self->screen_.window());
  double x = 0, y = 0, left = 0, top = 0;
  if (gdk_event_get_position(event, &x, &y) && std::isfinite(x))
    self->pointer_ = {x, y};
  else
    x = self->pointer_.x, y = self->pointer_.y;  // a wheel says nothing of it
  gtk_native_get_surface_transform(GTK_NATIVE(window), &left, &top);
  const graphene_point_t there =
      GRAPHENE_POINT_INIT(static_cast<float>(x - left), static_cast<float>(y - top));
  graphene_point_t here;
  if (!gtk_widget_compute_point(window, content, &there, &here)) return FALSE;
  const CGPoint point{here.x, here.y};
  const bool isOnScreen = gtk_widget_contains(content, here.x, here.y);
  switch (gdk_event_get_event_type(event)) {
    case GDK_BUTTON_PRESS:
    case GDK_TOUCH_BEGIN:
      if (isOnScreen) self->pressed(point);
      break;
    case GDK_BUTTON_RELEASE:
    case GDK_TOUCH_END:
      self->released(point);
      break;
    case GDK_SCROLL:
      if (isOnScreen) self->scrolled(event, point);
      break;
    case GDK_KEY_PRESS:
      self->typed(gdk_key_event_get_keyval(event));
      break;
    default:
      break;
  }
  return FALSE;
}

void Recorder::pressed(CGPoint point) {
  pressedAt_ = point;
  pressedSince_ = g_get_monotonic_time();
}

void Recorder::released(CGPoint point) {
  if (pressedSince_ == 0) return;
  const auto time = g_get_monotonic_time() - pressedSince_;
  pressedSince_ = 0;
  if (std::hypot(point.x - pressedAt_.x, point.y - pressedAt_.y) >= leastSwipe)
    return write("swipe " + textOf(pressedAt_) + " " + textOf(point));
  if (time < leastPress) return write("tap " + textOf(pressedAt_));
  write("long-press " + textOf(pressedAt_) + " " + std::to_string(time / 1000));
}

// One click of a wheel may come as two events of one time.
void Recorder::scrolled(GdkEvent* event, CGPoint point) {
  const auto direction = gdk_scroll_event_get_direction(event);
  const auto time = gdk_event_get_time(event);
  if (time == lastScroll_ || (direction != GDK_SCROLL_UP && direction != GDK_SCROLL_DOWN)) return;
  lastScroll_ = time;
  write("scroll " + textOf(point) + (direction == GDK_SCROLL_UP ? " -1" : " 1"));
}

void Recorder::typed(guint key) {
  const gunichar character = gdk_keyval_to_unicode(key);
  if (!g_unichar_isprint(character)) return;
  char bytes[6];
  text_.append(bytes, static_cast<size_t>(g_unichar_to_utf8(character, bytes)));
}

void Recorder::endText() {
  if (text_.empty()) return;
  file_ << "type " << text_ << "\n" << std::flush;
  text_.clear();
}

// A tap is followed by the release that the step makes itself, so the time between is rounded to what matters.
void Recorder::write(const std::string& step) {
  endText();
  const auto now = g_get_monotonic_time();
  if (const auto time = (now - lastStep_) / shortestWait * shortestWait; time > 0)
    file_ << "wait " << time / 1000 << "\n";
  lastStep_ = now;
  file_ << step << "\n" << std::flush;
}

}  // namespace velto::preview
