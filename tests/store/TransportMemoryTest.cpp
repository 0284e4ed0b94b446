// The transport with a memory that fails at each of libcurl's calls in turn: every request is answered once.
#include "velto/gtk/network/UrlSession.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <future>

#include "../support/Folder.h"
#include "../support/LoopbackServer.h"
#include "../support/MainLoop.h"

namespace velto {
namespace {

std::atomic<int> left{0};       // calls until one fails; 0 or below: none does
std::atomic<bool> none{false};  // all fail

bool fails() {
  return none || (left > 0 && left.fetch_sub(1) == 1);
}

// Before the transport does it: of several initialisations the first counts.
[[maybe_unused]] const CURLcode installed = curl_global_init_mem(
    CURL_GLOBAL_DEFAULT, [](size_t size) { return fails() ? nullptr : std::malloc(size); }, std::free,
    [](void* old, size_t size) { return fails() ? nullptr : std::realloc(old, size); },
    [](const char* text) { return fails() ? nullptr : strdup(text); },
    [](size_t count, size_t size) { return fails() ? nullptr : std::calloc(count, size); });

const auto answer = [](const auto&, auto& response) { response.set_content("body", "text/plain"); };

std::optional<NSError> errorOf(gtk::UrlSession& session, const std::string& address) {
  std::promise<std::optional<NSError>> answered;
  session.dataTask({*NSURL::URLWithString(address), "POST", {}, "body"},
                   [&](auto data, auto response, auto error) {
                     EXPECT_TRUE(error || (data == "body" && response && response->statusCode == 200));
                     answered.set_value(error);
                   });
  return answered.get_future().get();
}

// Of the thread that has that name: R, S …
char stateOf(const std::string& name) {
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
    if (const auto text = test::textOf(task.path() / "stat");
        text.find("(" + name + ")") != std::string::npos)
      return text[text.rfind(')') + 2];
  return 0;
}

TEST(TransportMemory, WhereLibcurlCannotBeginRequestsFailAndTheThreadRests) {
  test::LoopbackServer server;
  server->Post("/page", answer);
  server.start();
  const gtk::TransportOptions options{.mayReachLocalNetwork = true};
  gtk::UrlSession session(options);
  none = true;
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(errorOf(session, server.address("/page")));
  EXPECT_TRUE(test::runUntil([] { return stateOf("velto-transport") == 'S'; }));
  none = false;
  EXPECT_FALSE(errorOf(session, server.address("/page")));

  // No descriptor is left to wake its thread with.
  gtk::UrlSession other(options);
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(next);
  const rlimit full{static_cast<rlim_t>(next), limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &full);
  EXPECT_TRUE(errorOf(other, server.address("/page")));
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_FALSE(errorOf(other, server.address("/page")));
}

TEST(TransportMemory, EachRequestIsAnsweredOnceWhicheverCallFails) {
  test::LoopbackServer server;
  server->Post("/page", answer);
  server.start();
  const auto address = server.address("/page");
  int failed = 0;
  for (int n = 1; left >= 0 && !HasFailure(); ++n) {
    ASSERT_LT(n, 5000);
    gtk::UrlSession session({.mayReachLocalNetwork = true});  // what libcurl forgets ends with it
    EXPECT_FALSE(errorOf(session, address)) << "what is made once is there";
    left = n;
    const bool hasFailed = errorOf(session, address).has_value();
    failed += hasFailed ? 1 : 0;
    if (left > 0) left = -1;  // there are no more calls
    EXPECT_FALSE(hasFailed && errorOf(session, address)) << "nor do later ones suffer: " << n;
  }
  EXPECT_GT(failed, 10);
}

}  // namespace
}  // namespace velto
