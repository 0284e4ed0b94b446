// Guards: settings, and a "no" to whatever a page asks of a person.
#include "velto/gtk/web/WebGuards.h"

#include "velto/platform/foundation/GMemory.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velto::gtk {
namespace {

// What of the web's interfaces is of no use to an advertisement, but for learning about a person, or for staying when it is
// gone. Names resolved ahead are resolved by the engine, outside the gate.
void turnOff(WebKitSettings* settings) {
#if WEBKIT_CHECK_VERSION(2, 42, 0)
  constexpr std::array<std::string_view, 9> unwanted{"AsyncClipboardAPI", "Gamepads",       "GeolocationAPI",
                                                     "LinkDNSPrefetch",   "Notifications",  "PointerLock",
                                                     "ScreenWakeLockAPI", "ServiceWorkers", "SharedWorker"};
  static const GOwned<WebKitFeatureList, webkit_feature_list_unref> all(webkit_settings_get_all_features());
  for (gsize i = 0; i < webkit_feature_list_get_length(all.get()); ++i) {
    auto* feature = webkit_feature_list_get(all.get(), i);
    if (std::find(unwanted.begin(), unwanted.end(), webkit_feature_get_identifier(feature)) != unwanted.end())
      webkit_settings_set_feature_enabled(settings, feature, FALSE);
  }
#else
  static_cast<void>(settings);
#endif
}

// Whoever answers TRUE has dealt with the matter, so the engine does nothing of its own.
gboolean refuseMenu(WebKitWebView*, WebKitContextMenu*, WebKitHitTestResult*) noexcept {
  return TRUE;
}
gboolean refusePrint(WebKitWebView*, WebKitPrintOperation*) noexcept {
  return TRUE;
}
gboolean refuseFullscreen(WebKitWebView*) noexcept {
  return TRUE;
}
gboolean refuseNotification(WebKitWebView*, WebKitNotification*) noexcept {
  return TRUE;
}

gboolean refusePermission(WebKitWebView*, WebKitPermissionRequest* request) noexcept {
  webkit_permission_request_deny(request);
  return TRUE;
}

gboolean refuseFileChooser(WebKitWebView*, WebKitFileChooserRequest* request) noexcept {
  webkit_file_chooser_request_cancel(request);
  return TRUE;
}

gboolean refuseColorChooser(WebKitWebView*, WebKitColorChooserRequest* request) noexcept {
  webkit_color_chooser_request_cancel(request);
  return TRUE;
}

gboolean refuseSignIn(WebKitWebView*, WebKitAuthenticationRequest* request) noexcept {
  webkit_authentication_request_cancel(request);
  return TRUE;
}

// The page goes on as if the dialog had been closed at once: an alert() must not block the application.
gboolean dismissDialog(WebKitWebView*, WebKitScriptDialog* dialog) noexcept {
  if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM)
    webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);  // leaving is not the page's to prevent
  return TRUE;
}

}  // namespace

GPtr<WebKitSettings> guardedSettings() {
  auto settings = GPtr<WebKitSettings>::adopt(webkit_settings_new());
  g_object_set(settings.get(),                                      //
               "javascript-can-open-windows-automatically", FALSE,  //
               "allow-file-access-from-file-urls", FALSE,           //
               "allow-universal-access-from-file-urls", FALSE,      //
               "allow-modal-dialogs", FALSE,                        //
               "enable-developer-extras", FALSE,                    //
               "enable-back-forward-navigation-gestures", FALSE,    //
               "enable-fullscreen", FALSE,                          //
               "enable-media-stream", FALSE,                        //
               "enable-webrtc", FALSE,                              // connections past the gate
               "enable-page-cache", FALSE,                          // an ad is never returned to
               nullptr);
  turnOff(settings);
  return settings;
}

void guardWebView(WebKitWebView* view) {
  g_signal_connect(view, "context-menu", G_CALLBACK(refuseMenu), nullptr);
  g_signal_connect(view, "print", G_CALLBACK(refusePrint), nullptr);
  g_signal_connect(view, "enter-fullscreen", G_CALLBACK(refuseFullscreen), nullptr);
  g_signal_connect(view, "show-notification", G_CALLBACK(refuseNotification), nullptr);
  g_signal_connect(view, "permission-request", G_CALLBACK(refusePermission), nullptr);
  g_signal_connect(view, "run-file-chooser", G_CALLBACK(refuseFileChooser), nullptr);
  g_signal_connect(view, "run-color-chooser", G_CALLBACK(refuseColorChooser), nullptr);
  g_signal_connect(view, "authenticate", G_CALLBACK(refuseSignIn), nullptr);
  g_signal_connect(view, "script-dialog", G_CALLBACK(dismissDialog), nullptr);
}

}  // namespace velto::gtk
