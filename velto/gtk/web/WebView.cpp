// The web view: loads, navigation decisions and load events.
#include "velto/gtk/web/WebView.h"

#include "velto/gtk/GtkPlatform.h"
#include "velto/gtk/web/PageUse.h"
#include "velto/gtk/web/WebGuards.h"
#include "velto/gtk/web/WebNavigation.h"
#include "velto/platform/ui/WKWebView.h"

#include <algorithm>
#include <sstream>

namespace velto::gtk {
namespace {

constexpr char emptyAddress[] = "about:blank";  // what a document without base has

// What a page's scripts send commands with: an address as a message, which keeps its place among others and
// needs no leave of the page's content security policy.
constexpr char messageHandler[] = "veltoNavigation";
constexpr char messageSignal[] = "script-message-received::veltoNavigation";

// Only the page as a whole stands still: its own scrolling boxes go on, and so do its scripts' scrollTo().
constexpr char noScrollingStyle[] = ":root { overflow: hidden !important; }";

// An address as the engine will ask about it: lower case, dots resolved.
std::string engineSpelling(const std::string& address) {
  const auto request = GPtr<WebKitURIRequest>::adopt(webkit_uri_request_new(address.c_str()));
  const char* spelling = webkit_uri_request_get_uri(request);
  return spelling ? spelling : address;
}

// The engine keeps a text view among its children for its key bindings, where the focus would end up that
// leaves the page.
void keepFocusOutOfHelpers(GtkWidget* view) {
  for (auto* child = gtk_widget_get_first_child(view); child; child = gtk_widget_get_next_sibling(child))
    if (GTK_IS_TEXT_VIEW(child)) gtk_widget_set_can_focus(child, FALSE);
}

NSErrorCause causeOf(WebKitWebProcessTerminationReason reason, const WebProcess& process) {
  if (process.isHung()) return NSErrorCause::ProcessHung;
  if (reason == WEBKIT_WEB_PROCESS_CRASHED) return NSErrorCause::ProcessCrashed;
  return reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT ? NSErrorCause::ProcessOutOfMemory
                                                            : NSErrorCause::ProcessEnded;
}

// Ends of loads that are none: another load took over, or the library itself said no to a navigation.
bool isNoFailure(const GError& error) {
  return g_error_matches(&error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
         g_error_matches(&error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_CANNOT_SHOW_URI) ||
         g_error_matches(&error, WEBKIT_POLICY_ERROR,
                         WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
}

}  // namespace

WebView::WebView(Engine engine, const WKWebViewConfiguration& configuration)
    : engine_(std::move(engine)),
      scripts_(std::make_shared<PageScripts>(engine_.view)),
      wheel_(engine_.view, widget()),
      touch_(engine_.view, [this] { lastTouch_ = touchBefore_; }),
      focus_(engine_.view),
      sight_(engine_.view, widget()),
      place_(GTK_WIDGET(engine_.view.get())),
      cost_(engine_.view),
      commands_(std::make_shared<CommandQueue>(
          [this](const CommandQueue::Command& next) { ask(next.action, next.mayOpen); })),
      flood_([this] { endFlood(); }) {
  auto* view = engine_.view.get();
  guardWebView(view);
  addPageUseScript(webkit_web_view_get_user_content_manager(view));
  configure(configuration);
  auto* manager = webkit_web_view_get_user_content_manager(view);
  g_signal_connect(manager, messageSignal, G_CALLBACK(messageReceived), this);
  g_signal_connect_swapped(manager, "script-message-received", G_CALLBACK(said), this);
  webkit_user_content_manager_register_script_message_handler(manager, messageHandler, nullptr);
  // On the engine's own widget: what lies above it, such as a close button, is not the page.
  touches_ = gtk_event_controller_legacy_new();
  gtk_event_controller_set_propagation_phase(touches_, GTK_PHASE_CAPTURE);
  g_signal_connect(touches_, "event", G_CALLBACK(touched), this);
  gtk_widget_add_controller(GTK_WIDGET(view), touches_);
  g_signal_connect(view, "decide-policy", G_CALLBACK(decidePolicy), this);
  g_signal_connect(view, "create", G_CALLBACK(createView), this);
  g_signal_connect_swapped(view, "notify::uri", G_CALLBACK(said), this);
  g_signal_connect(view, "load-changed", G_CALLBACK(loadChanged), this);
  g_signal_connect(view, "load-failed", G_CALLBACK(loadFailed), this);
  g_signal_connect(view, "load-failed-with-tls-errors", G_CALLBACK(loadFailedWithTLSErrors), this);
  g_signal_connect(view, "web-process-terminated", G_CALLBACK(processTerminated), this);
  g_signal_connect(view, "notify::is-web-process-responsive", G_CALLBACK(responsivenessChanged), this);
  gtk_widget_set_parent(GTK_WIDGET(view), widget());
  keepFocusOutOfHelpers(GTK_WIDGET(view));
  if (!engine_.warm) processStart_ = g_idle_add_full(G_PRIORITY_LOW, waitsForPage, this, nullptr);
}

WebView::~WebView() {
  waitNoMore();
  commands_->close();
  auto* manager = webkit_web_view_get_user_content_manager(engine_.view);
  webkit_user_content_manager_unregister_script_message_handler(manager, messageHandler, nullptr);
  g_signal_handlers_disconnect_by_data(manager, this);
  g_signal_handlers_disconnect_by_data(touches_, this);
  gtk_widget_remove_controller(GTK_WIDGET(engine_.view.get()), touches_);
  g_signal_handlers_disconnect_by_data(engine_.view, this);
  if (gtk_widget_get_parent(GTK_WIDGET(engine_.view.get())))
    gtk_widget_unparent(GTK_WIDGET(engine_.view.get()));
}

// The engine has nothing like data detectors (links in plain text stay text), and plays to no other device.
void WebView::configure(const WKWebViewConfiguration& configuration) {
  const bool playsByItself = configuration.mediaTypesRequiringUserActionForPlayback == 0 ||
                             !configuration.requiresUserActionForMediaPlayback;
  auto* settings = webkit_web_view_get_settings(engine_.view);
  webkit_settings_set_media_playback_requires_user_gesture(settings, !playsByItself);
  webkit_settings_set_media_playback_allows_inline(settings, configuration.allowsInlineMediaPlayback);
  policies_ = GPtr<WebKitWebsitePolicies>::adopt(webkit_website_policies_new_with_policies(
      "autoplay", playsByItself ? WEBKIT_AUTOPLAY_ALLOW : WEBKIT_AUTOPLAY_DENY, nullptr));
  for (const auto& script : configuration.userContentController.userScripts) addUserScript(script);
  const GdkRGBA clear = {0, 0, 0, 0};  // the view's own background is the widget's to paint
  webkit_web_view_set_background_color(engine_.view, &clear);
}

void WebView::addUserScript(const WKUserScript& script) {
  // No list of allowed addresses: one of http and https would leave the document without base out.
  const GOwned<WebKitUserScript, webkit_user_script_unref> made(webkit_user_script_new(
      script.source.c_str(),
      script.forMainFrameOnly ? WEBKIT_USER_CONTENT_INJECT_TOP_FRAME : WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
      script.injectionTime == WKUserScriptInjectionTime::AtDocumentStart
          ? WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START
          : WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_END,
      nullptr, nullptr));
  webkit_user_content_manager_add_script(webkit_web_view_get_user_content_manager(engine_.view), made.get());
}

bool WebView::canShareProcess(const std::string& site) const {
  const bool isAlone = engine_.process.use_count() == 1;
  const bool isOfSite = !site.empty() && engine_.process->site() == site;
  return load_ != Load::None && engine_.process->hasRoom() && (isAlone || isOfSite) &&
         webkit_web_view_get_is_web_process_responsive(engine_.view);
}

std::shared_ptr<WKWebView> WebView::owner() const {
  return std::static_pointer_cast<WKWebView>(owner_->shared_from_this());
}

void WebView::evaluateJavaScript(const std::string& script, PageScripts::Completion completion) {
  scripts_->run(script, std::move(completion));
}

void WebView::setScrollBehavior(const ScrollBehavior& behavior) {
  wheel_.setPageScrolls(behavior.scrollEnabled);
  touch_.setPageScrolls(behavior.scrollEnabled);
  if (behavior.scrollEnabled == !noScrolling_) return;
  auto* manager = webkit_web_view_get_user_content_manager(engine_.view);
  if (behavior.scrollEnabled) {
    webkit_user_content_manager_remove_style_sheet(manager, noScrolling_.get());
    noScrolling_.reset();
  } else {
    noScrolling_.reset(webkit_user_style_sheet_new(noScrollingStyle, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                                   WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr));
    webkit_user_content_manager_add_style_sheet(manager, noScrolling_.get());
  }
}

// An ad that is shown later has its process by then.
gboolean WebView::waitsForPage(gpointer self) noexcept {
  auto& view = *static_cast<WebView*>(self);
  view.processStart_ = 0;
  view.engine_.startProcess();
  return G_SOURCE_REMOVE;
}

void WebView::waitNoMore() {
  if (processStart_) g_source_remove(std::exchange(processStart_, 0));
}

// --- loading -------------------------------------------------------------------------------------------

void WebView::loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) {
  const std::string base = baseURL && !isFile(baseURL->absoluteString()) ? baseURL->absoluteString() : "";
  if (engine_.process->hasEnded()) {
    engine_.process = engine_.process->next();
    engine_.process->add(engine_.view);
  }
  engine_.process->adLoaded();
  scripts_->flush();  // to the page that goes
  waitNoMore();
  cost_.loadBegins();
  load_ = Load::Requested;
  ownNavigations_.push_back(base.empty() ? emptyAddress : engineSpelling(base));
  // By bytes with their length: markup may hold a zero, and may be large. No bytes at all the engine refuses.
  const std::string_view markup = html.empty() ? "\n" : std::string_view(html);
  const GOwned<GBytes, g_bytes_unref> bytes(g_bytes_new(markup.data(), markup.size()));
  engine_.process->startIn([&] {
    webkit_web_view_load_bytes(engine_.view, bytes.get(), "text/html", "UTF-8",
                               base.empty() ? nullptr : base.c_str());
  });
  engine_.related = {};  // its process is shared from here on
}

void WebView::loadChanged(WebKitWebView*, WebKitLoadEvent event, WebView* self) noexcept {
  const auto view = self->owner();  // completions and delegates may remove it
  switch (event) {
    case WEBKIT_LOAD_STARTED:
      self->load_ = Load::Started;
      break;
    case WEBKIT_LOAD_COMMITTED:
      self->commands_->clear();
      self->flood_.begin();
      self->scripts_->documentChanged();
      self->wheel_.documentChanged();
      self->sight_.dropPicture();
      self->engine_.process->pageArrived();
      self->cost_.pageArrived();
      break;
    case WEBKIT_LOAD_FINISHED:
      if (self->load_ != Load::Started) break;  // of a load that failed or was overtaken
      self->load_ = Load::Ended;
      keepFocusOutOfHelpers(GTK_WIDGET(self->engine_.view.get()));
      view->peerDidFinishNavigation();
      break;
    default:
      break;
  }
}

gboolean WebView::loadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError* error,
                             WebView* self) noexcept {
  if (!isNoFailure(*error))
    self->fail(errorFrom(*error));
  else if (self->load_ == Load::Started)
    self->load_ = Load::Requested;
  return TRUE;  // no error page in the ad's place
}

gboolean WebView::loadFailedWithTLSErrors(WebKitWebView*, const char* address, GTlsCertificate*,
                                          GTlsCertificateFlags, WebView* self) noexcept {
  self->fail({g_quark_to_string(G_TLS_ERROR), G_TLS_ERROR_BAD_CERTIFICATE,
              std::string("The certificate cannot be trusted: ") + (address ? address : ""),
              NSErrorCause::Untrusted});
  return TRUE;
}

void WebView::responsivenessChanged(WebKitWebView* view, GParamSpec*, WebView* self) noexcept {
  if (!webkit_web_view_get_is_web_process_responsive(view)) self->engine_.process->fellSilent();
}

// The engine starts another process by itself for the next load.
void WebView::processTerminated(WebKitWebView*, WebKitWebProcessTerminationReason reason,
                                WebView* self) noexcept {
  const auto view = self->owner();
  self->engine_.process->ended();
  self->ownNavigations_.clear();
  self->scripts_->processEnded();
  if (self->load_ != Load::None)
    self->fail({"WebProcess", reason, "The web process ended", causeOf(reason, *self->engine_.process)});
}

// It cannot be asked to stop: it hears of nothing before its script is done.
void WebView::endFlood() {
  commands_->clear();
  webkit_web_view_terminate_web_process(engine_.view);
}

// Once for each load.
void WebView::fail(const NSError& error) {
  load_ = Load::Ended;
  owner()->peerDidFailNavigation(error);
}

// --- navigations ---------------------------------------------------------------------------------------

gboolean WebView::decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                               WebView* self) noexcept {
  self->flood_.hear();
  if (type != WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
    self->decideNavigation(decision, type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION);
    return TRUE;
  }
  // What the engine cannot show would become a download.
  if (webkit_response_policy_decision_is_mime_type_supported(WEBKIT_RESPONSE_POLICY_DECISION(decision)))
    webkit_policy_decision_use(decision);
  else
    webkit_policy_decision_ignore(decision);
  return TRUE;
}

