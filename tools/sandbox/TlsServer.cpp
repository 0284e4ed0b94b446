// See TlsServer.h.
#include "sandbox/TlsServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto::sandbox {

namespace {

constexpr timeval kReadTimeout{10, 0};  // within a request or a handshake
constexpr int kIdleSeconds = 60;        // between requests: longer than a banner's refresh time
constexpr std::size_t kRequestsPerConnection = 1'000'000;  // only announced
constexpr std::size_t kMaxBodyBytes = 8'000'000;
constexpr int kBacklog = 128;

// One thread for each connection, joined when the server stops.
class ThreadPerConnection final : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> serve) override {
    const std::lock_guard lock(mutex_);
    threads_.remove_if([](Worker& worker) {
      if (!*worker.done) return false;
      worker.thread.join();
      return true;
    });
    auto done = std::make_shared<std::atomic<bool>>(false);
    threads_.push_back({std::thread([serve = std::move(serve), done] {
                          serve();
                          *done = true;
                        }),
                        done});
  }

  void shutdown() override {
    const std::lock_guard lock(mutex_);
    for (Worker& worker : threads_) worker.thread.join();
    threads_.clear();
  }

 private:
  struct Worker {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> done;
  };
  std::mutex mutex_;
  std::list<Worker> threads_;
};

void describe(const sockaddr_in& address, std::string& ip, int& port) {
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
  ip = text;
  port = ntohs(address.sin_port);
}

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

TlsConnection& TlsConnection::of(const httplib::Request& request) {
  return *static_cast<TlsConnection*>(SSL_get_app_data(request.ssl));
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

ssize_t TlsConnection::read(char* buffer, size_t size) {
  if (isCut_) return -1;
  const int count = SSL_read(ssl_.get(), buffer, static_cast<int>(std::min<size_t>(size, 1 << 30)));
  return count > 0 ? count : -1;
}

ssize_t TlsConnection::write(const char* bytes, size_t size) {
  if (isCut_) return -1;
  if (size == 0) return 0;
  const int count = SSL_write(ssl_.get(), bytes, static_cast<int>(std::min<size_t>(size, 1 << 30)));
  return count > 0 ? count : -1;
}

void TlsConnection::get_remote_ip_and_port(std::string& ip, int& port) const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  getpeername(socket_, reinterpret_cast<sockaddr*>(&address), &size);
  describe(address, ip, port);
}

void TlsConnection::get_local_ip_and_port(std::string& ip, int& port) const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
  describe(address, ip, port);
}

TlsServer::TlsServer(const Certificates& certificates, FaultFor faultFor)
    : certificates_(certificates),
      faultFor_(std::move(faultFor)),
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

  set_keep_alive_timeout(kIdleSeconds);
  set_keep_alive_max_count(kRequestsPerConnection);
  set_payload_max_length(kMaxBodyBytes);
  new_task_queue = [] { return new ThreadPerConnection; };
  // Without the default's port sharing, so that a second server on the same port is refused.
  set_socket_options([](socket_t socket) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  });
}

TlsServer::~TlsServer() {
  close();
}

int TlsServer::open(int port) {
  constexpr const char* kAddress = "127.0.0.1";
  const int bound = port == 0 ? bind_to_any_port(kAddress) : (bind_to_port(kAddress, port) ? port : 0);
  if (bound <= 0) return 0;
  ::listen(svr_sock_,
           kBacklog);  // more than the library's own, for clients that open many connections at once
  listener_ = std::thread([this] { listen_after_bind(); });
  while (!is_running()) std::this_thread::yield();  // stop() has no effect before
  return bound;
}

void TlsServer::close() {
  if (!listener_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
  }
  stop();
  listener_.join();
}

bool TlsServer::enter(int socket) {
  const std::lock_guard lock(mutex_);
  if (closing_) return false;
  sockets_.push_back(socket);
  return true;
}

void TlsServer::leave(int socket) {
  const std::lock_guard lock(mutex_);
  sockets_.remove(socket);
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

bool TlsServer::process_and_close_socket(socket_t socket) {
  if (enter(socket)) {
    {
      TlsConnection connection(*this, socket, ++connections_);
      const auto prepare = [&](httplib::Request& request) {
        request.ssl = connection.ssl_.get();
        request.ranges
            .clear();  // the library does not hold them against the length of the body; Server.cpp does
      };
      bool closed = false;
      if (connection.handshake()) {
        while (!closed && connection.awaitRequest() && process_request(connection, false, closed, prepare)) {
        }
      }
    }
    leave(socket);
  }
  ::close(socket);
  return true;
}

}  // namespace velto::sandbox
