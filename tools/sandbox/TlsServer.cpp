// See TlsServer.h.
#include "sandbox/TlsServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto::sandbox {

namespace {

constexpr timeval kReadTimeout{10, 0};  // within a request or a handshake
constexpr int kIdleSeconds = 60;        // between requests: longer than a banner's refresh time
constexpr int kBacklog = 128;           // for clients that open many connections at once

// The host name of the server-name extension (RFC 6066, section 3); "" without one.
std::string serverNameIn(SSL* ssl) {
  constexpr std::size_t kHeader = 5;  // list length, name type, name length
  const unsigned char* data = nullptr;
  std::size_t size = 0;
  if (SSL_client_hello_get0_ext(ssl, TLSEXT_TYPE_server_name, &data, &size) != 1 || size < kHeader) return {};
  const std::size_t length = static_cast<std::size_t>(data[3] << 8 | data[4]);
  if (data[2] != TLSEXT_NAMETYPE_host_name || kHeader + length > size) return {};
  return lowerCase({reinterpret_cast<const char*>(data) + kHeader, length});
}

}  // namespace

TlsConnection::TlsConnection(TlsServer& server, int socket, std::uint64_t number)
    : server_(server), socket_(socket), number_(number), ssl_(SSL_new(server.context_.get())) {
  const int on = 1;
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &kReadTimeout, sizeof kReadTimeout);
  SSL_set_app_data(ssl_.get(), this);
  SSL_set_fd(ssl_.get(), socket_);
}

TlsConnection::~TlsConnection() {
  if (!isCut_ && SSL_is_init_finished(ssl_.get())) SSL_shutdown(ssl_.get());
}

bool TlsConnection::handshake() {
  return SSL_accept(ssl_.get()) == 1;
}

bool TlsConnection::awaitRequest() const {
  if (isCut_) return false;
  if (SSL_pending(ssl_.get()) > 0) return true;
  pollfd events{socket_, POLLIN, 0};
  return poll(&events, 1, kIdleSeconds * 1000) == 1;
}

int TlsConnection::onClientHello(int* alert) noexcept {
  try {
    serverName_ = serverNameIn(ssl_.get());
    const TlsFault fault = server_.faultFor_(*this);
    if (fault == TlsFault::None) return SSL_CLIENT_HELLO_SUCCESS;
    if (fault != TlsFault::Refuse) {
      spoil(fault);
      return SSL_CLIENT_HELLO_SUCCESS;
    }
  } catch (const std::exception&) {
    // Refused as well.
  }
  *alert = SSL_AD_HANDSHAKE_FAILURE;
  return SSL_CLIENT_HELLO_ERROR;
}

void TlsConnection::spoil(TlsFault fault) {
  const Identity identity = server_.spoiledIdentity(fault, serverName_);
  SSL_use_cert_and_key(ssl_.get(), identity.certificate.get(), identity.key.get(), nullptr, 1);
  // A good session from before must not be resumed: that would hide the certificate. The hello is read before
  // sessions are looked up, and one of another context is passed over.
  static constexpr unsigned char kContext[] = "spoiled";
  SSL_set_session_id_context(ssl_.get(), kContext, sizeof kContext);
}

void TlsConnection::wait(std::chrono::milliseconds time) const {
  // Both the client's leaving and TlsServer::close make the socket hang up.
  pollfd events{socket_, POLLRDHUP, 0};
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return;
    const int slice = static_cast<int>(std::min<std::int64_t>(left.count(), 3'600'000));
    if (poll(&events, 1, slice) > 0) return;
  }
}

void TlsConnection::finish() {
  SSL_shutdown(ssl_.get());
  ::shutdown(socket_, SHUT_WR);
  char unread[4096];
  while (recv(socket_, unread, sizeof unread, 0) > 0) {
  }
}