void WebView::decideNavigation(WebKitPolicyDecision* decision, bool inNewWindow) {
  auto* described =
      webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const std::string address = addressOf(described);
  const WKNavigationAction action = navigationAction(described);
  const auto view = owner();
  if (!isFile(address) && !isLoadable(address)) {
    webkit_policy_decision_ignore(decision);
    return command(action);
  }
  const bool isOwn = isOwnNavigation(action, address);
  const bool allowed =
      isOwn || (!isFile(address) && ask(action, wasTouched()) == WKNavigationActionPolicy::Allow);
  const bool removed = view.use_count() == 1;  // by the delegate
  if (allowed && !inNewWindow && !removed) {
    // The page could have grown before it is heard of: its process is looked at without it.
    engine_.process->identify();
    if (isOwn && cost_.pageComes(*engine_.process)) return allowLater(decision, policies_, view);
    return webkit_policy_decision_use_with_policies(decision, policies_);
  }
  webkit_policy_decision_ignore(decision);
  // There is one window only: a person's link opens in it, a script's window not at all.
  if (allowed && !removed && action.navigationType == WKNavigationType::LinkActivated) {
    ownNavigations_.push_back(address);
    webkit_web_view_load_uri(engine_.view, address.c_str());
  }
}

// The engine asks about what the library itself told it to load as well, in that order.
bool WebView::isOwnNavigation(const WKNavigationAction& action, const std::string& address) {
  if (action.navigationType != WKNavigationType::Other) return false;
  const auto found = std::find(ownNavigations_.begin(), ownNavigations_.end(), address);
  if (found == ownNavigations_.end()) return false;
  ownNavigations_.erase(ownNavigations_.begin(), found + 1);
  return true;
}

