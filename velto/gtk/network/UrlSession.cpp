// The transport thread: takes requests over, lets libcurl drive them, and calls completions.
#include "velto/gtk/network/UrlSession.h"

#include "velto/gtk/Threads.h"
#include "velto/gtk/network/Connection.h"
#include "velto/gtk/network/OpenSockets.h"
#include "velto/gtk/network/Transfer.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <map>

namespace velto::gtk {

// What only the transport thread touches, but for wake().
class UrlSession::Exchange {
 public:
  explicit Exchange(const TransportOptions& options);
  ~Exchange();

  void start(Waiting waiting);
  void connectAhead(NSURL url);
  // No connection made so far is to be used by later requests. They are closed by closeStale(), which is called
  // where nobody wakes this, as soon as none is in use.
  void setStale();
  void closeStale();
  // Whether there is anything to drive: libcurl may have found no memory, or no descriptor.
  bool isOpen() const { return multi_ != nullptr; }
  void open();
  // Drives everything until there is something to do; returns at once after wake(), and when it is not open.
  void turn();
  void wake() { curl_multi_wakeup(multi_.get()); }  // any thread
  // Whether libcurl is busy with what should have ended by now. Any thread.
  bool isHeld() const { return heldFrom_.load() < std::chrono::steady_clock::now(); }

 private:
  using Transfers = std::map<CURL*, std::unique_ptr<Transfer>>;

  void send(std::unique_ptr<Transfer> transfer);
  void end(CURL* easy, CURLcode code);
  void endExpired();
  int millisecondsToNextDeadline() const;

  const TransportOptions& options_;
  GOwned<CURLSH, curl_share_cleanup> share_;
  GOwned<CURLM, curl_multi_cleanup> multi_;
  Transfers transfers_;
  std::unique_ptr<ConnectionAhead> ahead_;
  bool isStale_ = false;
  static constexpr auto never = std::chrono::steady_clock::time_point::max();
  std::atomic<std::chrono::steady_clock::time_point> heldFrom_ = never;
};

UrlSession::Exchange::Exchange(const TransportOptions& options) : options_(options) {
  // Takes milliseconds, so it is done here.
  static const CURLcode once = curl_global_init(CURL_GLOBAL_DEFAULT);
  static_cast<void>(once);
  share_.reset(curl_share_init());
  curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
  open();
}

void UrlSession::Exchange::open() {
  multi_.reset(curl_multi_init());
  curl_multi_setopt(multi_.get(), CURLMOPT_MAX_HOST_CONNECTIONS,
                    static_cast<long>(options_.mostConnectionsToOneHost));
  // One that nobody can wake would leave later requests waiting.
  if (curl_multi_wakeup(multi_.get()) != CURLM_OK) multi_.reset();
}

UrlSession::Exchange::~Exchange() {
  ahead_.reset();
  for (const auto& [easy, transfer] : transfers_) curl_multi_remove_handle(multi_.get(), easy);
  transfers_.clear();  // completions go uncalled
}

void UrlSession::Exchange::connectAhead(NSURL url) {
  ahead_ = std::make_unique<ConnectionAhead>(std::move(url), options_, share_.get(), multi_.get());
}

void UrlSession::Exchange::setStale() {
  ahead_.reset();
  isStale_ = true;
}

// libcurl closes a connection only when it has no room for another, or all of them. TLS sessions are shared, and stay.
void UrlSession::Exchange::closeStale() {
  if (!isStale_ || !transfers_.empty()) return;
  isStale_ = false;
  ahead_.reset();
  open();
}

void UrlSession::Exchange::start(Waiting waiting) {
  if (ahead_ && !ahead_->requested(waiting.request.url)) ahead_.reset();
  send(std::make_unique<Transfer>(std::move(waiting.request), std::move(waiting.completion), options_,
                                  share_.get()));
}

void UrlSession::Exchange::send(std::unique_ptr<Transfer> transfer) {
  if (const CURLcode code = transfer->prepare(); code != CURLE_OK) return transfer->finish(code);
  CURL* easy = transfer->handle();
  if (isStale_) curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L);  // while others hold the old ones
  if (curl_multi_add_handle(multi_.get(), easy) != CURLM_OK) return transfer->finish(CURLE_OUT_OF_MEMORY);
  transfers_.emplace(easy, std::move(transfer));
}

void UrlSession::Exchange::end(CURL* easy, CURLcode code) {
  if (ahead_ && easy == ahead_->handle()) {
    if (!ahead_->ended(code)) ahead_.reset();
    return;
  }
  auto transfer = std::move(transfers_.extract(easy).mapped());
  curl_multi_remove_handle(multi_.get(), easy);
  // What could not be made of a connection would hold up later ones.
  if (code == CURLE_OUT_OF_MEMORY) setStale();
  if (code == CURLE_OK && transfer->redirect()) return send(std::move(transfer));
  transfer->finish(code);
}

