// The gate between the web engine and the network: a SOCKS 5 proxy (RFC 1928, RFC 1929) inside this process, which resolves
// names itself and connects to nothing of the user's own network. It is the only place that sees what a page's request comes
// to in the end: the engine's own rules judge names, which anybody may let lead anywhere, at any time.
//
// Main thread; all else happens on a thread of its own.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>

#include <memory>
#include <string>

namespace velto::gtk {

class NetworkGate {
 public:
  // Costs nothing: it is built with the first question for its address, and opened when the engine connects to it for the
  // first time. What the application maps goes where it says.
  explicit NetworkGate(const Options& options);
  NetworkGate(const NetworkGate&) = delete;
  NetworkGate& operator=(const NetworkGate&) = delete;
  ~NetworkGate();  // with all that goes through it

  // As clients of proxies want it; empty where the application lets ads reach everything. The user name in it is a secret:
  // others on this machine have no use of the gate. Where no port can be had it leads nowhere.
  const std::string& address();

 private:
  class Keeper;
  static int open(GSocket* door, GIOCondition condition, void* gate) noexcept;
  const std::vector<HostMapping> hostMap_;
  const bool isOpen_;  // to all
  std::string address_, secret_;
  GPtr<GSocket> door_;
  unsigned bell_ = 0;  // who rings first has it opened
  std::unique_ptr<Keeper> keeper_;
};

}  // namespace velto::gtk
