// The transport with a memory that fails at each of libcurl's calls in turn: every request is answered once.
#include "velto/gtk/network/UrlSession.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <future>

#include "../support/LoopbackServer.h"

namespace velto {
namespace {

std::atomic<int> left{0};  // calls until one fails; 0 or below: none does

bool fails() {
  return left > 0 && left.fetch_sub(1) == 1;
}

// Before the transport does it: of several initialisations the first counts.
[[maybe_unused]] const CURLcode installed = curl_global_init_mem(
    CURL_GLOBAL_DEFAULT, [](size_t size) { return fails() ? nullptr : std::malloc(size); }, std::free,
    [](void* old, size_t size) { return fails() ? nullptr : std::realloc(old, size); },
    [](const char* text) { return fails() ? nullptr : strdup(text); },
    [](size_t count, size_t size) { return fails() ? nullptr : std::calloc(count, size); });

TEST(TransportMemory, EachRequestIsAnsweredOnceWhicheverCallFails) {
  test::LoopbackServer server;
  server->Post("/page", [](const auto&, auto& response) { response.set_content("body", "text/plain"); });
  server.start();
  const NSURLRequest request{*NSURL::URLWithString(server.address("/page")), "POST", {}, "body"};
  const auto errorOf = [&](gtk::UrlSession& session) {
    std::promise<std::optional<NSError>> answered;
    session.dataTask(request, [&](auto data, auto response, auto error) {
      EXPECT_TRUE(error || (data == "body" && response && response->statusCode == 200));
      answered.set_value(error);
    });
    return answered.get_future().get();
  };
  int failed = 0;
  for (int n = 1; left >= 0 && !HasFailure(); ++n) {
    ASSERT_LT(n, 5000);
    gtk::UrlSession session({.requestTimeout = std::chrono::seconds(1),
                             .mayReachLocalNetwork = true});  // what libcurl forgets ends with it
    EXPECT_FALSE(errorOf(session)) << "what is made once is there";
    left = n;
    const bool hasFailed = errorOf(session).has_value();
    failed += hasFailed ? 1 : 0;
    if (left > 0) left = -1;  // there are no more calls
    EXPECT_FALSE(hasFailed && errorOf(session)) << "nor do later ones suffer: " << n;
  }
  EXPECT_GT(failed, 10);
}

}  // namespace
}  // namespace velto
