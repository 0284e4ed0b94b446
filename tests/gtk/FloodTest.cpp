// Servers that never come to an end: what they send is bounded in time and memory, and ends in an error.
#include "velto/gtk/network/UrlSession.h"

#include <sys/resource.h>

#include <future>

#include "../support/Folder.h"
#include "../support/MainLoop.h"
#include "Http2Server.h"

namespace velto::test {
namespace {

using namespace std::literals;

enum Frame { Data = 0, Headers = 1, Reset = 3, Settings = 4, Push = 5, Ping = 6, Continuation = 9 };
constexpr int endOfHeaders = 4;

std::string many(const std::string& text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) all += text;
  return all;
}

// The error of one request to a server that floods.
std::optional<NSError> errorOf(const gtk::TransportOptions& options, std::optional<size_t> longest) {
  gtk::UrlSession session(options);
  std::promise<std::optional<NSError>> told;
  NSURLRequest request{*NSURL::URLWithString("https://"s + Http2Server::host + "/"), "GET", {}, {}};
  request.maximumBodySize = longest;
  session.dataTask(std::move(request), [&](auto, auto, auto error) { told.set_value(std::move(error)); });
  // Where the server keeps libcurl so busy that it looks at no clock, the next request of the application ends that.
  auto answer = told.get_future();
  while (answer.wait_for(1s) != std::future_status::ready)
    session.dataTask({*NSURL::URLWithString("http://127.0.0.1:1/"), "GET", {}, {}}, [](auto, auto, auto) {});
  return answer.get();
}

long mebibytesAtMost() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(Flood, OverHttp2EndsInAnErrorAndInLittleMemory) {
  const std::string ok = "\x88", early = "\x08\3103"s, field = "\0\1a\3bcd"s;
  // One long field, put into the table and meant again by each byte that follows.
  const std::string bomb = "\x40\1a\x7f\x81\x1e"s + std::string(4000, 'b');
  const auto begun = Http2Server::frame(Headers, 0, ok);
  const auto answered = Http2Server::frame(Headers, endOfHeaders, ok);
  const std::pair<const char*, Http2Server::Frames> table[] = {
      {"a head without end", {begun, Http2Server::frame(Continuation, 0, many(field, 2000))}},
      {"a head of nothing", {begun, Http2Server::frame(Continuation, 0, "")}},
      {"a head that unfolds",
       {begun, Http2Server::frame(Continuation, 0, bomb + std::string(12000, '\xbe'))}},
      {"interim answers", {"", Http2Server::frame(Headers, endOfHeaders, early)}},
      {"trailers", {answered, Http2Server::frame(Headers, endOfHeaders, many(field, 2000))}},
      {"a body", {answered, Http2Server::frame(Data, 0, std::string(16000, 'x'))}},
      {"a body of nothing", {answered, Http2Server::frame(Data, 0, "")}},
      {"pings", {"", many(Http2Server::frame(Ping, 0, "12345678", 0), 100)}},
      {"settings", {"", many(Http2Server::frame(Settings, 0, "\0\4\0\1\0\0"s, 0), 100)}},
      {"resets", {"", many(Http2Server::frame(Reset, 0, "\0\0\0\7"s), 100)}},
      {"promises", {"", Http2Server::frame(Push, endOfHeaders, "\0\0\0\2"s + ok)}},
      {"frames of no known kind", {"", Http2Server::frame(99, 0, std::string(16000, 'x'), 0)}}};
  TemporaryFolder folder;
  Http2Server server(folder.path());
  // Kept far from the silence that would end it.
  gtk::TransportOptions options{
      .longestRequest = 500ms, .caFile = server.caFile(), .hostMap = {{Http2Server::host, server.address()}}};
  for (const auto& [what, frames] : table) {
    ASSERT_TRUE(runUntil([&] { return server.ended >= server.connections; }));
    server.flood(frames);
    const long before = mebibytesAtMost();
    const auto error = errorOf(options, size_t{8} << 20);
    EXPECT_TRUE(error) << what;
    EXPECT_LT(mebibytesAtMost() - before, 64) << what;
  }
}

}  // namespace
}  // namespace velto::test
