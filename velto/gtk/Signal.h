// A connection to a GObject's signal that ends with its owner. Used by the platform's services.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <glib-object.h>

namespace velto::gtk {

class Signal {
 public:
  Signal() = default;
  // The handler is called with `receiver` as its last argument, and must be noexcept.
  // `ended` is called with it once nothing is listened to any more.
  Signal(gpointer sender, const char* name, GCallback handler, gpointer receiver,
         GClosureNotify ended = nullptr)
      : sender_(GPtr<GObject>::retain(G_OBJECT(sender))),
        id_(g_signal_connect_data(sender, name, handler, receiver, ended, GConnectFlags{})) {}
  Signal(Signal&&) = default;
  Signal& operator=(Signal&& other) noexcept {
    disconnect();
    sender_ = std::move(other.sender_);
    id_ = other.id_;
    return *this;
  }
  ~Signal() { disconnect(); }

 private:
  void disconnect() {
    if (sender_) g_signal_handler_disconnect(sender_, id_);
    sender_.reset();
  }

  GPtr<GObject> sender_;
  gulong id_ = 0;
};

}  // namespace velto::gtk
