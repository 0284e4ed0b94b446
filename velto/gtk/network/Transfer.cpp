// A libcurl handle set up as a phone's URL session would send the request.
#include "velto/gtk/network/Transfer.h"

#include "velto/gtk/Clock.h"
#include "velto/gtk/network/RequestRules.h"
#include "velto/platform/Redirection.h"

#include <algorithm>

namespace velto::gtk {
namespace {

NSErrorCause causeOf(CURLcode code) {
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return NSErrorCause::NameNotFound;
    case CURLE_COULDNT_CONNECT:
      return NSErrorCause::NotConnected;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
      return NSErrorCause::Untrusted;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_USE_SSL_FAILED:
      return NSErrorCause::SecureConnectionFailed;
    case CURLE_OPERATION_TIMEDOUT:
      return NSErrorCause::TimedOut;
    case CURLE_FILESIZE_EXCEEDED:
      return NSErrorCause::TooLarge;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return NSErrorCause::ConnectionLost;
    default:
      return NSErrorCause::Unknown;
  }
}

}  // namespace

Transfer::Transfer(NSURLRequest request, NSURLSession::Completion completion, const TransportOptions& options,
                   CURLSH* share)
    : request_(std::move(request)),
      completion_(std::move(completion)),
      options_(options),
      share_(share),
      end_(std::chrono::steady_clock::now() + options.longestRequest),
      easy_(curl_easy_init()) {}

CURLcode Transfer::prepare() {
  if (request_.httpMethod.empty()) request_.httpMethod = "GET";
  if (!isToken(request_.httpMethod)) return CURLE_BAD_FUNCTION_ARGUMENT;
  if (!request_.url.scheme()) return CURLE_URL_MALFORMAT;  // libcurl would guess one
  CURL* easy = handle();
  if (!easy) return CURLE_OUT_OF_MEMORY;
  curl_easy_reset(easy);
  setUpConnection(easy, request_.url, options_, share_, connectTo_);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, detail_.data());
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
  curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(options_.largestBody));

  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Transfer::onHeaderLine);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::onBody);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, &Transfer::onProgress);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this);
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);

  setMethodAndBody();
  body_.clear();
  headerLines_ = 0;
  moved_ = 0;
  began_ = SystemClock().monotonicSeconds();
  renewDeadline();
  return curl_easy_setopt(easy, CURLOPT_URL, request_.url.absoluteString().c_str());
}

void Transfer::setMethodAndBody() {
  CURL* easy = handle();
  // Without "Expect" a long body is sent at once.
  headers_.reset(curl_slist_append(nullptr, "Expect:"));
  for (const auto& line : headerLines(request_.allHTTPHeaderFields))
    headers_.reset(curl_slist_append(headers_.release(), line.c_str()));
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());

  const auto& method = request_.httpMethod;
  if (request_.httpBody || method == "POST") {
    const std::string_view body = request_.httpBody ? std::string_view(*request_.httpBody) : "";
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.data());
    if (method != "POST") curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, method.c_str());
  } else if (method == "HEAD") {
    curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
  } else if (method != "GET") {
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, method.c_str());
  }
}

void Transfer::renewDeadline() {
  deadline_ = std::chrono::steady_clock::now() + options_.requestTimeout;
}

size_t Transfer::largestBody() const {
  return std::min(request_.maximumBodySize.value_or(options_.largestBody), options_.largestBody);
}

size_t Transfer::onHeaderLine(char* bytes, size_t, size_t size, void* self) noexcept {
  auto& transfer = *static_cast<Transfer*>(self);
  transfer.renewDeadline();
  transfer.head_.addLine({bytes, size});
  if (++transfer.headerLines_ <= transfer.options_.mostHeaderFields) return size;
  transfer.refused_ = CURLE_WEIRD_SERVER_REPLY;
  return 0;
}

size_t Transfer::onBody(char* bytes, size_t, size_t size, void* self) noexcept {
  auto& transfer = *static_cast<Transfer*>(self);
  transfer.renewDeadline();
  const size_t room = transfer.largestBody() - transfer.body_.size();
  if (size > room) {
    // What a redirect has to say for itself may be longer than the answer that is asked for.
    const bool isRedirect = transfer.info<long>(CURLINFO_RESPONSE_CODE) / 100 == 3;
    transfer.body_.append(bytes, isRedirect ? room : 0);
    if (isRedirect) return size;
    transfer.refused_ = CURLE_FILESIZE_EXCEEDED;
    return 0;
  }
  transfer.body_.append(bytes, size);
  return size;
}

// libcurl calls this also while nothing moves.
int Transfer::onProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) noexcept {
  auto& transfer = *static_cast<Transfer*>(self);
  if (transfer.moved_ != received + sent) transfer.renewDeadline();
  transfer.moved_ = received + sent;
  return 0;
}

template <class T>
T Transfer::info(CURLINFO what) const {
  T value{};
  curl_easy_getinfo(handle(), what, &value);
  return value;
}

bool Transfer::redirect() {
  auto redirection = redirectionFor(request_, static_cast<int>(info<long>(CURLINFO_RESPONSE_CODE)),
                                    head_.fields(), redirects_);
  refusedRedirect_ = std::move(redirection.error);
  if (!redirection.request) return false;
  request_ = std::move(*redirection.request);
  ++redirects_;
  return true;
}

std::shared_ptr<const NSURLResponse> Transfer::response() const {
  const auto* url = info<const char*>(CURLINFO_EFFECTIVE_URL);
  return std::make_shared<NSURLResponse>(NSURLResponse{url ? url : request_.url.absoluteString(), true,
                                                       static_cast<int>(info<long>(CURLINFO_RESPONSE_CODE)),
                                                       head_.fields(), metrics()});
}

NSURLTaskMetrics Transfer::metrics() const {
  const auto at = [this](CURLINFO what) {
    return began_ + static_cast<double>(info<curl_off_t>(what)) / 1e6;
  };
  return {info<long>(CURLINFO_NUM_CONNECTS) == 0, at(CURLINFO_PRETRANSFER_TIME_T),
          at(CURLINFO_STARTTRANSFER_TIME_T)};
}

NSError Transfer::error(CURLcode code) const {
  std::string text = curl_easy_strerror(code);
  if (code == CURLE_OPERATION_TIMEDOUT && end_ <= std::chrono::steady_clock::now())
    text += ": it did not end in " + std::to_string(options_.longestRequest.count() / 1000) + " s";
  else if (code == CURLE_OPERATION_TIMEDOUT)
    text += ": nothing came for " + std::to_string(options_.requestTimeout.count()) + " s";
  else if (refused_ == CURLE_OK && detail_[0])
    text += std::string(": ") + detail_.data();
  return {"libcurl", code, std::move(text), causeOf(code)};
}

void Transfer::finish(CURLcode code) {
  const auto completion = std::exchange(completion_, nullptr);
  if (!completion) return;
  if (refused_ != CURLE_OK) code = refused_;
  if (refusedRedirect_)
    completion(std::nullopt, nullptr, std::move(refusedRedirect_));
  else if (code == CURLE_OK)
    completion(std::move(body_), response(), std::nullopt);
  else
    completion(std::nullopt, nullptr, error(code));
}

}  // namespace velto::gtk
