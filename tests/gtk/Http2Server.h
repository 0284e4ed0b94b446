// An HTTPS server on loopback that sees connections: one at a time, kept until its client or hangUp() ends it. It answers
// each request with an empty 200, over HTTP/2 (RFC 9113, no more of it than that takes) or over HTTP/1.1; or, over HTTP/2,
// with frames of a test's own, as many as its client takes.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "sandbox/Certificates.h"

namespace velto::test {

class Http2Server {
 public:
  static constexpr char host[] = "server.example";

  explicit Http2Server(const std::string& folder, std::string protocol = "h2")
      : protocol_(std::move(protocol)), certificates_(sandbox::loadOrMakeCertificates(folder, {host})) {
    signal(SIGPIPE, SIG_IGN);  // who floods is hung up on
    protocol_.insert(0, 1, static_cast<char>(protocol_.size()));
    SSL_CTX_use_cert_and_key(tls_.get(), certificates_.server.certificate.get(),
                             certificates_.server.key.get(), nullptr, 1);
    SSL_CTX_set_num_tickets(tls_.get(), 0);  // else they may come alone, which some clients take for the end
    SSL_CTX_set_alpn_select_cb(tls_.get(), choose, this);
    sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_TRUE(bind(listener_, generic, size) == 0 && listen(listener_, 8) == 0 &&
                getsockname(listener_, generic, &size) == 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  ~Http2Server() {
    isOver_ = true;
    shutdown(listener_, SHUT_RDWR);
    hangUp();
    thread_.join();
    close(listener_);
  }
  const std::string& caFile() const { return certificates_.caFile; }
  std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
  void hangUp() { shutdown(client_, SHUT_RDWR); }
  // The first `once`, then the others over and over. For the next request.
  struct Frames {
    std::string once, always;
  };
  void flood(Frames frames) {
    std::lock_guard lock(mutex_);
    flood_ = std::move(frames);
  }
  // To one stream, the first of its connection; to the connection: 0.
  static std::string frame(int type, int flags, const std::string& payload, int stream = 1) {
    const auto size = payload.size();
    return std::string{char(size >> 16), char(size >> 8), char(size), char(type), char(flags), 0, 0, 0,
                       char(stream)} +
           payload;
  }

  // So far.
  std::atomic<int> connections = 0, requests = 0, settled = 0, ended = 0;

 private:
  struct Deleter {
    void operator()(SSL* ssl) const { SSL_free(ssl); }
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  };
  static int choose(SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char* offered,
                    unsigned offeredSize, void* self) {
    const auto& own = static_cast<Http2Server*>(self)->protocol_;
    const int found = SSL_select_next_proto(const_cast<unsigned char**>(chosen), size,
                                            reinterpret_cast<const unsigned char*>(own.data()),
                                            static_cast<unsigned>(own.size()), offered, offeredSize);
    return found == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_ALERT_FATAL;
  }

  void serve() {
    while (!isOver_) {
      const int client = client_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (client < 0) continue;
      ssl_.reset(SSL_new(tls_.get()));
      SSL_set_fd(ssl_.get(), client);
      if (!isOver_ && SSL_accept(ssl_.get()) == 1) {
        ++connections;
        protocol_ == "\2h2" ? serveFrames() : serveLines();
      }
      client_ = -1;
      close(client);
      ++ended;
    }
  }

  bool read(std::string& bytes, size_t size) {
    bytes.resize(size);
    for (size_t had = 0, got = 0; had < size; had += got)
      if (SSL_read_ex(ssl_.get(), bytes.data() + had, size - had, &got) != 1) return false;
    return true;
  }
  bool write(std::string_view bytes) {
    size_t written = 0;
    return SSL_write_ex(ssl_.get(), bytes.data(), bytes.size(), &written) == 1;
  }

  std::optional<Frames> flood() {
    std::lock_guard lock(mutex_);
    return flood_;
  }
  void serveFrames() {
    using namespace std::literals;
    enum { data = 0, headers = 1, settings = 4, endOfStream = 1, acknowledgement = 1 };
    constexpr size_t prefaceSize = 24, headSize = 9;
    write("\0\0\0\4\0\0\0\0\0"sv);  // its settings
    std::string preface, head, payload;
    if (!read(preface, prefaceSize)) return;
    while (read(head, headSize)) {
      const auto byte = [&](int i) { return static_cast<unsigned char>(head[i]); };
      if (!read(payload, byte(0) << 16 | byte(1) << 8 | byte(2))) return;
      if (byte(3) == settings && byte(4) & acknowledgement) {
        ++settled;
      } else if (byte(3) == settings) {
        write("\0\0\0\4\1\0\0\0\0"sv);
      } else if ((byte(3) == data || byte(3) == headers) && byte(4) & endOfStream) {
        ++requests;
        if (const auto frames = flood()) {
          if (write(frames->once))
            while (write(frames->always)) continue;
          return;
        }
        write("\0\0\1\1\5"s + head.substr(5) + '\x88');  // the end of headers and stream: 200
      }
    }
  }

  void serveLines() {
    std::string byte, text;
    while (read(byte, 1)) {
      if (!(text += byte).ends_with("\r\n\r\n")) continue;
      ++requests;
      write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
      text.clear();
    }
  }

  std::string protocol_;
  const sandbox::Certificates certificates_;
  std::mutex mutex_;
  std::optional<Frames> flood_;
  const std::unique_ptr<SSL_CTX, Deleter> tls_{SSL_CTX_new(TLS_server_method())};
  std::unique_ptr<SSL, Deleter> ssl_;
  const int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::atomic<int> client_ = -1;
  std::atomic<bool> isOver_ = false;
  int port_ = 0;
  std::thread thread_;
};

}  // namespace velto::test
