// Handlers and scripts.
#include "preview/PageEars.h"

#include <velto/gtk/web/WebView.h>

#include <set>

#include "preview/EarScripts.h"

namespace velto::preview {
namespace {

using Listener = std::weak_ptr<PageEars::Heard>;

constexpr char mark[] = "velto-preview-ears";
constexpr size_t longestMessage = 65'536;  // bytes: a page may call the handler of its own world itself

void heard(JSCValue* message, const Listener& listener, const std::set<std::string>& kinds) {
  const auto heard = listener.lock();
  const GText text(heard ? jsc_value_to_json(message, 0) : nullptr);
  const std::string_view json = text ? text.get() : "";
  auto read = json.size() <= longestMessage ? readJSONOfPage(std::string(json)) : std::nullopt;
  const auto* object = read ? read->object() : nullptr;
  if (!object || !object->count("kind") || !object->count("details")) return;
  const auto* kind = object->at("kind").string();
  const auto* details = object->at("details").object();
  if (kind && details && kinds.count(*kind)) (*heard)(*kind, *details);
}

void heardOwn(WebKitUserContentManager*, JSCValue* message, Listener* listener) noexcept {
  heard(message, *listener, {"script-error", "resource-error", "content-policy"});
}

void heardPage(WebKitUserContentManager*, JSCValue* message, Listener* listener) noexcept {
  heard(message, *listener, {"console", "script-error", "refused", "dialog"});
}

void listen(WebKitUserContentManager* manager, const char* name, const char* world, GCallback call,
            const Listener& listener) {
  const auto forget = +[](gpointer data, GClosure*) { delete static_cast<Listener*>(data); };
  const std::string signal = std::string("script-message-received::") + name;
  g_signal_connect_data(manager, signal.c_str(), call, new Listener(listener), forget, GConnectFlags{});
  webkit_user_content_manager_register_script_message_handler(manager, name, world);
}

void add(WebKitUserContentManager* manager, WebKitUserScript* script) {
  webkit_user_content_manager_add_script(manager, script);
  webkit_user_script_unref(script);
}

}  // namespace

void PageEars::listenTo(WKWebView& webView) const {
  const auto* peer = dynamic_cast<gtk::WebView*>(&webView.webPeer());
  if (!peer) return;
  auto* manager = webkit_web_view_get_user_content_manager(peer->engine().view);
  if (g_object_get_data(G_OBJECT(manager), mark)) return;
  g_object_set_data(G_OBJECT(manager), mark, manager);
  listen(manager, ownHandler, ownWorld, G_CALLBACK(heardOwn), heard_);
  listen(manager, pageHandler, nullptr, G_CALLBACK(heardPage), heard_);
  constexpr auto frames = WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES;
  constexpr auto start = WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
  for (const auto& script : first_)
    add(manager, webkit_user_script_new(script.c_str(), frames, start, nullptr, nullptr));
  add(manager, webkit_user_script_new_for_world(ownScript, frames, start, ownWorld, nullptr, nullptr));
  add(manager, webkit_user_script_new(pageScript, frames, start, nullptr, nullptr));
}

}  // namespace velto::preview
