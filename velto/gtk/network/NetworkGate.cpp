// The gate's thread: who comes, and how many at a time.
#include "velto/gtk/network/NetworkGate.h"

#include "velto/gtk/Threads.h"
#include "velto/gtk/network/Passage.h"

#define G_SETTINGS_ENABLE_BACKEND  // as GIO asks of who includes the next
#include <gio/gsettingsbackend.h>

#include <thread>

namespace velto::gtk {
namespace {

// Each holds two descriptors of the application's. The engine itself keeps to a few dozen.
constexpr int mostPassages = 128;
constexpr guint millisecondsToRest = 100;  // when there is no descriptor for who comes

// Where nobody answers: without a gate nothing leaves.
constexpr char nowhere[] = "socks5://127.0.0.1:1";

std::string newSecret() {
  std::string secret;
  for (int i = 0; i < 2; ++i) secret += GText(g_uuid_string_random()).get();
  return secret;
}

GPtr<GSocket> listen(std::string& port) {
  auto socket = GPtr<GSocket>::adopt(
      g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr));
  if (!socket) return {};
  const auto loopback = GPtr<GInetAddress>::adopt(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  const auto any = GPtr<GSocketAddress>::adopt(g_inet_socket_address_new(loopback, 0));
  g_socket_set_listen_backlog(socket, mostPassages);
  if (!g_socket_bind(socket, any, FALSE, nullptr) || !g_socket_listen(socket, nullptr)) return {};
  const auto taken = GPtr<GSocketAddress>::adopt(g_socket_get_local_address(socket, nullptr));
  if (!taken) return {};
  port = std::to_string(g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(taken.get())));
  return socket;
}

}  // namespace

class NetworkGate::Keeper {
 public:
  Keeper(GSocket* door, Passage::Rules rules)
      : rules_(std::move(rules)), listener_(GPtr<GSocketListener>::adopt(g_socket_listener_new())) {
    g_socket_listener_add_socket(listener_, door, nullptr, nullptr);
    thread_ = std::thread([this] { run(); });
  }
  Keeper(const Keeper&) = delete;
  Keeper& operator=(const Keeper&) = delete;
  ~Keeper() {
    g_cancellable_cancel(cancellable_);
    g_main_context_wakeup(context_.get());
    thread_.join();
  }

 private:
  void run() {
    beginThread("velto-gate");
    g_main_context_push_thread_default(context_.get());
    accept();
    while (!g_cancellable_is_cancelled(cancellable_)) g_main_context_iteration(context_.get(), TRUE);
    for (const auto& passage : passages_)
      if (const auto alive = passage.lock()) alive->cancel();
    while (accepting_ || hasPassages()) g_main_context_iteration(context_.get(), TRUE);
    g_main_context_pop_thread_default(context_.get());
  }
  bool hasPassages() {
    std::erase_if(passages_, [](const auto& passage) { return passage.expired(); });
    return !passages_.empty();
  }
  void accept() {
    accepting_ = true;
    g_socket_listener_accept_async(listener_, cancellable_, accepted, this);
  }
  static void accepted(GObject* listener, GAsyncResult* result, gpointer keeper) noexcept {
    auto& self = *static_cast<Keeper*>(keeper);
    self.accepting_ = false;
    auto client = GPtr<GSocketConnection>::adopt(
        g_socket_listener_accept_finish(G_SOCKET_LISTENER(listener), result, nullptr, nullptr));
    if (g_cancellable_is_cancelled(self.cancellable_)) return;
    if (!client) return self.rest();
    self.hasPassages();
    if (std::ssize(self.passages_) < mostPassages) {
      const auto passage = std::make_shared<Passage>(std::move(client), self.rules_);
      self.passages_.push_back(passage);
      passage->begin();
    }
    self.accept();
  }
  void rest() {
    const GOwned<GSource, g_source_unref> timer(g_timeout_source_new(millisecondsToRest));
    g_source_set_callback(
        timer.get(),
        [](gpointer keeper) noexcept -> gboolean {
          static_cast<Keeper*>(keeper)->accept();
          return G_SOURCE_REMOVE;
        },
        this, nullptr);
    g_source_attach(timer.get(), context_.get());
  }

  const Passage::Rules rules_;
  const GPtr<GSocketListener> listener_;
  const GPtr<GCancellable> cancellable_ = GPtr<GCancellable>::adopt(g_cancellable_new());
  const GOwned<GMainContext, g_main_context_unref> context_{g_main_context_new()};
  std::vector<std::weak_ptr<Passage>> passages_;
  bool accepting_ = false;
  std::thread thread_;
};

NetworkGate::NetworkGate(const Options& options)
    : hostMap_(options.hostMap), isOpen_(options.mayReachLocalNetwork) {}

NetworkGate::~NetworkGate() {
  if (bell_) g_source_remove(bell_);
}

const std::string& NetworkGate::address() {
  if (isOpen_ || !address_.empty()) return address_;
  std::string port;
  door_ = listen(port);
  if (!door_) return address_ = nowhere;
  secret_ = newSecret();
  address_ = "socks5://" + secret_ + "@127.0.0.1:" + port;
  const GOwned<GSource, g_source_unref> bell(g_socket_create_source(door_, G_IO_IN, nullptr));
  g_source_set_callback(bell.get(), G_SOURCE_FUNC(open), this, nullptr);
  bell_ = g_source_attach(bell.get(), nullptr);
  return address_;
}

// Somebody stands at the door. Most ads carry all that they show, and many applications show no others.
int NetworkGate::open(GSocket*, GIOCondition, void* gate) noexcept {
  auto& self = *static_cast<NetworkGate*>(gate);
  self.bell_ = 0;
  // GIO makes its store of settings once, and its proxy settings by way of that. Made first on another thread they would hold
  // a lock there that the main thread waits for, with one of its own that is waited for in turn.
  g_object_unref(g_settings_backend_get_default());
  g_proxy_resolver_get_default();
  self.keeper_ = std::make_unique<Keeper>(self.door_, Passage::Rules{self.secret_, self.hostMap_});
  return G_SOURCE_REMOVE;
}

}  // namespace velto::gtk
