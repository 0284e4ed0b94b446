// What the transport and the engine's gate refuse: places of the user's own network, old TLS, bodies that unfold.
#include "velto/gtk/network/LocalAddress.h"
#include "velto/gtk/network/NetworkGate.h"
#include "velto/gtk/network/UrlSession.h"
#include "velto/platform/foundation/GMemory.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>

#include "../support/LoopbackServer.h"
#include "../support/MainLoop.h"
#include "../support/Program.h"

namespace velto::gtk {
namespace {

using test::LoopbackServer;

TEST(Network, AddressesThatTheInternetDoesNotLeadToAreLocal) {
  const std::pair<bool, std::vector<const char*>> table[] = {
      {true,
       {"127.0.0.1",
        "127.255.0.1",
        "0.0.0.0",
        "10.1.2.3",
        "172.16.0.1",
        "172.31.255.255",
        "192.168.1.1",
        "169.254.169.254",
        "100.64.0.1",
        "198.18.0.1",
        "224.0.0.251",
        "255.255.255.255",
        "::1",
        "::",
        "::ffff:10.0.0.1",
        "::127.0.0.1",
        "64:ff9b::c0a8:101",
        "64:ff9b:1::1",
        "fc00::1",
        "fdff::1",
        "fe80::1",
        "fec0::1",
        "ff02::fb",
        "2002:7f00:1::1"}},
      {false,
       {"8.8.8.8", "172.15.255.255", "172.32.0.1", "100.63.0.1", "100.128.0.1", "192.169.0.1", "169.253.0.1",
        "198.17.0.1", "223.255.255.255", "2a00::1", "64:ff9b::808:808"}}};
  for (const auto& [isLocal, addresses] : table)
    for (const char* text : addresses) {
      const auto address = GPtr<GInetAddress>::adopt(g_inet_address_new_from_string(text));
      EXPECT_EQ(isLocalAddress(address), isLocal) << text;
      EXPECT_EQ(isLocalName(text), isLocal) << text;
    }
  for (const char* name :
       {"localhost", "LOCALHOST.", "router", "a.localhost", "printer.local", "nas.home.arpa", "x.internal",
        "127.1", "0177.0.0.1", "0x7f.0.0.1", "127.0.0.1.", "127.0.0%2e1", "3232235777"})
    EXPECT_TRUE(isLocalName(name)) << name;
  for (const char* name :
       {"ads.example", "local.example", "localhost.example", "ads.example.", "8.8", "1.example"})
    EXPECT_FALSE(isLocalName(name)) << name;
}

// The error of a request, or that there is none.
std::optional<NSErrorCause> errorOf(const TransportOptions& options, const std::string& address,
                                    std::optional<size_t> longest = {}) {
  UrlSession session(options);
  std::promise<std::optional<NSErrorCause>> cause;
  NSURLRequest request{*NSURL::URLWithString(address), "GET", {}, {}};
  request.maximumBodySize = longest;
  session.dataTask(std::move(request), [&](auto, auto, auto error) {
    cause.set_value(error ? std::optional(error->cause) : std::nullopt);
  });
  return cause.get_future().get();
}

TEST(Network, RequestsOfTheLibraryEndBeforeTheUsersNetworkAlsoWhenSentOn) {
  LoopbackServer server;
  std::atomic<int> reached = 0;
  server->Get("/page", [&](const auto&, auto& response) {
    ++reached;
    response.set_content("page", "text/plain");
  });
  server->Get("/sent-on",
              [&](const auto&, auto& response) { response.set_redirect(server.address("/page")); });
  server.start();
  const std::string place = server.address().substr(strlen("http://"));
  TransportOptions options;
  options.hostMap = {{"ads.example", place}};
  EXPECT_EQ(errorOf(options, server.address("/page")), NSErrorCause::NotConnected);
  EXPECT_EQ(errorOf(options, "http://localhost:" + place.substr(place.find(':') + 1) + "/page"),
            NSErrorCause::NotConnected);
  EXPECT_EQ(errorOf(options, "http://ads.example/sent-on"), NSErrorCause::NotConnected);
  EXPECT_EQ(reached, 0);
  EXPECT_EQ(errorOf(options, "http://ads.example/page"), std::nullopt)
      << "what the application maps is its own choice";
  // A proxy of the user's may well stand in that network; it resolves names itself.
  g_setenv("http_proxy", server.address().c_str(), TRUE);
  for (const char* local : {"http://127.0.0.2/page", "http://router/page"})
    EXPECT_EQ(errorOf(options, local), NSErrorCause::NotConnected);
  EXPECT_EQ(errorOf(options, "http://other.example/page"), std::nullopt);
  g_unsetenv("http_proxy");
  options.mayReachLocalNetwork = true;
  EXPECT_EQ(errorOf(options, server.address("/sent-on")), std::nullopt);
  EXPECT_EQ(reached, 2);
}

TEST(Network, APlainServerThatHangsHoldsNoOtherRequestToItUp) {
  LoopbackServer server;
  std::promise<void> hangs, answered;
  server->Get("/hangs", [&](const auto&, auto&) {
    hangs.set_value();
    server.waitForEnd();
  });
  server->Get("/", [&](const auto&, auto& response) { response.set_content("page", "text/plain"); });
  server.start();
  TransportOptions options;
  options.mayReachLocalNetwork = true;
  UrlSession session(options);
  const auto ask = [&](const std::string& path, UrlSession::Completion completion) {
    session.dataTask({*NSURL::URLWithString(server.address(path)), "GET", {}, std::nullopt},
                     std::move(completion));
  };
  ask("/hangs", [](auto, auto, auto) {});
  hangs.get_future().wait();
  ask("/", [&](auto, auto, auto) { answered.set_value(); });
  EXPECT_EQ(answered.get_future().wait_for(std::chrono::seconds(120)), std::future_status::ready);
}

TEST(Network, AHeadOfMoreFieldsThanAnyServerHasIsRefused) {
  LoopbackServer server;
  server->Get(R"(/(\d+))", [&](const auto& request, auto& response) {
    for (int i = std::stoi(request.matches[1]); i > 0; --i) response.headers.emplace("X", "1");
  });
  server.start();
  TransportOptions options;
  options.mayReachLocalNetwork = true;
  EXPECT_EQ(errorOf(options, server.address("/1900")), std::nullopt);
  EXPECT_NE(errorOf(options, server.address("/2000")), std::nullopt);
}

TEST(Network, ABodyThatUnfoldsIsCutOffAndOldTLSRefused) {
  // A mebibyte of zeros for each of a thousand bytes.
  std::string zeros(size_t{64} << 20, '\0'), packed(zeros.size() / 100, '\0');
  const auto packer = GPtr<GZlibCompressor>::adopt(g_zlib_compressor_new(G_ZLIB_COMPRESSOR_FORMAT_GZIP, 9));
  gsize read = 0, written = 0;
  g_converter_convert(G_CONVERTER(packer.get()), zeros.data(), zeros.size(), packed.data(), packed.size(),
                      G_CONVERTER_INPUT_AT_END, &read, &written, nullptr);
  packed.resize(written);
  LoopbackServer server;
  server->Get("/", [&](const auto&, auto& response) {
    response.set_header("Content-Encoding", "gzip");
    response.set_content(packed, "application/x-packed");  // which the server itself does not pack
  });
  server.start();
  TransportOptions options;
  options.mayReachLocalNetwork = true;
  EXPECT_EQ(errorOf(options, server.address("/"), size_t{1} << 20), NSErrorCause::TooLarge);
  EXPECT_EQ(errorOf(options, server.address("/")), std::nullopt) << "it is a body";

  const test::TemporaryFolder folder;
  options.caFile = folder.path("certificate");
  test::run(
      {"sh", "-c",
       "exec 2>&-; openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 -subj "
       "/CN=test -addext subjectAltName=IP:127.0.0.1 -keyout " +
           folder.path("key") + " -out " + folder.path("certificate")});
  for (const auto& [version, error] :
       {std::pair{"-tls1_1", std::optional(NSErrorCause::SecureConnectionFailed)}, {"-tls1_2", {}}}) {
    test::Process old({"openssl", "s_server", version, "-www", "-cipher", "ALL:@SECLEVEL=0", "-accept",
                       "127.0.0.1:0", "-cert", folder.path("certificate"), "-key", folder.path("key")});
    std::string place;
    while (const auto line = old.line())
      if (line->starts_with("ACCEPT ")) {
        place = line->substr(strlen("ACCEPT "));
        break;
      }
    EXPECT_EQ(errorOf(options, "https://" + place + "/"), error) << version;
  }
}

// A byte now and then is no silence.
TEST(Network, ARequestEndsAlsoWhenItsAnswerGoesOn) {
  LoopbackServer server;
  server->Get("/", [](const auto&, auto& response) {
    response.set_chunked_content_provider("text/plain",
                                          [](size_t, auto& sink) { return sink.write("x", 1); });
  });
  server.start();
  TransportOptions options{.longestRequest = std::chrono::milliseconds(100), .mayReachLocalNetwork = true};
  EXPECT_EQ(errorOf(options, server.address("/")), NSErrorCause::TimedOut);
}

// What a client of the gate gets, with that name and secret.
std::string through(const std::string& gate, const std::string& place) {
  const auto client = GPtr<GSocketClient>::adopt(g_socket_client_new());
  const auto proxy = GPtr<GProxyResolver>::adopt(g_simple_proxy_resolver_new(gate.c_str(), nullptr));
  g_socket_client_set_proxy_resolver(client, proxy);
  GError* raw = nullptr;
  const auto connection = GPtr<GSocketConnection>::adopt(
      g_socket_client_connect_to_host(client, place.c_str(), 80, nullptr, &raw));
  const GErrorOwned error(raw);
  if (!connection)
    return error->code == G_IO_ERROR_PROXY_NOT_ALLOWED   ? "not allowed"
           : error->code == G_IO_ERROR_HOST_UNREACHABLE  ? "not there"
           : error->code == G_IO_ERROR_PROXY_AUTH_FAILED ? "not known"
                                                         : error->message;
  const std::string ask = "GET / HTTP/1.0\r\n\r\n";
  g_output_stream_write_all(g_io_stream_get_output_stream(G_IO_STREAM(connection.get())), ask.data(),
                            ask.size(), nullptr, nullptr, nullptr);
  std::string all(64, '\0');
  gsize got = 0;
  g_input_stream_read_all(g_io_stream_get_input_stream(G_IO_STREAM(connection.get())), all.data(), all.size(),
                          &got, nullptr, nullptr);
  return all.substr(0, got).substr(0, all.find('\r'));
}

TEST(Network, TheGateLetsOnlyItsOwnClientsPass) {
  LoopbackServer server;
  server->Get("/", [&](const auto&, auto& response) { response.set_content("page", "text/plain"); });
  server.start();
  const std::string place = server.address().substr(strlen("http://"));
  auto gate = std::make_unique<NetworkGate>(Options{
      .applicationIdentifier = "gate", .hostMap = {{"ads.example", place}, {"gone.example", "127.0.0.1:1"}}});
  const std::string address = gate->address();
  auto first = std::async(std::launch::async, through, address, "ads.example");  // who has it opened
  EXPECT_TRUE(
      test::runUntil([&] { return first.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
  EXPECT_EQ(first.get(), "HTTP/1.1 200 OK");
  EXPECT_EQ(through(address, "gone.example"), "not there");
  for (const auto& local : {place, std::string("localhost"), std::string("::1"), std::string("x.localhost")})
    EXPECT_EQ(through(address, local), "not allowed") << local;
  EXPECT_EQ(through("socks5://guess" + address.substr(address.find('@')), "ads.example"), "not known");

  // Words that are none end there, and the next has his turn. One that waits is let go with the gate.
  const std::string port = address.substr(address.rfind(':') + 1);
  const auto client = GPtr<GSocketClient>::adopt(g_socket_client_new());
  const auto loopback = GPtr<GProxyResolver>::adopt(g_simple_proxy_resolver_new("direct://", nullptr));
  g_socket_client_set_proxy_resolver(client, loopback);
  const auto say = [&](const std::string& words) {
    auto said = GPtr<GSocketConnection>::adopt(
        g_socket_client_connect_to_host(client, ("127.0.0.1:" + port).c_str(), 0, nullptr, nullptr));
    g_output_stream_write_all(g_io_stream_get_output_stream(G_IO_STREAM(said.get())), words.data(),
                              words.size(), nullptr, nullptr, nullptr);
    return said;
  };
  for (const auto& words :
       {std::string("GET / HTTP/1.1\r\n\r\n"), std::string("\5\1\0", 3), std::string("\4\1")}) {
    const auto said = say(words);
    std::string answer(9, '\0');
    gsize got = 0;
    g_input_stream_read_all(g_io_stream_get_input_stream(G_IO_STREAM(said.get())), answer.data(),
                            answer.size(), &got, nullptr, nullptr);
    EXPECT_LE(got, 2U);
  }
  std::vector<GPtr<GSocketConnection>> waiting;
  for (int i = 0; i < 9; ++i) waiting.push_back(say("\5"));
  EXPECT_EQ(through(address, "ads.example"), "HTTP/1.1 200 OK");
  while (waiting.size() < 200 && through(address, "ads.example") == "HTTP/1.1 200 OK")
    waiting.push_back(say("\5"));
  EXPECT_LT(waiting.size(), 200U);  // some came in whose place was just taken, and wait no more
  waiting.clear();
  EXPECT_TRUE(test::runUntil([&] { return through(address, "ads.example") == "HTTP/1.1 200 OK"; }));
  waiting.push_back(say("\5"));
  gate.reset();
  EXPECT_NE(through(address, "ads.example"), "HTTP/1.1 200 OK");
  EXPECT_EQ(NetworkGate(Options{.applicationIdentifier = "gate", .mayReachLocalNetwork = true}).address(),
            "");
}

// A name server that answers when it is told to, that no such name is there.
std::mutex asking;
std::vector<GPtr<GTask>> asked;

void ask(GResolver* resolver, const char*, GCancellable* cancellable, GAsyncReadyCallback told,
         gpointer data) {
  std::lock_guard lock(asking);
  asked.push_back(GPtr<GTask>::adopt(g_task_new(resolver, cancellable, told, data)));
}

GPtr<GResolver> slowResolver() {
  const auto prepare = [](gpointer type, gpointer) {
    auto* resolver = G_RESOLVER_CLASS(type);
    resolver->lookup_by_name_async = ask;
    resolver->lookup_by_name_finish = [](GResolver*, GAsyncResult* result, GError** error) {
      return static_cast<GList*>(g_task_propagate_pointer(G_TASK(result), error));
    };
  };
  static const GType type =
      g_type_register_static_simple(G_TYPE_RESOLVER, "SlowResolver", sizeof(GResolverClass), prepare,
                                    sizeof(GResolver), nullptr, G_TYPE_FLAG_NONE);
  return GPtr<GResolver>::adopt(G_RESOLVER(g_object_new(type, nullptr)));
}

TEST(Network, PagesTakeFewOfTheApplicationsNameLookups) {
  const auto before = GPtr<GResolver>::adopt(g_resolver_get_default());
  g_resolver_set_default(slowResolver());
  LoopbackServer server;
  server->Get("/", [&](const auto&, auto& response) { response.set_content("page", "text/plain"); });
  server.start();
  auto gate = std::make_unique<NetworkGate>(
      Options{.applicationIdentifier = "gate",
              .hostMap = {{"ads.example", server.address().substr(strlen("http://"))}}});
  const std::string address = gate->address();
  const std::string secret = address.substr(strlen("socks5://"), address.find('@') - strlen("socks5://"));
  const auto client = GPtr<GSocketClient>::adopt(g_socket_client_new());
  g_socket_client_set_enable_proxy(client, FALSE);
  const auto name = GPtr<GInetAddress>::adopt(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  const auto port = static_cast<guint16>(std::stoi(address.substr(address.rfind(':') + 1)));
  const auto place = GPtr<GSocketAddress>::adopt(g_inet_socket_address_new(name, port));
  std::vector<GPtr<GSocketConnection>> pages;
  for (int i = 0; i < 20; ++i) {
    pages.push_back(GPtr<GSocketConnection>::adopt(
        g_socket_client_connect(client, G_SOCKET_CONNECTABLE(place.get()), nullptr, nullptr)));
    const std::string words = "\5\1\2\1" + std::string(1, char(secret.size())) + secret +
                              std::string("\0\5\1\0\3\5a.com\0\x50", 13);
    g_output_stream_write_all(g_io_stream_get_output_stream(G_IO_STREAM(pages.back().get())), words.data(),
                              words.size(), nullptr, nullptr, nullptr);
  }
  const auto waiting = [] {
    std::lock_guard lock(asking);
    return asked.size();
  };
  EXPECT_TRUE(test::runUntil([&] { return waiting() == 6; }));
  EXPECT_EQ(through(address, "ads.example"), "HTTP/1.1 200 OK") << "who waits holds nobody up";
  EXPECT_EQ(waiting(), 6U);
  size_t answered = 0;
  EXPECT_TRUE(test::runUntil([&] {
    std::vector<GPtr<GTask>> all;
    {
      std::lock_guard lock(asking);
      all.swap(asked);
    }
    EXPECT_LE(all.size(), 6U);
    for (const auto& task : all)
      g_task_return_new_error(task, G_RESOLVER_ERROR, G_RESOLVER_ERROR_NOT_FOUND, "no such name");
    return (answered += all.size()) == pages.size();
  }));
  gate.reset();
  g_resolver_set_default(before);
}

}  // namespace
}  // namespace velto::gtk