void UrlSession::Exchange::endExpired() {
  const auto now = std::chrono::steady_clock::now();
  std::vector<CURL*> expired;
  for (const auto& [easy, transfer] : transfers_)
    if (transfer->deadline() <= now) expired.push_back(easy);
  for (CURL* easy : expired) end(easy, CURLE_OPERATION_TIMEDOUT);
  if (ahead_ && ahead_->deadline() <= now && !ahead_->hear()) setStale();
}

int UrlSession::Exchange::millisecondsToNextDeadline() const {
  using std::chrono::milliseconds;
  const auto now = std::chrono::steady_clock::now();
  if (isStale_ && transfers_.empty()) return 0;
  milliseconds wait(std::numeric_limits<int>::max());  // as good as until wake()
  if (ahead_) wait = std::min(wait, std::chrono::ceil<milliseconds>(ahead_->deadline() - now));
  for (const auto& [easy, transfer] : transfers_)
    wait = std::min(wait, std::chrono::ceil<milliseconds>(transfer->deadline() - now));
  return static_cast<int>(std::max(wait, milliseconds(0)).count());
}

void UrlSession::Exchange::turn() {
  int running = 0;
  auto latest = never;
  for (const auto& [easy, transfer] : transfers_) latest = std::min(latest, transfer->deadline());
  if (latest != never) heldFrom_ = latest + std::chrono::seconds(1);
  curl_multi_perform(multi_.get(), &running);
  heldFrom_ = never;
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left))
    if (message->msg == CURLMSG_DONE) end(message->easy_handle, message->data.result);
  endExpired();
  curl_multi_poll(multi_.get(), nullptr, 0, millisecondsToNextDeadline(), nullptr);
}

UrlSession::UrlSession(TransportOptions options)
    : options_([&] {
        options.requestTimeout = std::max(options.requestTimeout, std::chrono::seconds(1));
        options.sockets = std::make_shared<OpenSockets>();
        return std::move(options);
      }()) {}

void UrlSession::wake() {
  if (!thread_.joinable()) thread_ = std::thread(&UrlSession::run, this);
  if (exchange_) exchange_->wake();
  ordered_.notify_one();
}

void UrlSession::dataTask(NSURLRequest request, Completion completion) {
  std::lock_guard lock(mutex_);
  if (stopping_) return;
  if (unused_ && unused_->host() == request.url.host()) unused_.reset();
  orders_.requests.push_back({std::move(request), std::move(completion)});
  if (exchange_ && exchange_->isHeld()) options_.sockets->hangUp();
  wake();
}

Handle UrlSession::connectAhead(const NSURL& url) {
  std::lock_guard lock(mutex_);
  if (stopping_) return {};
  orders_.ahead = unused_ = url;
  wake();
  return Handle([weak = std::weak_ptr(self_)] {
    if (const auto self = weak.lock()) self->letGo();
  });
}

void UrlSession::letGo() {
  std::lock_guard lock(mutex_);
  if (stopping_ || !std::exchange(unused_, std::nullopt)) return;
  orders_.ahead.reset();
  isStale_ = true;
  wake();
}

// Nobody is woken for it: what is stale can stay until something happens.
void UrlSession::networkChanged() {
  std::lock_guard lock(mutex_);
  isStale_ = exchange_ != nullptr;
}

void UrlSession::run() {
  beginThread("velto-transport");
  Exchange exchange(options_);
  for (auto orders = takeOrders(exchange); orders; orders = takeOrders(exchange)) {
    if (orders->ahead) exchange.connectAhead(std::move(*orders->ahead));
    for (auto& request : orders->requests) exchange.start(std::move(request));
    exchange.turn();
  }
}

// What was asked for since the last time; nothing when the session ends, and the exchange with it.
std::optional<UrlSession::Orders> UrlSession::takeOrders(Exchange& exchange) {
  std::unique_lock lock(mutex_);
  if (!exchange.isOpen()) {
    // Each new order is a new attempt.
    ordered_.wait(lock, [this] { return stopping_ || !orders_.requests.empty() || orders_.ahead; });
    exchange.open();
  }
  exchange_ = stopping_ ? nullptr : &exchange;
  if (stopping_) return std::nullopt;
  if (std::exchange(isStale_, false)) exchange.setStale();
  exchange.closeStale();
  return std::exchange(orders_, {});
}

void UrlSession::stop() {
  Orders dropped;  // goes after the lock
  std::thread ending;
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    std::swap(dropped, orders_);
    ending.swap(thread_);
    if (exchange_) exchange_->wake();
    ordered_.notify_one();
    options_.sockets->hangUp();
  }
  if (ending.joinable()) ending.join();
}

}  // namespace velto::gtk
