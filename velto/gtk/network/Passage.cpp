// The words of SOCKS 5, the judgement, and the bytes.
#include "velto/gtk/network/Passage.h"

#include "velto/gtk/network/LocalAddress.h"
#include "velto/gtk/network/RequestRules.h"

#include <netinet/in.h>
#include <netinet/tcp.h>

namespace velto::gtk {
namespace {

constexpr uint8_t version = 5;
constexpr uint8_t byName = 2;  // of the ways to say who one is
constexpr uint8_t connectCommand = 1;
enum AddressKind : uint8_t { IPv4 = 1, Name = 3, IPv6 = 4 };

constexpr guint secondsToAsk = 10;
constexpr guint secondsToConnect = 15;  // a page may long have given up
// Another address is tried beside one that does not answer for so long (RFC 8305).
constexpr guint millisecondsToWait = 250;
constexpr uint16_t httpsPort = 443;
constexpr size_t carried = 16384;  // bytes at a time

using Ended = std::function<void(GObject*, GAsyncResult*)>;

void operationEnded(GObject* source, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Ended> then(static_cast<Ended*>(data));
  (*then)(source, result);
}

gpointer then(Ended function) {
  return new Ended(std::move(function));
}

void sendAtOnce(GSocketConnection* connection) {
  g_socket_set_option(g_socket_connection_get_socket(connection), IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
}

void setTimeout(GSocketConnection* connection, guint seconds) {
  g_socket_set_timeout(g_socket_connection_get_socket(connection), seconds);
}

// By the given proxy alone: of several that the user has, one may be "directly".
GPtr<GSocketClient> newClient(const char* proxy) {
  auto client = GPtr<GSocketClient>::adopt(g_socket_client_new());
  g_socket_client_set_timeout(client, secondsToConnect);
  g_socket_client_set_enable_proxy(client, proxy != nullptr);
  if (!proxy) return client;
  const auto resolver = GPtr<GProxyResolver>::adopt(g_simple_proxy_resolver_new(proxy, nullptr));
  g_socket_client_set_proxy_resolver(client, resolver);
  return client;
}

std::string addressFor(const std::string& host, uint16_t port) {
  const bool isIPv6 = host.find(':') != std::string::npos;
  return (port == httpsPort ? "https://" : "http://") + (isIPv6 ? "[" + host + "]" : host) + ":" +
         std::to_string(port);
}

}  // namespace

struct Passage::Way {
  GSocketConnection* from;
  GSocketConnection* to;
  std::array<char, carried> bytes{};
};

Passage::Passage(GPtr<GSocketConnection> client, const Rules& rules)
    : rules_(rules), client_(std::move(client)) {
  sendAtOnce(client_);
  setTimeout(client_, secondsToAsk);
}

void Passage::cancel() {
  if (patience_) g_source_destroy(patience_.get());
  g_cancellable_cancel(connecting_);
  g_cancellable_cancel(all_);
}

void Passage::read(size_t count, std::function<void(const Bytes&)> next) {
  const auto bytes = std::make_shared<Bytes>(count);
  g_input_stream_read_all_async(
      g_io_stream_get_input_stream(G_IO_STREAM(client_.get())), bytes->data(), count, G_PRIORITY_DEFAULT,
      all_, operationEnded,
      then([self = shared_from_this(), bytes, next = std::move(next)](auto* stream, auto* result) {
        gsize got = 0;
        if (g_input_stream_read_all_finish(G_INPUT_STREAM(stream), result, &got, nullptr) &&
            got == bytes->size())
          next(*bytes);
      }));
}

void Passage::write(std::string bytes, std::function<void()> next) {
  const auto kept = std::make_shared<std::string>(std::move(bytes));
  g_output_stream_write_all_async(
      g_io_stream_get_output_stream(G_IO_STREAM(client_.get())), kept->data(), kept->size(),
      G_PRIORITY_DEFAULT, all_, operationEnded,
      then([self = shared_from_this(), kept, next = std::move(next)](auto* stream, auto* result) {
        if (g_output_stream_write_all_finish(G_OUTPUT_STREAM(stream), result, nullptr, nullptr) && next)
          next();
      }));
}

// --- what is asked for

void Passage::greet() {
  read(2, [this](const Bytes& head) {
    if (head[0] != version) return;
    read(head[1], [this](const Bytes& ways) {
      if (std::find(ways.begin(), ways.end(), byName) == ways.end())
        return write({char(version), '\xff'}, {});
      write({char(version), char(byName)}, [this] { authenticate(); });
    });
  });
}

void Passage::authenticate() {
  read(2, [this](const Bytes& head) {
    read(head[1] + size_t{1}, [this](const Bytes& named) {
      read(named.back(), [this, name = std::string(named.begin(), named.end() - 1)](const Bytes&) {
        const bool isKnown = name == rules_.secret;
        write({1, char(!isKnown)}, isKnown ? [this] { hearRequest(); } : std::function<void()>());
      });
    });
  });
}

void Passage::hearRequest() {
  read(4, [this](const Bytes& head) {
    if (head[1] != connectCommand) return refuse(Reply::NoSuchCommand);
    hearTarget(head[3]);
  });
}

void Passage::hearTarget(uint8_t kind) {
  const auto hearHost = [this, kind](size_t size) {
    read(size + 2, [this, kind](const Bytes& bytes) {
      const auto port = static_cast<uint16_t>(bytes[bytes.size() - 2] << 8 | bytes.back());
      std::string host(bytes.begin(), bytes.end() - 2);
      if (kind != Name) {
        const auto address = GPtr<GInetAddress>::adopt(g_inet_address_new_from_bytes(
            bytes.data(), kind == IPv4 ? G_SOCKET_FAMILY_IPV4 : G_SOCKET_FAMILY_IPV6));
        host = GText(g_inet_address_to_string(address)).get();
      }
      setTimeout(client_, 0);
      open(host, port);
    });
  };
  if (kind == IPv4) return hearHost(4);
  if (kind == IPv6) return hearHost(16);
  if (kind == Name) return read(1, [hearHost](const Bytes& size) { hearHost(size[0]); });
  refuse(Reply::NoSuchAddress);
}

void Passage::reply(Reply reply, std::function<void()> next) {
  write({char(version), char(reply), 0, char(IPv4), 0, 0, 0, 0, 0, 0}, std::move(next));
}

void Passage::refuse(Reply why) {
  reply(why, {});
}

// --- whether it may

void Passage::open(const std::string& host, uint16_t port) {
  if (host.find('\0') != std::string::npos || !g_utf8_validate(host.c_str(), -1, nullptr))
    return refuse(Reply::NotAllowed);
  if (const auto mapped = mappedAddress(rules_.hostMap, host); !mapped.empty()) {
    const auto place =
        GPtr<GSocketConnectable>::adopt(g_network_address_parse(mapped.c_str(), port, nullptr));
    return place ? connectTo(place, nullptr) : refuse(Reply::HostUnreachable);
  }
  g_proxy_resolver_lookup_async(
      g_proxy_resolver_get_default(), addressFor(host, port).c_str(), all_, operationEnded,
      then([self = shared_from_this(), host, port](auto* resolver, auto* result) {
        const GOwned<char*, g_strfreev> found(
            g_proxy_resolver_lookup_finish(G_PROXY_RESOLVER(resolver), result, nullptr));
        const bool isDirect =
            !found || !*found.get() || std::string_view(*found.get()).starts_with("direct:");
        isDirect ? self->resolve(host, port) : self->openByProxy(host, port, *found.get());
      }));
}

// The user's proxy resolves the name, and has its own idea of what may be asked of it.
void Passage::openByProxy(const std::string& host, uint16_t port, const char* proxy) {
  if (isLocalName(host)) return refuse(Reply::NotAllowed);
  const auto place = GPtr<GSocketConnectable>::adopt(
      g_network_address_parse_uri(addressFor(host, port).c_str(), port, nullptr));
  place ? connectTo(place, proxy) : refuse(Reply::HostUnreachable);
}

void Passage::resolve(const std::string& host, uint16_t port) {
  rules_.names->add([self = shared_from_this(), host, port] { self->lookUp(host, port); });
}

// What is judged is what is connected to: nobody asks for the name a second time. One local address among others is a trick.
void Passage::lookUp(const std::string& host, uint16_t port) {
  const auto resolver = GPtr<GResolver>::adopt(g_resolver_get_default());
  g_resolver_lookup_by_name_async(
      resolver, host.c_str(), all_, operationEnded,
      then([self = shared_from_this(), port](auto* asked, auto* result) {
        GList* found = g_resolver_lookup_by_name_finish(G_RESOLVER(asked), result, nullptr);
        self->rules_.names->ended();
        bool isLocal = false;
        for (const auto* item = found; item; item = item->next) {
          auto* address = static_cast<GInetAddress*>(item->data);
          isLocal |= isLocalAddress(address);
          self->places_.push_back(GPtr<GSocketAddress>::adopt(g_inet_socket_address_new(address, port)));
        }
        g_resolver_free_addresses(found);
        if (isLocal || self->places_.empty())
          return self->refuse(isLocal ? Reply::NotAllowed : Reply::HostUnreachable);
        self->tryNext();
      }));
}

// --- connecting

void Passage::tryNext() {
  if (patience_) g_source_destroy(patience_.get());
  patience_.reset();
  if (places_.empty()) return;
  const auto place = std::move(places_.front());
  places_.pop_front();
  connectTo(G_SOCKET_CONNECTABLE(place.get()), nullptr);
  if (places_.empty()) return;
  patience_.reset(g_timeout_source_new(millisecondsToWait));
  g_source_set_callback(
      patience_.get(),
      [](gpointer passage) noexcept -> gboolean {
        static_cast<Passage*>(passage)->shared_from_this()->tryNext();
        return G_SOURCE_REMOVE;
      },
      this, nullptr);
  g_source_attach(patience_.get(), g_main_context_get_thread_default());
}

void Passage::connectTo(GSocketConnectable* place, const char* proxy) {
  ++tries_;
  const auto client = newClient(proxy);
  g_socket_client_connect_async(client, place, connecting_, operationEnded,
                                then([self = shared_from_this()](auto* tried, auto* result) {
                                  auto remote = GPtr<GSocketConnection>::adopt(g_socket_client_connect_finish(
                                      G_SOCKET_CLIENT(tried), result, nullptr));
                                  --self->tries_;
                                  if (self->remote_) return;
                                  if (remote) return self->connected(std::move(remote));
                                  if (!self->places_.empty()) return self->tryNext();
                                  if (self->tries_ == 0) self->refuse(Reply::HostUnreachable);
                                }));
}

void Passage::connected(GPtr<GSocketConnection> remote) {
  remote_ = std::move(remote);
  places_.clear();
  if (patience_) g_source_destroy(patience_.get());
  g_cancellable_cancel(connecting_);
  sendAtOnce(remote_);
  setTimeout(remote_, 0);
  reply(Reply::Granted, [this] {
    carry(std::make_shared<Way>(Way{client_.get(), remote_.get(), {}}));
    carry(std::make_shared<Way>(Way{remote_.get(), client_.get(), {}}));
  });
}

// --- its bytes

void Passage::carry(const std::shared_ptr<Way>& way) {
  g_input_stream_read_async(
      g_io_stream_get_input_stream(G_IO_STREAM(way->from)), way->bytes.data(), way->bytes.size(),
      G_PRIORITY_DEFAULT, all_, operationEnded,
      then([self = shared_from_this(), way](auto* stream, auto* result) {
        const gssize got = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, nullptr);
        // The engine asks no more of a connection that it has ended; a server may have said all and still listen.
        if (got < 0 || (got == 0 && way->from == self->client_.get())) return self->cancel();
        if (got == 0) {
          g_socket_shutdown(g_socket_connection_get_socket(way->to), FALSE, TRUE, nullptr);
          return;
        }
        g_output_stream_write_all_async(
            g_io_stream_get_output_stream(G_IO_STREAM(way->to)), way->bytes.data(), static_cast<gsize>(got),
            G_PRIORITY_DEFAULT, self->all_, operationEnded, then([self, way](auto* out, auto* written) {
              if (!g_output_stream_write_all_finish(G_OUTPUT_STREAM(out), written, nullptr, nullptr))
                return self->cancel();
              self->carry(way);
            }));
      }));
}

}  // namespace velto::gtk
