// The host application's desk: GAppInfo for URLs, settings for the interface.
#include "velto/gtk/services/Application.h"

#include "velto/gtk/GtkPlatform.h"
#include "velto/gtk/Translations.h"
#include "velto/gtk/views/ViewWidget.h"
#include "velto/platform/foundation/Text.h"

#include <gtk/gtk.h>

namespace velto::gtk {
namespace {

constexpr char accessibilitySchema[] = "org.gnome.desktop.a11y.interface";
constexpr char highContrastKey[] = "high-contrast";
constexpr size_t mostSchemesKept = 256;  // pages may ask for any

bool hasHandler(const std::string& scheme) {
  return static_cast<bool>(GPtr<GAppInfo>::adopt(g_app_info_get_default_for_uri_scheme(scheme.c_str())));
}

// The scheme under which a URL may go to other applications, or nothing.
std::optional<std::string> openableScheme(const NSURL& url) {
  auto scheme = url.scheme();
  if (!scheme || scheme->empty()) return std::nullopt;
  scheme = lowercased(*scheme);
  return *scheme == "file" ? std::nullopt : scheme;
}

GPtr<GAppLaunchContext> launchContext() {
  if (!gtk_is_initialized() || !gdk_display_get_default()) return {};
  return GPtr<GAppLaunchContext>::adopt(
      G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(gdk_display_get_default())));
}

struct Opening {
  std::weak_ptr<int> asker;
  std::function<void(bool)> completion;
};

void onOpened(GObject*, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Opening> opening(static_cast<Opening*>(data));
  const bool opened = g_app_info_launch_default_for_uri_finish(result, nullptr);
  if (!opening->asker.expired() && opening->completion) opening->completion(opened);
}

GPtr<GSettings> accessibilitySettings() {
  auto* source = g_settings_schema_source_get_default();
  if (!source) return {};
  const GOwned<GSettingsSchema, g_settings_schema_unref> schema(
      g_settings_schema_source_lookup(source, accessibilitySchema, TRUE));
  if (!schema || !g_settings_schema_has_key(schema.get(), highContrastKey)) return {};
  return GPtr<GSettings>::adopt(g_settings_new(accessibilitySchema));
}

bool hasHighContrastTheme() {
  auto* settings = gtk_is_initialized() ? gtk_settings_get_default() : nullptr;
  if (!settings) return false;
  char* theme = nullptr;
  g_object_get(settings, "gtk-theme-name", &theme, nullptr);
  const GText owner(theme);
  return theme && g_str_has_prefix(theme, "HighContrast");
}

}  // namespace

Application::Application(MainQueue& mainQueue, bool opensOnlyAfterTouch,
                         std::chrono::milliseconds leastTimeUnderTouch,
                         std::function<void(const std::string&)> refused)
    : mainQueue_(mainQueue),
      touchGuard_(opensOnlyAfterTouch, leastTimeUnderTouch),
      refused_(std::move(refused)),
      monitor_(GPtr<GAppInfoMonitor>::adopt(g_app_info_monitor_get())),
      applicationsChanged_(monitor_.get(), "changed", G_CALLBACK(onApplicationsChanged), this) {}

void Application::onApplicationsChanged(GAppInfoMonitor*, gpointer application) noexcept {
  auto& self = *static_cast<Application*>(application);
  self.openable_.clear();
  self.portal_.forget();
}

void Application::setLocked(bool locked, NSNotificationCenter& center) {
  locked_ = locked;
  center.postNotification({locked ? UIApplicationProtectedDataWillBecomeUnavailable
                                  : UIApplicationProtectedDataDidBecomeAvailable,
                           {}});
}

bool Application::canOpenURL(const NSURL& url) const {
  const auto scheme = openableScheme(url);
  if (!scheme) return false;
  auto known = openable_.find(*scheme);
  if (known == openable_.end()) {
    if (openable_.size() >= mostSchemesKept) openable_.clear();
    known = openable_.emplace(*scheme, hasHandler(*scheme)).first;
  }
  return known->second || (isSandboxed() && portal_.supports(*scheme));
}

void Application::openURL(const NSURL& url, const std::map<std::string, std::string>&,
                          std::function<void(bool)> completion) {
  const bool refused = !touchGuard_.mayOpen();
  if (refused && refused_) refused_(url.absoluteString());
  if (refused || !openableScheme(url)) {
    if (completion) mainQueue_.post([completion = std::move(completion)] { completion(false); });
    return;
  }
  auto opening = std::make_unique<Opening>(Opening{alive_, std::move(completion)});
  g_app_info_launch_default_for_uri_async(url.absoluteString().c_str(), launchContext(), nullptr, onOpened,
                                          opening.release());
}

std::string Application::translated(const std::string& text) const {
  return gtk::translated(text.c_str());
}

void Application::attemptRotationToDeviceOrientation() {
  if (auto* platform = GtkPlatform::installed()) platform->rotation().attempt(platform->device().wanted());
}

bool Application::isReduceTransparencyEnabled() const {
  if (hasHighContrastTheme()) return true;
  if (!accessibility_) accessibility_ = accessibilitySettings();
  return accessibility_ && g_settings_get_boolean(accessibility_, highContrastKey);
}

double Application::textScale() const {
  return gtk_is_initialized() ? gtk::textScale() : 1;
}

bool Application::isReduceMotionEnabled() const {
  gboolean animates = TRUE;
  if (auto* settings = gtk_is_initialized() ? gtk_settings_get_default() : nullptr)
    g_object_get(settings, "gtk-enable-animations", &animates, nullptr);
  return !animates;
}

}  // namespace velto::gtk
