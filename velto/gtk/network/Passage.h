// One connection of the web engine's through the gate: what it asks for, whether it may, and then its bytes, both ways. Lives
// on the gate's thread, for as long as one of its operations runs.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/network/NameQueue.h"
#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velto::gtk {

class Passage : public std::enable_shared_from_this<Passage> {
 public:
  struct Rules {
    std::string secret;
    std::vector<HostMapping> hostMap;
    std::shared_ptr<NameQueue> names = std::make_shared<NameQueue>();
  };

  Passage(GPtr<GSocketConnection> client, const Rules& rules);
  Passage(const Passage&) = delete;
  Passage& operator=(const Passage&) = delete;

  void begin() { greet(); }
  // Each of its operations ends soon after.
  void cancel();

 private:
  // What is answered to a request (RFC 1928, 6).
  enum class Reply : char {
    Granted = 0,
    NotAllowed = 2,
    HostUnreachable = 4,
    NoSuchCommand = 7,
    NoSuchAddress = 8
  };
  using Bytes = std::vector<uint8_t>;

  void read(size_t count, std::function<void(const Bytes&)> next);
  void write(std::string bytes, std::function<void()> next);

  void greet();
  void authenticate();
  void hearRequest();
  void hearTarget(uint8_t kind);
  void reply(Reply reply, std::function<void()> next);
  void refuse(Reply why);

  void open(const std::string& host, uint16_t port);
  void openByProxy(const std::string& host, uint16_t port, const char* proxy);
  void resolve(const std::string& host, uint16_t port);
  void lookUp(const std::string& host, uint16_t port);
  void tryNext();
  void connectTo(GSocketConnectable* place, const char* proxy);  // null: directly
  void connected(GPtr<GSocketConnection> remote);

  struct Way;
  void carry(const std::shared_ptr<Way>& way);

  const Rules& rules_;
  const GPtr<GSocketConnection> client_;
  GPtr<GSocketConnection> remote_;
  const GPtr<GCancellable> all_ = GPtr<GCancellable>::adopt(g_cancellable_new());
  const GPtr<GCancellable> connecting_ = GPtr<GCancellable>::adopt(g_cancellable_new());
  std::deque<GPtr<GSocketAddress>> places_;  // not tried yet
  int tries_ = 0;                            // under way
  GOwned<GSource, g_source_unref> patience_;
};

}  // namespace velto::gtk
