// The transport of the sandbox server: an httplib::Server whose connections are TLS, each with a thread of
// its own so that a slow answer never holds up another, and all of them cut by close(). Server.cpp owns one
// while it listens.
#pragma once

#include <httplib.h>
#include <openssl/ssl.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "sandbox/Certificates.h"
#include "sandbox/Rules.h"

namespace velto::sandbox {

class TlsServer;

// One client connection, as httplib's stream. Belongs to the thread that serves it.
class TlsConnection final : public httplib::Stream {
 public:
  TlsConnection(TlsServer& server, int socket, std::uint64_t number);
  ~TlsConnection() override;

  // The connection that a request came over.
  static TlsConnection& of(const httplib::Request& request);

  std::uint64_t number() const { return number_; }
  std::string serverName() const { return serverName_; }
  bool resumed() const { return SSL_session_reused(ssl_.get()) == 1; }

  // Waits, but not longer than the client or the server keeps the connection open.
  void wait(std::chrono::milliseconds time) const;
  // Nothing more is written or read; the TCP connection closes without a word.
  void cut() { isCut_ = true; }

  bool is_readable() const override { return !isCut_; }
  bool is_writable() const override { return !isCut_; }
  ssize_t read(char* buffer, size_t size) override;
  ssize_t write(const char* bytes, size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return socket_; }

 private:
  friend class TlsServer;
  bool handshake();
  bool awaitRequest() const;
  int onClientHello(int* alert) noexcept;
  void spoil(TlsFault fault);

  struct Deleter {
    void operator()(SSL* ssl) const { SSL_free(ssl); }
  };
  TlsServer& server_;
  const int socket_;
  const std::uint64_t number_;
  std::unique_ptr<SSL, Deleter> ssl_;
  std::string serverName_;  // from the client's hello, lower case
  bool isCut_ = false;
};

class TlsServer final : public httplib::Server {
 public:
  // Asked once for each handshake, with the connection's serverName known.
  using FaultFor = std::function<TlsFault(const TlsConnection&)>;

  // The certificates must outlive the server. Throws Error.
  TlsServer(const Certificates& certificates, FaultFor faultFor);
  ~TlsServer() override;

  // Listens on 127.0.0.1 on a thread of its own; returns the port, or 0 if it is taken.
  int open(int port);
  // Stops listening, cuts every connection, and joins all threads.
  void close();

 private:
  friend class TlsConnection;
  bool process_and_close_socket(socket_t socket) override;
  bool enter(int socket);  // false while closing
  void leave(int socket);
  // A certificate made for the name asked for, right in everything but the fault.
  Identity spoiledIdentity(TlsFault fault, const std::string& serverName) const;

  struct ContextDeleter {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  };
  const Certificates& certificates_;
  FaultFor faultFor_;
  std::unique_ptr<SSL_CTX, ContextDeleter> context_;
  std::atomic<std::uint64_t> connections_{0};
  std::thread listener_;
  std::mutex mutex_;
  std::list<int> sockets_;  // of the open connections
  bool closing_ = false;
};

}  // namespace velto::sandbox
