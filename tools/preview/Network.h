// What the pages of an ad load, as the engine tells of each request. Every web view of this process is listened to while this
// lives. Main thread.
#pragma once

#include <webkit/webkit.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "preview/Journal.h"

namespace velto::preview {

class Network {
 public:
  explicit Network(Journal& journal);
  Network(const Network&) = delete;
  Network& operator=(const Network&) = delete;
  ~Network();

  // Requests that are under way.
  size_t pending() const { return pending_.size(); }
  // Waits a moment for what is still under way, which is then written down as not finished; tells the cookies.
  void finish();
  // All requests so far, with their headers: "requestHeaders" and "responseHeaders", lists of {name, value}, beside what
  // stands in their entries. Of the first thousands.
  const std::vector<JSON::Object>& requests() const { return requests_; }

 private:
  struct Request;
  struct Reply;
  static gboolean started(GSignalInvocationHint*, guint count, const GValue* values, gpointer self) noexcept;
  static gboolean ended(GSignalInvocationHint*, guint count, const GValue* values, gpointer self) noexcept;
  static void failed(WebKitWebResource*, GError* error, Request* request) noexcept;
  static void redirected(WebKitWebResource*, WebKitURIRequest* sent, WebKitURIResponse* response,
                         Request* request) noexcept;
  static void finished(WebKitWebResource* resource, Request* request) noexcept;
  static void measured(GObject* resource, GAsyncResult* result, gpointer reply) noexcept;
  void begin(WebKitWebView* view, WebKitWebResource* resource, WebKitURIRequest* request);
  void take(Request& request);
  void write(Request& request);
  void tellCookies();

  Journal& journal_;
  GTypeClass* views_;                        // holds the signals
  WebKitNetworkSession* session_ = nullptr;  // of the pages
  gulong startHook_, endHook_;
  std::list<std::shared_ptr<Request>> pending_;
  std::vector<JSON::Object> requests_;
};

}  // namespace velto::preview
