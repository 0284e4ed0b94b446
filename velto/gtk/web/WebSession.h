// The web session of the library's own: cookies and website data live in memory and go with the platform. An
// application's web views have other sessions, which are never touched. The platform owns one; web views and
// the data store share it. Main thread.
#pragma once

#include "velto/platform/WKWebsiteDataStore.h"
#include "velto/platform/foundation/GMemory.h"

#include <memory>

typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitWebContext WebKitWebContext;

namespace velto::gtk {

class NetworkGate;

class WebSession {
 public:
  // Costs nothing: the engine starts with the first use of one of the two below.
  explicit WebSession(std::shared_ptr<NetworkGate> gate);
  WebSession(const WebSession&) = delete;
  WebSession& operator=(const WebSession&) = delete;
  ~WebSession();

  WebKitNetworkSession* network();
  // The web processes that belong to it. It goes with the last view that was made in it, and with it a
  // process that the engine may have brought up for a site to come.
  GPtr<WebKitWebContext> context();
  bool isStarted() const { return static_cast<bool>(network_); }
  // Whether anything can have left data behind; set by web processes.
  const std::shared_ptr<bool>& hadPages() const { return hadPages_; }

 private:
  const std::shared_ptr<NetworkGate> gate_;  // through which all goes that pages ask for
  GPtr<WebKitNetworkSession> network_;
  const std::shared_ptr<bool> hadPages_ = std::make_shared<bool>(false);
  GWeakRef context_;
};

std::unique_ptr<WKWebsiteDataStore> makeWebsiteDataStore(std::shared_ptr<WebSession> session);

}  // namespace velto::gtk
