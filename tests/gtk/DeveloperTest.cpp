// What developers are told on Linux: why a load failed on its way, GLib's log, the trace file.
#include "velto/ads/VeltoAdManager.h"
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/services/DeveloperOutput.h"
#include "velto/velto.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <glib.h>
#include <gtest/gtest.h>

#include <map>

#include "../support/Folder.h"
#include "../support/MainLoop.h"
#include "sandbox/Server.h"

namespace velto::gtk {
namespace {

// On the way from an ad server that spoils it. What servers answer is the headless platform's to test.
TEST(DeveloperTest, EachFaultOfTheSandboxHasItsReason) {
  using Why = VeltoAdEndReason;
  test::TemporaryFolder folder;
  std::string rules;
  for (const std::string tls : {"refuse", "wrong-name", "expired", "untrusted"})
    rules += R"({"when":{"endpoint":")" + tls + R"("},"tls":")" + tls + R"("},)";
  for (const auto& [name, answer] : std::map<std::string, std::string>{
           {"head", R"({"fault":{"cut":"headers"}})"},
           {"body", R"({"body":"a longer body","fault":{"cut":5}})"},
           {"length", R"({"body":"short","fault":{"contentLength":5000}})"},
           {"drops", R"({"body":"slow","fault":{"slow":{"bytes":1,"everyMs":10}}})"},
           {"late", R"({"body":"late","delayMs":600000})"},
           {"away", R"({"status":302,"headers":{"Location":"http://elsewhere.example/"}})"},
           {"good", "204"}})
    rules += R"({"when":{"endpoint":")" + name + R"("},"answer":)" + answer + "},";
  rules.pop_back();
  sandbox::Options options;
  options.dataFolder = folder.path();
  options.scenarioText = R"({"rules":[)" + rules + "]}";
  sandbox::Server server(options);
  server.start();
  const std::string address = "127.0.0.1:" + std::to_string(server.port());
  install({.applicationIdentifier = "org.example.developer",
           .dataFolder = folder.path("store"),
           .caFile = server.caFile(),
           .hostMap = {{"closed.publishers.velto.example", "127.0.0.1:1"}, {"*.velto.example", address}},
           .requestTimeout = std::chrono::seconds(5)});
  VeltoFramework::addVeltoKey("key");
  for (const auto& [where, why] : std::map<std::string, Why>{{"refuse", Why::SecureConnectionFailed},
                                                             {"wrong-name", Why::Untrusted},
                                                             {"expired", Why::Untrusted},
                                                             {"untrusted", Why::Untrusted},
                                                             {"closed", Why::NotConnected},
                                                             {"head", Why::ConnectionLost},
                                                             {"body", Why::ConnectionLost},
                                                             {"length", Why::ConnectionLost},
                                                             {"drops", Why::KindMissing},
                                                             {"late", Why::TimedOut},
                                                             {"away", Why::RedirectRefused},
                                                             {"good", Why::StatusNoFill}}) {
    VeltoFramework::setEndpoint(where);
    std::optional<VeltoErrorAd> error;
    VeltoAdManager::fetchFor(VeltoAdTypeBanner, VeltoBannerSize320x50, {},
                             [&](const auto&, const auto& told) { error = told; });
    ASSERT_TRUE(test::runUntil([&] { return error.has_value(); })) << where;
    EXPECT_EQ(error->reason, why) << where << ": " << error->explanation();
  }

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
  uninstall();
}

// As G_MESSAGES_DEBUG says; later versions look at that only once.
void showInLog(const char* domain) {
  g_setenv("G_MESSAGES_DEBUG", domain, TRUE);
#if GLIB_CHECK_VERSION(2, 80, 0)
  const char* domains[] = {domain, nullptr};
  g_log_writer_default_set_debug_domains(domains);
#endif
}

TEST(DeveloperTest, TheLogIsStructuredAndShownToThoseWhoAskForIt) {
  DeveloperOutput output;
  showInLog("another");
  EXPECT_FALSE(output.wants(LogLevel::Info) || output.wants(LogLevel::Debug));
  showInLog("Velto");
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

TEST(DeveloperTest, ATraceIsInItsFilePieceByPieceAndMarksAreTheProfilers) {
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

  EXPECT_FALSE(DeveloperOutput().markOutput()) << "nobody records";
#ifdef VELTO_HAS_PROFILER
  g_setenv("SYSPROF_CONTROL_FD", "-1", TRUE);
  const auto mark = DeveloperOutput().markOutput();
  ASSERT_TRUE(mark);
  mark({1, 2, "load", "home 7"});  // into nothing
  g_unsetenv("SYSPROF_CONTROL_FD");
#endif
}

}  // namespace
}  // namespace velto::gtk
