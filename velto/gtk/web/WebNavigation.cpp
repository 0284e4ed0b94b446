// Navigations: kinds and addresses.
#include "velto/gtk/web/WebNavigation.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <type_traits>

namespace velto::gtk {
namespace {

WKNavigationType typeOf(WebKitNavigationAction* action) {
  switch (webkit_navigation_action_get_navigation_type(action)) {
    case WEBKIT_NAVIGATION_TYPE_LINK_CLICKED: {
      // A script's click() comes without button, even while it may use a person's gesture.
      const bool clicked = webkit_navigation_action_is_user_gesture(action) &&
                           webkit_navigation_action_get_mouse_button(action) == GDK_BUTTON_PRIMARY;
      return clicked ? WKNavigationType::LinkActivated : WKNavigationType::Other;
    }
    case WEBKIT_NAVIGATION_TYPE_FORM_SUBMITTED:
      return WKNavigationType::FormSubmitted;
    case WEBKIT_NAVIGATION_TYPE_BACK_FORWARD:
      return WKNavigationType::BackForward;
    case WEBKIT_NAVIGATION_TYPE_RELOAD:
      return WKNavigationType::Reload;
    case WEBKIT_NAVIGATION_TYPE_FORM_RESUBMITTED:
      return WKNavigationType::FormResubmitted;
    default:
      return WKNavigationType::Other;
  }
}

std::string schemeOf(const std::string& address) {
  const auto end = address.find(':');
  std::string scheme = address.substr(0, end == std::string::npos ? 0 : end);
  std::transform(scheme.begin(), scheme.end(), scheme.begin(), g_ascii_tolower);
  return scheme;
}

}  // namespace

// The engine lets characters stand in addresses of schemes it does not know (braces in a command's arguments,
// a lone percent sign); the command must not be lost for that.
std::optional<NSURL> urlFrom(const std::string& address) {
  return NSURL::URLByEscaping(address);
}

std::string addressOf(WebKitNavigationAction* action) {
  const char* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  return address ? address : "";
}

WKNavigationAction navigationAction(WebKitNavigationAction* action) {
  return {urlFrom(addressOf(action)), typeOf(action)};
}

bool isLoadable(const std::string& address) {
  constexpr std::array<std::string_view, 5> schemes = {"http", "https", "about", "data", "blob"};
  return std::find(schemes.begin(), schemes.end(), schemeOf(address)) != schemes.end();
}

bool isFile(const std::string& address) {
  return schemeOf(address) == "file";
}

void allowLater(WebKitPolicyDecision* decision, WebKitWebsitePolicies* policies,
                const std::weak_ptr<WKWebView>& page) {
  const auto held = [](auto* object) {
    return std::shared_ptr<std::remove_pointer_t<decltype(object)>>(
        static_cast<decltype(object)>(g_object_ref(object)), g_object_unref);
  };
  Platform::current().mainQueue().post([decision = held(decision), policies = held(policies), page] {
    if (page.expired())
      webkit_policy_decision_ignore(decision.get());
    else
      webkit_policy_decision_use_with_policies(decision.get(), policies.get());
  });
}

}  // namespace velto::gtk
