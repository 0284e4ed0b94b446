// Signals of web resources.
#include "preview/Network.h"

#include <libsoup/soup.h>
#include <velto/core/VeltoUtilities.h>

#include <string_view>
#include <utility>

#include "preview/Player.h"
#include "preview/Story.h"

namespace velto::preview {
namespace {

constexpr size_t mostRequests = 5000;
constexpr size_t longestHeader = 2000;
constexpr std::chrono::milliseconds lastWait{1000};  // for what is under way at the end

JSON::Array headersOf(SoupMessageHeaders* headers) {
  JSON::Array list;
  if (!headers) return list;
  SoupMessageHeadersIter each;
  soup_message_headers_iter_init(&each, headers);
  const char* name = nullptr;
  const char* value = nullptr;
  while (soup_message_headers_iter_next(&each, &name, &value)) {
    char* valid = g_utf8_make_valid(
        value, static_cast<gssize>(std::min(std::string_view(value).size(), longestHeader)));
    list.emplace_back(JSON::Object{{"name", name}, {"value", valid}});
    g_free(valid);
  }
  return list;
}

}  // namespace

struct Network::Request {
  Request(Network* owner, WebKitWebResource* loaded) : network(owner), resource(loaded) {}

  Network* network;  // null once that has gone
  WebKitWebResource* resource;
  JSON::Object told;
  JSON::Array requestHeaders, responseHeaders;
  bool isWritten = false;
};

struct Network::Reply {
  std::shared_ptr<Request> request;
};

Network::Network(Journal& journal)
    : journal_(journal), views_(static_cast<GTypeClass*>(g_type_class_ref(WEBKIT_TYPE_WEB_VIEW))) {
  const auto hook = [&](const char* name, GSignalEmissionHook function) {
    return g_signal_add_emission_hook(g_signal_lookup(name, WEBKIT_TYPE_WEB_VIEW), 0, function, this,
                                      nullptr);
  };
  startHook_ = hook("resource-load-started", started);
  endHook_ = hook("web-process-terminated", ended);
}

Network::~Network() {
  g_signal_remove_emission_hook(g_signal_lookup("resource-load-started", WEBKIT_TYPE_WEB_VIEW), startHook_);
  g_signal_remove_emission_hook(g_signal_lookup("web-process-terminated", WEBKIT_TYPE_WEB_VIEW), endHook_);
  for (const auto& request : pending_) {
    g_signal_handlers_disconnect_by_data(request->resource, request.get());
    g_object_unref(request->resource);
    request->network = nullptr;
  }
  if (session_) g_object_unref(session_);
  g_type_class_unref(views_);
}

gboolean Network::started(GSignalInvocationHint*, guint, const GValue* values, gpointer self) noexcept {
  static_cast<Network*>(self)->begin(WEBKIT_WEB_VIEW(g_value_get_object(&values[0])),
                                     WEBKIT_WEB_RESOURCE(g_value_get_object(&values[1])),
                                     WEBKIT_URI_REQUEST(g_value_get_object(&values[2])));
  return TRUE;
}

gboolean Network::ended(GSignalInvocationHint*, guint, const GValue* values, gpointer self) noexcept {
  const auto reason = static_cast<WebKitWebProcessTerminationReason>(g_value_get_enum(&values[1]));
  if (reason == WEBKIT_WEB_PROCESS_TERMINATED_BY_API) return TRUE;  // the library lets go of it
  static_cast<Network*>(self)->journal_.add(
      "crashed", {{"reason", reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT ? "memory" : "crash"}});
  return TRUE;
}

void Network::begin(WebKitWebView* view, WebKitWebResource* resource, WebKitURIRequest* asked) {
  const char* address = webkit_web_resource_get_uri(resource);
  if (!address || !std::string_view(address).starts_with("http")) return;  // what the page brings along
  if (address == VeltoUtilities::omsdkVerificationScriptURL()) return;     // the library's own, of its films
  if (!session_) session_ = WEBKIT_NETWORK_SESSION(g_object_ref(webkit_web_view_get_network_session(view)));
  const char* method = webkit_uri_request_get_http_method(asked);
  auto request = std::make_shared<Request>(this, WEBKIT_WEB_RESOURCE(g_object_ref(resource)));
  request->told = {{"url", address},
                   {"method", method ? method : "GET"},
                   {"start", journal_.milliseconds()},
                   {"page", static_cast<int64_t>(webkit_web_view_get_page_id(view))}};
  request->requestHeaders = headersOf(webkit_uri_request_get_http_headers(asked));
  g_signal_connect(resource, "failed", G_CALLBACK(failed), request.get());
  g_signal_connect(resource, "sent-request", G_CALLBACK(redirected), request.get());
  g_signal_connect(resource, "finished", G_CALLBACK(finished), request.get());
  pending_.push_back(std::move(request));
}

// Sent once more for each redirection, with the answer that asked for it.
void Network::redirected(WebKitWebResource*, WebKitURIRequest* sent, WebKitURIResponse* response,
                         Request* request) noexcept {
  if (!response) return;
  auto passed = listIn(request->told, "redirectedFrom");
  passed.push_back(request->told["url"]);
  request->told["redirectedFrom"] = std::move(passed);
  request->told["url"] = webkit_uri_request_get_uri(sent);
}

void Network::failed(WebKitWebResource*, GError* error, Request* request) noexcept {
  request->told["error"] = error->message;
}

// An answer in chunks does not tell its length: its bytes are counted.
void Network::finished(WebKitWebResource* resource, Request* request) noexcept {
  g_signal_handlers_disconnect_by_data(resource, request);
  auto& pending = request->network->pending_;
  std::shared_ptr<Request> held;
  for (const auto& one : pending)
    if (one.get() == request) held = one;
  request->network->take(*request);
  if (request->told.contains("bytes") || request->told.contains("error"))
    request->network->write(*request);
  else
    webkit_web_resource_get_data(resource, nullptr, measured, new Reply{held});
}

void Network::take(Request& request) {
  request.told["duration"] = journal_.milliseconds() - request.told["start"].number().value_or(0);
  auto* response = webkit_web_resource_get_response(request.resource);
  if (!response) return;
  const char* type = webkit_uri_response_get_mime_type(response);
  request.told["status"] = static_cast<int64_t>(webkit_uri_response_get_status_code(response));
  request.told["type"] = type ? type : "";
  request.responseHeaders = headersOf(webkit_uri_response_get_http_headers(response));
  const auto length = webkit_uri_response_get_content_length(response);
  if (length != 0 && length != G_MAXUINT64) request.told["bytes"] = static_cast<int64_t>(length);
}

void Network::measured(GObject* resource, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Reply> reply(static_cast<Reply*>(data));
  gsize length = 0;
  g_free(webkit_web_resource_get_data_finish(WEBKIT_WEB_RESOURCE(resource), result, &length, nullptr));
  auto& request = *reply->request;
  if (!request.network || request.isWritten) return;
  request.told["bytes"] = static_cast<int64_t>(length);
  request.network->write(request);
}

// Ends the request; what holds it may be the list.
void Network::write(Request& request) {
  request.isWritten = true;
  journal_.add("resource", request.told);
  if (requests_.size() < mostRequests) {
    auto whole = request.told;
    whole["requestHeaders"] = request.requestHeaders;
    whole["responseHeaders"] = request.responseHeaders;
    requests_.push_back(std::move(whole));
  }
  g_object_unref(request.resource);
  pending_.remove_if([&request](const auto& one) { return one.get() == &request; });
}

void Network::finish() {
  runUntil(lastWait, [this] { return pending_.empty(); });
  tellCookies();
  while (!pending_.empty()) {
    auto request = pending_.front();
    g_signal_handlers_disconnect_by_data(request->resource, request.get());
    if (!request->told.contains("duration")) {
      take(*request);
      request->told["error"] = "not finished";
    }
    write(*request);
  }
}

// The engine keeps to itself which answer has set them.
void Network::tellCookies() {
  if (!session_) return;
  struct Jar {
    std::vector<std::string> names;
    bool came = false;
  };
  const auto jar = std::make_shared<Jar>();
  const auto came = +[](GObject* manager, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<std::shared_ptr<Jar>> held(static_cast<std::shared_ptr<Jar>*>(data));
    GList* cookies =
        webkit_cookie_manager_get_all_cookies_finish(WEBKIT_COOKIE_MANAGER(manager), result, nullptr);
    for (const GList* each = cookies; each; each = each->next)
      (*held)->names.emplace_back(soup_cookie_get_name(static_cast<SoupCookie*>(each->data)));
    g_list_free_full(cookies, reinterpret_cast<GDestroyNotify>(soup_cookie_free));
    (*held)->came = true;
  };
  webkit_cookie_manager_get_all_cookies(webkit_network_session_get_cookie_manager(session_), nullptr, came,
                                        new std::shared_ptr<Jar>(jar));
  runUntil(lastWait, [jar] { return jar->came; });
  for (const auto& name : jar->names) journal_.add("storage", {{"kind", "cookie"}, {"key", name}});
}

}  // namespace velto::preview
