// Frame, cover, switches of the web view.
#include "preview/Device.h"

#include <velto/gtk/GtkVersions.h>

#include <utility>

#include "preview/Screen.h"

namespace velto::preview {
namespace {

constexpr int edge = 12, upperEdge = 30;  // of the drawn device, points

constexpr char look[] = R"(
window.velto-device { background: #16161a linear-gradient(#3a3a40, #3a3a40) no-repeat center 12px / 64px 6px;
  background-origin: border-box; background-clip: border-box; border: 12px solid transparent; border-top-width: 30px;
  border-radius: 26px; }
window.velto-device > overlay { background: @theme_base_color; }
.velto-cover { background: #6b6b71; color: white; }
.velto-small-device { background: @theme_base_color; border: 5px solid #16161a; border-top-width: 11px;
  border-radius: 11px; box-shadow: 0 0 0 1px alpha(currentColor,.25); }
.velto-event { padding: 1px 8px; }
.velto-event .time { opacity: .6; font-size: smaller; font-family: monospace; }
.velto-event .kind { font-weight: bold; font-size: smaller; opacity: .8; }
.velto-event.error .kind, .velto-event.error .what { color: mix(@error_color, @theme_fg_color, .35); }
.velto-event.warning .kind, .velto-event.warning .what { color: mix(@warning_color, @theme_fg_color, .35); }
.velto-tools button { padding: 2px 8px; }
)";

GtkWidget* webViewIn(GtkWidget* tree) {
  if (WEBKIT_IS_WEB_VIEW(tree) && gtk_widget_get_mapped(tree)) return tree;
  GtkWidget* found = nullptr;
  for (auto* child = gtk_widget_get_last_child(tree); child && !found;
       child = gtk_widget_get_prev_sibling(child))
    found = webViewIn(child);
  return found;
}

// By what is drawn around the screen the device can be moved.
void pressed(GtkGestureClick* press, int, double x, double y, GtkWindow* window) noexcept {
  GtkWidget* content = gtk_window_get_child(window);
  const graphene_point_t place = {static_cast<float>(x), static_cast<float>(y)};
  graphene_point_t inContent;
  if (!content || !gtk_widget_compute_point(GTK_WIDGET(window), content, &place, &inContent) ||
      gtk_widget_contains(content, inContent.x, inContent.y))
    return;
  double left = 0, top = 0;
  gtk_native_get_surface_transform(GTK_NATIVE(window), &left, &top);
  auto* controller = GTK_EVENT_CONTROLLER(press);
  gdk_toplevel_begin_move(GDK_TOPLEVEL(gtk_native_get_surface(GTK_NATIVE(window))),
                          gtk_event_controller_get_current_event_device(controller),
                          static_cast<int>(gtk_gesture_single_get_current_button(GTK_GESTURE_SINGLE(press))),
                          x + left, y + top, gtk_event_controller_get_current_event_time(controller));
}

}  // namespace

void loadLook(GdkDisplay* display) {
  static bool isLoaded = false;
  if (std::exchange(isLoaded, true)) return;
  GtkCssProvider* provider = gtk_css_provider_new();
  gtk::loadStyle(provider, look);
  gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(provider),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(provider);
}

void drawDevice(GtkWindow* window, CGSize screen) {
  loadLook(gtk_widget_get_display(GTK_WIDGET(window)));
  gtk_widget_add_css_class(GTK_WIDGET(window), "velto-device");
  gtk_window_set_decorated(window, FALSE);
  auto* press = gtk_gesture_click_new();
  g_signal_connect(press, "pressed", G_CALLBACK(pressed), window);
  gtk_widget_add_controller(GTK_WIDGET(window), GTK_EVENT_CONTROLLER(press));
  gtk_window_set_default_size(window, static_cast<int>(screen.width) + 2 * edge,
                              static_cast<int>(screen.height) + edge + upperEdge);
}

// By a proxy that is not there.
void setOffline(WebKitWebView* view, bool offline) {
  auto* session = webkit_web_view_get_network_session(view);
  if (!offline)
    return webkit_network_session_set_proxy_settings(session, WEBKIT_NETWORK_PROXY_MODE_DEFAULT, nullptr);
  auto* nowhere = webkit_network_proxy_settings_new("http://127.0.0.1:1", nullptr);
  webkit_network_session_set_proxy_settings(session, WEBKIT_NETWORK_PROXY_MODE_CUSTOM, nowhere);
  webkit_network_proxy_settings_free(nowhere);
}

GtkWidget* Device::page() const {
  return screen_.isOpen() ? webViewIn(screen_.content()) : nullptr;
}

// Over the lower half of the ad as it stands now; it is a part of the window like any other, so what is measured of the ad
// is true.
void Device::setCovered(bool covered) {
  if (cover_) gtk_overlay_remove_overlay(GTK_OVERLAY(screen_.content()), cover_);
  cover_ = nullptr;
  const auto frame = covered ? screen_.frame() : std::nullopt;
  if (!frame) return;
  cover_ = gtk_label_new("covered");
  gtk_widget_add_css_class(cover_, "velto-cover");
  gtk_widget_set_halign(cover_, GTK_ALIGN_START);
  gtk_widget_set_valign(cover_, GTK_ALIGN_START);
  gtk_widget_set_margin_start(cover_, static_cast<int>(frame->origin.x));
  gtk_widget_set_margin_top(cover_, static_cast<int>(frame->origin.y + frame->size.height / 2));
  gtk_widget_set_size_request(cover_, static_cast<int>(frame->size.width),
                              static_cast<int>(frame->size.height / 2));
  gtk_overlay_add_overlay(GTK_OVERLAY(screen_.content()), cover_);
}

void Device::setMuted(bool muted) {
  muted_ = muted;
  screen_.setVolume(muted ? 0 : 1);
  renew();
}

void Device::renewVolume() {
  if (muted_) screen_.setVolume(0);
}

void Device::setOffline(bool offline) {
  offline_ = offline;
  renew();
}

void Device::renew() {
  auto* view = page();
  if (!view) return;
  webkit_web_view_set_is_muted(WEBKIT_WEB_VIEW(view), muted_);
  preview::setOffline(WEBKIT_WEB_VIEW(view), offline_);
}

bool Device::showWebInspector() {
  auto* view = page();
  if (!view) return false;
  webkit_settings_set_enable_developer_extras(webkit_web_view_get_settings(WEBKIT_WEB_VIEW(view)), TRUE);
  webkit_web_inspector_show(webkit_web_view_get_inspector(WEBKIT_WEB_VIEW(view)));
  return true;
}

}  // namespace velto::preview
