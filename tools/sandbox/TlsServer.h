// The transport of the sandbox server: TLS connections on 127.0.0.1, each with a thread of its own so that a slow
// answer never holds up another, and all of them cut by close(). Server.cpp owns one while it listens.
#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "sandbox/Certificates.h"
#include "sandbox/Rules.h"

namespace velto::sandbox {

class TlsServer;

// One client connection. Belongs to the thread that serves it.
class TlsConnection {
 public:
  TlsConnection(TlsServer& server, int socket, std::uint64_t number);
  ~TlsConnection();
  TlsConnection(const TlsConnection&) = delete;
  TlsConnection& operator=(const TlsConnection&) = delete;

  std::uint64_t number() const { return number_; }
  std::string serverName() const { return serverName_; }
  bool resumed() const { return SSL_session_reused(ssl_.get()) == 1; }

  // Waits for the first bytes of a request; false when none came for as long as a connection is kept.
  bool awaitRequest() const;
  // Waits, but not longer than the client or the server keeps the connection open.
  void wait(std::chrono::milliseconds time) const;
  // Says that nothing more comes, and reads on until the client has left: else what it still sends would make its
  // system drop the answer (RFC 9112, section 9.6).
  void finish();
  // Nothing more is written or read; the TCP connection closes without a word.
  void cut() { isCut_ = true; }

  std::size_t read(char* buffer, std::size_t size);  // 0 when the connection is over
  bool write(std::string_view bytes);                // false then

 private:
  friend class TlsServer;
  bool handshake();
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

class TlsServer {
 public:
  // Asked once for each handshake, with the connection's serverName known.
  using FaultFor = std::function<TlsFault(const TlsConnection&)>;
  // Serves one connection, on its thread, until it returns.
  using Serve = std::function<void(TlsConnection&)>;

  // The certificates must outlive the server. Throws Error.
  TlsServer(const Certificates& certificates, FaultFor faultFor, Serve serve);
  ~TlsServer();

  // Listens on 127.0.0.1 on a thread of its own; returns the port, or 0 if it is taken.
  int open(int port);
  // Stops listening, cuts every connection, and joins all threads.
  void close();

 private:
  friend class TlsConnection;
  struct Worker {
    int socket;  // -1 once its thread is about to end
    std::thread thread;
  };
  void listen();
  void enter(int socket);
  void serve(int socket, std::uint64_t number) noexcept;
  // A certificate made for the name asked for, right in everything but the fault.
  Identity spoiledIdentity(TlsFault fault, const std::string& serverName) const;

  struct ContextDeleter {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  };
  const Certificates& certificates_;
  FaultFor faultFor_;
  Serve serve_;
  std::unique_ptr<SSL_CTX, ContextDeleter> context_;
  int socket_ = -1;
  std::uint64_t connections_ = 0;
  std::thread listener_;
  std::mutex mutex_;  // of the two below
  std::list<Worker> workers_;
  bool closing_ = false;
};

}  // namespace velto::sandbox
