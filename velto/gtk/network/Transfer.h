// One request on its way, redirects included: the libcurl handle, what has come so far, and whom to tell.
// Transport thread.
#pragma once

#include "velto/gtk/network/Connection.h"
#include "velto/gtk/network/ResponseHead.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>

namespace velto::gtk {

class Transfer {
 public:
  using Time = std::chrono::steady_clock::time_point;

  Transfer(NSURLRequest request, NSURLSession::Completion completion, const TransportOptions& options,
           CURLSH* share);
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  CURL* handle() const { return easy_.get(); }

  // Sets the handle up for the request as it stands now. A code other than CURLE_OK: it cannot be sent.
  CURLcode prepare();

  // Whether the exchange, which just ended well, sends on to another place. The request is then the one for
  // there, to be prepared. A redirect that is not followed is what finish() answers with.
  bool redirect();

  // When it fails unless something comes or goes, or at the latest.
  Time deadline() const { return std::min(deadline_, end_); }

  // Answers with what has come, or with the error. Once.
  void finish(CURLcode code);

 private:
  static size_t onHeaderLine(char* bytes, size_t, size_t size, void* self) noexcept;
  static size_t onBody(char* bytes, size_t, size_t size, void* self) noexcept;
  static int onProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) noexcept;

  void setMethodAndBody();
  void renewDeadline();
  size_t largestBody() const;
  std::shared_ptr<const NSURLResponse> response() const;
  NSURLTaskMetrics metrics() const;
  NSError error(CURLcode code) const;
  template <class T>
  T info(CURLINFO what) const;

  NSURLRequest request_;
  NSURLSession::Completion completion_;
  const TransportOptions& options_;
  CURLSH* share_;
  CurlList headers_, connectTo_;
  std::array<char, CURL_ERROR_SIZE> detail_{};
  int redirects_ = 0;
  double began_ = 0;  // monotonic seconds
  std::optional<NSError> refusedRedirect_;
  const Time end_;
  Time deadline_;
  curl_off_t moved_ = 0;         // bytes of bodies, both ways
  CURLcode refused_ = CURLE_OK;  // why a callback ended the exchange
  ResponseHead head_;
  size_t headerLines_ = 0;
  std::string body_;
  CurlEasy easy_;  // goes first: it refers to the others
};

}  // namespace velto::gtk
