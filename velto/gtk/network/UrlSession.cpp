// The transport thread: takes requests over, lets libcurl drive them, and calls completions.
#include "velto/gtk/network/UrlSession.h"

#include "velto/gtk/Threads.h"
#include "velto/gtk/network/Transfer.h"

#include <algorithm>
#include <limits>
#include <map>

namespace velto::gtk {

// What only the transport thread touches, but for wake().
class UrlSession::Exchange {
 public:
  explicit Exchange(const TransportOptions& options);
  ~Exchange();

  void start(Waiting waiting);
  // Drives everything until there is something to do; returns at once after wake().
  void turn();
  void wake() { curl_multi_wakeup(multi_.get()); }  // any thread

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
};

UrlSession::Exchange::Exchange(const TransportOptions& options) : options_(options) {
  // Takes milliseconds, so it is done here.
  static const CURLcode once = curl_global_init(CURL_GLOBAL_DEFAULT);
  static_cast<void>(once);
  share_.reset(curl_share_init());
  curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
  multi_.reset(curl_multi_init());
  curl_multi_setopt(multi_.get(), CURLMOPT_MAX_HOST_CONNECTIONS,
                    static_cast<long>(options_.mostConnectionsToOneHost));
}

UrlSession::Exchange::~Exchange() {
  for (const auto& [easy, transfer] : transfers_) curl_multi_remove_handle(multi_.get(), easy);
  transfers_.clear();  // completions go uncalled
}

void UrlSession::Exchange::start(Waiting waiting) {
  send(std::make_unique<Transfer>(std::move(waiting.request), std::move(waiting.completion), options_,
                                  share_.get()));
}

void UrlSession::Exchange::send(std::unique_ptr<Transfer> transfer) {
  if (const CURLcode code = transfer->prepare(); code != CURLE_OK) return transfer->finish(code);
  CURL* easy = transfer->handle();
  curl_multi_add_handle(multi_.get(), easy);
  transfers_.emplace(easy, std::move(transfer));
}

void UrlSession::Exchange::end(CURL* easy, CURLcode code) {
  auto transfer = std::move(transfers_.extract(easy).mapped());
  curl_multi_remove_handle(multi_.get(), easy);
  if (code == CURLE_OK && transfer->redirect()) return send(std::move(transfer));
  transfer->finish(code);
}

void UrlSession::Exchange::endExpired() {
  const auto now = std::chrono::steady_clock::now();
  std::vector<CURL*> expired;
  for (const auto& [easy, transfer] : transfers_)
    if (transfer->deadline() <= now) expired.push_back(easy);
  for (CURL* easy : expired) end(easy, CURLE_OPERATION_TIMEDOUT);
}

int UrlSession::Exchange::millisecondsToNextDeadline() const {
  using std::chrono::milliseconds;
  const auto now = std::chrono::steady_clock::now();
  milliseconds wait(std::numeric_limits<int>::max());  // as good as until wake()
  for (const auto& [easy, transfer] : transfers_)
    wait = std::min(wait, std::chrono::ceil<milliseconds>(transfer->deadline() - now));
  return static_cast<int>(std::max(wait, milliseconds(0)).count());
}

void UrlSession::Exchange::turn() {
  int running = 0;
  curl_multi_perform(multi_.get(), &running);
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left))
    if (message->msg == CURLMSG_DONE) end(message->easy_handle, message->data.result);
  endExpired();
  curl_multi_poll(multi_.get(), nullptr, 0, millisecondsToNextDeadline(), nullptr);
}

UrlSession::UrlSession(TransportOptions options)
    : options_([&] {
        options.requestTimeout = std::max(options.requestTimeout, std::chrono::seconds(1));
        return std::move(options);
      }()) {}

void UrlSession::dataTask(NSURLRequest request, Completion completion) {
  std::lock_guard lock(mutex_);
  if (stopping_) return;
  waiting_.push_back({std::move(request), std::move(completion)});
  if (!thread_.joinable()) thread_ = std::thread(&UrlSession::run, this);
  if (exchange_) exchange_->wake();
}

void UrlSession::run() {
  beginThread("velto-transport");
  Exchange exchange(options_);
  for (auto waiting = takeWaiting(&exchange); waiting; waiting = takeWaiting(&exchange)) {
    for (auto& request : *waiting) exchange.start(std::move(request));
    exchange.turn();
  }
}

// What was asked for since the last time; nothing when the session ends, and the exchange with it.
std::optional<std::vector<UrlSession::Waiting>> UrlSession::takeWaiting(Exchange* exchange) {
  std::lock_guard lock(mutex_);
  exchange_ = stopping_ ? nullptr : exchange;
  if (stopping_) return std::nullopt;
  return std::exchange(waiting_, {});
}

void UrlSession::stop() {
  std::vector<Waiting> dropped;  // goes after the lock
  std::thread ending;
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    dropped.swap(waiting_);
    ending.swap(thread_);
    if (exchange_) exchange_->wake();
  }
  if (ending.joinable()) ending.join();
}

}  // namespace velto::gtk
