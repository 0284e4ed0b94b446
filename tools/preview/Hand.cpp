// Tapping by xdotool.
#include "preview/Hand.h"

#include "velto/gtk/views/ScreenPart.h"

#include "preview/Player.h"

namespace velto::preview {

std::string tapAt(GtkWidget* widget, CGPoint point) {
  GtkNative* native = gtk_widget_get_native(widget);
  const unsigned long number = gtk::x11WindowOf(widget);
  const graphene_point_t inWidget =
      GRAPHENE_POINT_INIT(static_cast<float>(point.x), static_cast<float>(point.y));
  graphene_point_t inWindow;
  if (!number || !gtk_widget_compute_point(widget, GTK_WIDGET(native), &inWidget, &inWindow))
    return "taps need a shown X11 window";
  double x = 0;
  double y = 0;
  gtk_native_get_surface_transform(native, &x, &y);
  const std::string window = std::to_string(number);
  const std::string column = std::to_string(static_cast<int>(x + inWindow.x));
  const std::string row = std::to_string(static_cast<int>(y + inWindow.y));

  GError* error = nullptr;
  GSubprocess* hand = g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, &error, "xdotool", "mousemove", "--window",
                                       window.c_str(), column.c_str(), row.c_str(), "click", "1", nullptr);
  if (!hand) {
    const std::string reason = error->message;
    g_error_free(error);
    return reason;
  }
  bool done = false;
  const auto ended = +[](GObject*, GAsyncResult*, gpointer flag) { *static_cast<bool*>(flag) = true; };
  g_subprocess_wait_async(hand, nullptr, ended, &done);
  while (!done) g_main_context_iteration(nullptr, TRUE);
  const bool succeeded = g_subprocess_get_successful(hand);
  g_object_unref(hand);
  if (!succeeded) return "xdotool failed";
  runFor(std::chrono::milliseconds(50));  // the page hears of it a little later
  return {};
}

}  // namespace velto::preview
