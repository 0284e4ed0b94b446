// The sockets of one session's connections. libcurl reads on inside a single call for as long as a server that speaks HTTP/2
// keeps it busy, and looks at no clock meanwhile; who has waited long enough hangs up on it from another thread.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <mutex>
#include <set>

namespace velto::gtk {

class OpenSockets {
 public:
  void add(int socket) {
    std::lock_guard lock(mutex_);
    if (socket >= 0) sockets_.insert(socket);
  }
  void close(int socket) {
    std::lock_guard lock(mutex_);
    sockets_.erase(socket);
    ::close(socket);
  }
  // All that are open: their transfers fail. Any thread. A shutdown would still let in what the server goes on sending
  // (connect(2): AF_UNSPEC dissolves a connection).
  void hangUp() {
    std::lock_guard lock(mutex_);
    const sockaddr nobody{};
    for (const int socket : sockets_) connect(socket, &nobody, sizeof nobody);
  }

 private:
  std::mutex mutex_;
  std::set<int> sockets_;
};

}  // namespace velto::gtk
