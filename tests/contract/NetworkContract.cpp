// The URL session: what an answer looks like, on which thread it comes, and how often.
#include "velto/platform/Clock.h"
#include "velto/platform/NSURLSession.h"
#include "velto/platform/Network.h"

#include <atomic>
#include <map>
#include <thread>

#include "PlatformUnderTest.h"

namespace velto {
namespace {

struct Outcome {
  std::optional<std::string> data;
  std::shared_ptr<const NSURLResponse> response;
  std::optional<NSError> error;
};

NSURLRequest requestFor(const std::string& url) {
  return {*NSURL::URLWithString(url), "GET", {}, {}};
}

class NetworkContract : public Contract {
 protected:
  // Runs the request to its end, back on the main thread.
  static Outcome answerTo(NSURLRequest request) {
    auto outcome = std::make_shared<std::optional<Outcome>>();
    platform().urlSession().dataTask(std::move(request), [=](auto data, auto response, auto error) {
      EXPECT_FALSE(queue().isCurrent());
      queue().post([=, result = Outcome{std::move(data), std::move(response), std::move(error)}] {
        EXPECT_FALSE(outcome->has_value()) << "completed twice";
        *outcome = result;
      });
    });
    EXPECT_TRUE(runUntil([&] { return outcome->has_value(); }));
    runFor(std::chrono::milliseconds(20));  // a second completion would come now
    return outcome->value_or(Outcome{});
  }
  static Outcome get(const std::string& path) { return answerTo(requestFor(subject().server() + path)); }
};

TEST_F(NetworkContract, AnswersCarryStatusHeadersAndData) {
  const std::map<std::string, std::pair<int, std::string>> expected{
      {"/page", {200, "hello"}}, {"/empty", {204, ""}}, {"/missing", {404, "not here"}}};
  for (const auto& [path, answer] : expected) {
    const auto got = get(path);
    EXPECT_FALSE(got.error);
    ASSERT_TRUE(got.response && got.response->isHTTP);
    EXPECT_EQ(got.response->statusCode, answer.first);
    EXPECT_EQ(got.data, answer.second) << "present, even without a body";
  }
  const double before = platform().clock().monotonicSeconds();
  const auto page = get("/page").response;
  EXPECT_EQ(page->allHeaderFields.value("x-CONTENT"), "html");
  ASSERT_TRUE(page->metrics);
  EXPECT_LE(before, page->metrics->sent);
  EXPECT_LE(page->metrics->sent, page->metrics->firstByte);
  EXPECT_LE(page->metrics->firstByte, platform().clock().monotonicSeconds());
}

TEST_F(NetworkContract, RequestsCarryMethodHeadersAndBody) {
  NSURLRequest request{
      *NSURL::URLWithString(subject().server() + "/echo"), "POST", {}, std::string("a\0b\xff", 4)};
  request.allHTTPHeaderFields.set("X-Probe", "42");
  EXPECT_EQ(answerTo(request).data, std::string("POST|42|a\0b\xff", 12));
}

TEST_F(NetworkContract, RedirectsAreFollowedButNotForEver) {
  const auto moved = get("/moved");
  ASSERT_TRUE(moved.response);
  EXPECT_EQ(moved.response->url, subject().server() + "/page");
  EXPECT_EQ(moved.data, "hello");
  EXPECT_TRUE(get("/circle").error);
}

TEST_F(NetworkContract, NeitherCookiesNorAnswersAreKept) {
  const int visit = std::stoi(get("/kept").data.value_or(""));
  EXPECT_EQ(get("/kept").data, std::to_string(visit + 1));
}

TEST_F(NetworkContract, TransportFailuresAreErrors) {
  using Cause = NSErrorCause;
  for (const auto& [url, cause] :
       std::map<std::string, Cause>{{subject().refusingServer() + "/", Cause::NotConnected},
                                    {subject().server() + "/cut", Cause::ConnectionLost},
                                    {subject().server() + "/leaves", Cause::RedirectRefused},
                                    {"file:///etc/passwd", Cause::Unknown},
                                    {"velto://page", Cause::Unknown}}) {
    const auto outcome = answerTo(requestFor(url));
    ASSERT_TRUE(outcome.error) << url;
    EXPECT_EQ(outcome.error->cause, cause) << url;
    EXPECT_TRUE(outcome.error->code != 0 && !outcome.error->domain.empty());
    EXPECT_FALSE(outcome.error->localizedDescription.empty());
  }
}

TEST_F(NetworkContract, ABodyLongerThanWantedIsCutOff) {
  for (const char* path : {"/page", "/moved"}) {
    auto request = requestFor(subject().server() + path);
    request.maximumBodySize = 5;
    EXPECT_EQ(answerTo(request).data, "hello");
    request.maximumBodySize = 4;
    const auto cut = answerTo(request);
    ASSERT_TRUE(cut.error && !cut.data) << path;
    EXPECT_EQ(cut.error->cause, NSErrorCause::TooLarge);
  }
}

TEST_F(NetworkContract, ManyRequestsFromAnyThreadCompleteOneAtATime) {
  auto running = std::make_shared<std::atomic<int>>(0);
  auto overlapped = std::make_shared<std::atomic<bool>>(false);
  int completed = 0;
  const auto request = requestFor(subject().server() + "/page");
  auto& session = platform().urlSession();
  std::thread([&] {
    for (int i = 0; i < 20; ++i)
      session.dataTask(request, [=, &completed](auto, auto, auto) {
        if (++*running > 1) *overlapped = true;
        queue().post([&completed] { ++completed; });
        --*running;
      });
  }).join();
  EXPECT_TRUE(runUntil([&] { return completed == 20; }));
  EXPECT_FALSE(*overlapped);
}

TEST_F(NetworkContract, ARequestEndsUncalledWithThePlatform) {
  auto token = std::make_shared<int>();
  platform().urlSession().dataTask(requestFor(subject().server() + "/never"),
                                   [token](auto, auto, auto) { ADD_FAILURE() << "completed after all"; });
  runFor(std::chrono::milliseconds(20));
  EXPECT_EQ(token.use_count(), 2);
  subject().uninstall();
  EXPECT_EQ(token.use_count(), 1);
  subject().install();
}

}  // namespace
}  // namespace velto