// window.open() asks here only. The delegate hears of it, since it may be a command; a window there is never.
GtkWidget* WebView::createView(WebKitWebView*, WebKitNavigationAction* action, WebView* self) noexcept {
  self->flood_.hear();
  const std::string address = addressOf(action);
  const auto view = self->owner();
  const WKNavigationAction other{navigationAction(action).requestURL, WKNavigationType::Other};
  if (!isLoadable(address) && !isFile(address))
    self->command(other);
  else if (!isFile(address))
    self->ask(other, self->wasTouched());
  return nullptr;
}

// --- commands --------------------------------------------------------------------------------------------

// Addresses that no engine loads say something to the library, and nothing else comes of them.
void WebView::command(const WKNavigationAction& action) {
  const auto view = owner();
  commands_->add({action, wasTouched()});
}

void WebView::messageReceived(WebKitUserContentManager*, JSCValue* message, WebView* self) noexcept {
  const auto view = self->owner();
  const GText text(jsc_value_is_string(message) ? jsc_value_to_string(message) : nullptr);
  if (!text) return;
  std::istringstream lines(text.get());
  for (std::string address; std::getline(lines, address);)
    if (!isLoadable(address) && !isFile(address)) self->command({urlFrom(address), WKNavigationType::Other});
  self->scripts_->flush();  // the page waits for the answer
}

