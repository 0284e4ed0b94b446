// What developers are told on Linux: the causes of a transport's failures, GLib's log, the trace file.
#include "velto/gtk/network/UrlSession.h"
#include "velto/gtk/services/DeveloperOutput.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <glib.h>
#include <gtest/gtest.h>

#include <future>
#include <map>

#include "../support/Folder.h"
#include "sandbox/Server.h"

namespace velto::gtk {
namespace {

TEST(DeveloperTest, EachFaultOfTheNetworkHasItsCause) {
  test::TemporaryFolder folder;
  std::string rules;
  for (const std::string tls : {"refuse", "wrong-name", "expired", "untrusted"})
    rules += R"({"when":{"endpoint":")" + tls + R"("},"tls":")" + tls + R"("},)";
  sandbox::Options options;
  options.dataFolder = folder.path();
  options.scenarioText = R"({"rules":[)" + rules + R"(
      {"when":{"path":"/head"},"answer":{"fault":{"cut":"headers"}}},
      {"when":{"path":"/body"},"answer":{"body":"a longer body","fault":{"cut":5}}},
      {"when":{"path":"/length"},"answer":{"body":"short","fault":{"contentLength":5000}}},
      {"when":{"path":"/late"},"answer":{"body":"late","delayMs":600000}},
      {"when":{"path":"/large"},"answer":{"body":"larger than wanted"}}]})";
  sandbox::Server server(options);
  server.start();
  const std::string address = "127.0.0.1:" + std::to_string(server.port());
  UrlSession session({.requestTimeout = std::chrono::seconds(1),
                      .caFile = server.caFile(),
                      .hostMap = {{"closed.publishers.velto.example", "127.0.0.1:1"},
                                  {"*.publishers.velto.example", address}}});
  using Cause = NSErrorCause;
  const std::map<std::string, Cause> causes{{"refuse", Cause::SecureConnectionFailed},
                                            {"wrong-name", Cause::Untrusted},
                                            {"expired", Cause::Untrusted},
                                            {"untrusted", Cause::Untrusted},
                                            {"closed", Cause::NotConnected},
                                            {"good/head", Cause::ConnectionLost},
                                            {"good/body", Cause::ConnectionLost},
                                            {"good/length", Cause::ConnectionLost},
                                            {"good/late", Cause::TimedOut},
                                            {"good/large", Cause::TooLarge}};
  for (const auto& [where, cause] : causes) {
    const auto slash = std::min(where.find('/'), where.size());
    const auto url = "https://" + where.substr(0, slash) + ".publishers.velto.example" + where.substr(slash);
    std::promise<std::optional<NSError>> answered;
    session.dataTask({*NSURL::URLWithString(url), "GET", {}, {}, 10},
                     [&](auto, auto, auto error) { answered.set_value(error); });
    const auto error = answered.get_future().get();
    ASSERT_TRUE(error) << where;
    EXPECT_EQ(error->cause, cause) << where << ": " << error->localizedDescription;
  }

  std::promise<void> answered;
  session.dataTask({*NSURL::URLWithString("https://good.publishers.velto.example/"), "GET", {}, {}},
                   [&](auto, auto, auto) { answered.set_value(); });
  answered.get_future().get();
  int kept = 0;  // connections to the server
  for (int file = 3; file < 1024; ++file) {
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    if (getpeername(file, reinterpret_cast<sockaddr*>(&peer), &size) || ntohs(peer.sin_port) != server.port())
      continue;
    ++kept;
    EXPECT_TRUE(fcntl(file, F_GETFD) & FD_CLOEXEC) << "programs that are started would hold it, too";
  }
  EXPECT_GT(kept, 0);
}

TEST(DeveloperTest, TheLogIsStructuredAndShownToThoseWhoAskForIt) {
  DeveloperOutput output;
  g_unsetenv("G_MESSAGES_DEBUG");
  EXPECT_FALSE(output.wants(LogLevel::Info) || output.wants(LogLevel::Debug));
  g_setenv("G_MESSAGES_DEBUG", "Velto", TRUE);
  EXPECT_TRUE(output.wants(LogLevel::Info) && output.wants(LogLevel::Debug));

  static std::map<std::string, std::string> written;
  g_log_set_writer_func(
      [](GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
        for (gsize i = 0; i < count; ++i)
          if (fields[i].length >= 0)  // as the library gives them
            written[fields[i].key].assign(static_cast<const char*>(fields[i].value),
                                          size_t(fields[i].length));
        return level == G_LOG_LEVEL_INFO ? G_LOG_WRITER_HANDLED : G_LOG_WRITER_UNHANDLED;
      },
      nullptr, nullptr);
  output.log({LogLevel::Info, "home 7: removed", {{"placement", "home"}, {"load", "7"}}});
  EXPECT_EQ(written, (std::map<std::string, std::string>{{"GLIB_DOMAIN", "Velto"},
                                                         {"MESSAGE", "home 7: removed"},
                                                         {"VELTO_PLACEMENT", "home"},
                                                         {"VELTO_LOAD", "7"}}));
}

TEST(DeveloperTest, ATraceIsInItsFilePieceByPiece) {
  test::TemporaryFolder folder;
  const auto file = folder.write("trace.json", "of an earlier run, longer than this one");
  g_setenv("VELTO_TRACE", file.c_str(), TRUE);
  const auto write = DeveloperOutput().traceOutput();
  write("[\n");
  write("{}");
  EXPECT_EQ(test::textOf(file), "[\n{}") << "whatever happens next";
  g_setenv("VELTO_TRACE", folder.path("none/trace.json").c_str(), TRUE);
  EXPECT_FALSE(DeveloperOutput().traceOutput());
  g_unsetenv("VELTO_TRACE");
  EXPECT_FALSE(DeveloperOutput().traceOutput());
}

}  // namespace
}  // namespace velto::gtk