std::size_t TlsConnection::read(char* buffer, std::size_t size) {
  std::size_t count = 0;
  return !isCut_ && SSL_read_ex(ssl_.get(), buffer, size, &count) == 1 ? count : 0;
}

bool TlsConnection::write(std::string_view bytes) {
  std::size_t count = 0;
  return !isCut_ && (bytes.empty() || SSL_write_ex(ssl_.get(), bytes.data(), bytes.size(), &count) == 1);
}

TlsServer::TlsServer(const Certificates& certificates, FaultFor faultFor, Serve serve)
    : certificates_(certificates),
      faultFor_(std::move(faultFor)),
      serve_(std::move(serve)),
      context_(SSL_CTX_new(TLS_server_method())) {
  static constexpr unsigned char kContext[] = "sandbox";
  SSL_CTX_set_min_proto_version(context_.get(), TLS1_2_VERSION);
  SSL_CTX_set_session_id_context(context_.get(), kContext, sizeof kContext);
  SSL_CTX_set_client_hello_cb(
      context_.get(),
      [](SSL* ssl, int* alert, void*) {
        return static_cast<TlsConnection*>(SSL_get_app_data(ssl))->onClientHello(alert);
      },
      nullptr);
  if (SSL_CTX_use_cert_and_key(context_.get(), certificates.server.certificate.get(),
                               certificates.server.key.get(), nullptr, 1) != 1) {
    throw Error("certificates: the server's certificate cannot be used");
  }
}

TlsServer::~TlsServer() {
  close();
}

int TlsServer::open(int port) {
  socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int on = 1;
  setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  if (bind(socket_, generic, size) != 0 || ::listen(socket_, kBacklog) != 0 ||
      getsockname(socket_, generic, &size) != 0) {
    ::close(std::exchange(socket_, -1));
    return 0;
  }
  listener_ = std::thread([this] { listen(); });
  return ntohs(address.sin_port);
}

void TlsServer::close() {
  if (!listener_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    for (const Worker& worker : workers_) ::shutdown(worker.socket, SHUT_RDWR);
  }
  ::shutdown(socket_, SHUT_RDWR);  // ends accept
  listener_.join();
  for (Worker& worker : workers_) worker.thread.join();
  ::close(socket_);
}

void TlsServer::listen() {
  // A write to a client that has left is an error here, not a signal: this thread's connections inherit that.
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
  for (;;) {
    const int client = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    const std::lock_guard lock(mutex_);
    if (closing_) {
      if (client >= 0) ::close(client);
      return;
    }
    if (client >= 0) enter(client);
  }
}

void TlsServer::enter(int socket) {
  workers_.remove_if([](Worker& worker) {
    if (worker.socket >= 0) return false;
    worker.thread.join();
    return true;
  });
  Worker& worker = workers_.emplace_back(Worker{socket, {}});
  worker.thread = std::thread([this, &worker, number = ++connections_] {
    serve(worker.socket, number);
    const std::lock_guard lock(mutex_);
    ::close(std::exchange(worker.socket, -1));
  });
}

void TlsServer::serve(int socket, std::uint64_t number) noexcept {
  try {
    TlsConnection connection(*this, socket, number);
    if (connection.handshake()) serve_(connection);
  } catch (const std::exception&) {
    // The connection closes, which is all that can be told the client.
  }
}

Identity TlsServer::spoiledIdentity(TlsFault fault, const std::string& serverName) const {
  CertificateWish wish;
  wish.commonName = "Velto sandbox, spoiled";
  wish.dnsNames = {isHostName(serverName) ? serverName : "localhost"};
  if (fault == TlsFault::WrongName) wish.dnsNames = {"wrong-name.invalid"};
  if (fault == TlsFault::Expired) {
    wish.validFromDays = -30;
    wish.validToDays = -1;
  }
  return makeIdentity(wish, fault == TlsFault::Untrusted ? nullptr : &certificates_.authority);
}

}  // namespace velto::sandbox