WKNavigationActionPolicy WebView::ask(const WKNavigationAction& action, bool mayOpen) {
  const auto view = owner();
  auto* platform = GtkPlatform::installed();
  if (!platform) return WKNavigationActionPolicy::Cancel;
  const TouchGuard::Acting acting(platform->application().touchGuard(), mayOpen);
  return view->peerDecidePolicy(action);
}

gboolean WebView::touched(GtkEventController*, GdkEvent* event, WebView* self) noexcept {
  switch (gdk_event_get_event_type(event)) {
    case GDK_TOUCH_BEGIN:
      self->touchBefore_ = self->lastTouch_;
      [[fallthrough]];
    case GDK_BUTTON_PRESS:
      self->isMeant_ = self->isMeant(event);
      break;
    case GDK_KEY_PRESS:
      self->isMeant_ = true;
      break;
    case GDK_BUTTON_RELEASE:
    case GDK_TOUCH_END:
      break;
    default:
      return FALSE;
  }
  if (self->isMeant_) self->lastTouch_ = g_get_monotonic_time();
  return FALSE;
}

bool WebView::isMeant(GdkEvent* touch) const {
  auto* platform = GtkPlatform::installed();
  return platform && place_.held(touch, platform->application().touchGuard().leastTimeUnderTouch);
}

WebPageUse WebView::use() const {
  auto use = cost_.use(engine_.process);
  use.touched = lastTouch_.has_value();
  use.isShared = use.pages > 1 && !engine_.process->site().empty();
  use.hidden = sight_.isHidden() && (!use.isShared || engine_.process->areAllHidden());
  return use;
}

bool WebView::wasTouched() const {
  return lastTouch_ && std::chrono::microseconds(g_get_monotonic_time() - *lastTouch_) <= TouchGuard::lasts;
}

}  // namespace velto::gtk
