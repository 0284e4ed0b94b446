// The web session of the library's own: cookies and website data live in memory and go with the platform. An application's
// web views have other sessions, which are never touched. The platform owns one; web views and the data store share it. Main thread.
#pragma once

#include <memory>

#include "velto/platform/WKWebsiteDataStore.h"
#include "velto/platform/foundation/GMemory.h"

typedef struct _WebKitNetworkSession WebKitNetworkSession;

namespace velto::gtk {

struct Options;

class WebSession {
 public:
  // Costs nothing: the engine starts with the first use of network().
  explicit WebSession(const Options& options);
  WebSession(const WebSession&) = delete;
  WebSession& operator=(const WebSession&) = delete;
  ~WebSession();

  WebKitNetworkSession* network();
  // Whether anything can have left data behind.
  bool isStarted() const { return static_cast<bool>(network_); }

 private:
  GPtr<WebKitNetworkSession> network_;
};

std::unique_ptr<WKWebsiteDataStore> makeWebsiteDataStore(std::shared_ptr<WebSession> session);

}  // namespace velto::gtk
