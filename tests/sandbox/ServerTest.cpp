// The server over loopback HTTPS: answers, records, faults, connections, stopping; and its certificates.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <future>
#include <nlohmann/json.hpp>

#include "Support.h"
#include "sandbox/Certificates.h"

namespace velto::sandbox {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Json = nlohmann::json;

constexpr const char* kAdUrl =
    "https://ads.velto.example/sdk/v3/req?ts=1&k=demo&test=0&at=banner&fsz=Smart%20Banner";

class ServerTest : public testing::Test {
 protected:
  Server& start(Options options = {}) {
    options.dataFolder = folder_.path("data");
    server_ = std::make_unique<Server>(std::move(options));
    server_->start();
    return *server_;
  }

  TemporaryFolder folder_;
  std::unique_ptr<Server> server_;
};

TEST_F(ServerTest, AnswersByTheBuiltInScenarioAndRecords) {
  Server& server = start();
  Client client(server);
  const Reply page = client.send(kAdUrl, R"({"dsw": 800})");
  EXPECT_EQ(page.status, 200);
  EXPECT_EQ(page.headers.at("x-content"), "html");
  EXPECT_EQ(page.headers.at("x-width") + "x" + page.headers.at("x-height"), "800x90");
  EXPECT_NE(page.body.find("velto://loadFinished"), std::string::npos);
  EXPECT_NE(page.body.find("ord%3D1%26veltos%3Dsandbox%26veltop%3Ddemo\""), std::string::npos);
  EXPECT_EQ(client.send("https://abc.publishers.velto.example/sdk/?k=nofill", "{}").status, 204);
  const Reply acknowledgement = client.send("https://track.velto.example/trk_install.php?id=a%2Bb%0D%0A+c");
  EXPECT_EQ(acknowledgement.body, "1");
  EXPECT_EQ(client.send("https://ads.velto.example/dev/puressp.php", "\xFF").headers.at("x-height"), "50");
  EXPECT_EQ(client.send("https://ads.velto.example/nothing").status, 404);

  client.send(kAdUrl, "{}", true);
  ASSERT_TRUE(server.waitForRequests(6, 0ms));
  const std::vector<RecordedRequest> requests = server.requests();
  EXPECT_EQ(requests[4].connection, requests[0].connection);
  EXPECT_TRUE(requests[5].tlsResumed) << "another, of the same session";
  Json line = Json::parse(requests[0].toJsonLine());
  EXPECT_EQ(line["query"][4], Json({"fsz", "Smart Banner"}));
  EXPECT_EQ(line["body"], Json({{"dsw", 800}}));
  EXPECT_EQ(line["rule"], "ad");
  EXPECT_EQ(line["problems"][0], "body sdkt: missing");
  EXPECT_EQ(server.requests(Kind::Install).at(0).queryValue("id"), "a+b\r\n+c") << "a plus is no blank";
  EXPECT_EQ(Json::parse(requests[3].toJsonLine())["bodyBase64"], "/w==");

  std::string withPort = kAdUrl;
  withPort.replace(withPort.find("/sdk"), 0, ":8443");
  EXPECT_NE(client.send(withPort, "{}").body.find("https://ads.velto.example:8443/landing"),
            std::string::npos)
      << "addresses in answers lead where the request went";
}

TEST_F(ServerTest, ServesOnlyWhatLiesInItsFolderAndStrictlyOnlyGoodRequests) {
  folder_.write("www/sub/a b.html", "page");
  folder_.write("secret", "secret");
  std::filesystem::create_symlink(folder_.path("secret"), folder_.path("www/link"));
  Options options;
  options.serveFolder = folder_.path("www");
  options.strict = true;
  Client client(start(options));
  const Reply page = client.send("https://ads.velto.example/sub/a%20b.html");
  EXPECT_EQ(page.body, "page");
  EXPECT_EQ(page.headers.at("Content-Type"), "text/html");
  for (const char* path :
       {"/../secret", "/%2e%2e/secret", "/sub/../../secret", "/link", "/sub", "//etc/passwd"})
    EXPECT_EQ(client.send("https://ads.velto.example" + std::string(path)).status, 404) << path;

  const Reply refusal = client.send(kAdUrl, "no JSON");
  EXPECT_EQ(refusal.status, 400);
  EXPECT_EQ(refusal.body, "body: not JSON\n");
}

TEST_F(ServerTest, ReadsEveryFormOfARequestAndAnswersWhatIsNone) {
  Server& server = start();
  server.addRule({"file", {.path = "/file"}, {Answer::text(200, "0123456789")}});
  const std::string chunked =
      "\r\nPOST /file HTTP/1.1\r\nExpect: 100-continue\r\nTransfer-Encoding: chunked\r\n\r\n"
      "3;x=y\r\nabc\r\n1\r\n\0\r\n0\r\nAfter: all\r\n\r\n"
      "HEAD /file HTTP/1.1\nconnection: Close\n\n"s;
  const std::string head = "HTTP/1.1 200 \r\nContent-Type: text/plain\r\nContent-Length: 10\r\n";
  EXPECT_EQ(Client(server).exchange(chunked),
            "HTTP/1.1 100 \r\n\r\n" + head + "\r\n0123456789" + head + "Connection: close\r\n\r\n");
  EXPECT_EQ(server.requests().at(0).body, "abc\0"s);
  EXPECT_EQ(server.requests().at(1).method, "HEAD");

  const std::tuple<const char*, const char*, const char*> ranges[] = {
      {"bytes=2-4", "bytes 2-4/10\r", "\n234"},   {"bytes=7-99", "bytes 7-9/10\r", "\n789"},
      {"bytes=-2", "bytes 8-9/10\r", "\n89"},     {"bytes=10-", "bytes */10\r", "\n"},
      {"bytes=0-1,3-4", " 200 ", "\n0123456789"}, {"bytes=-", " 200 ", "\n0123456789"}};
  for (const auto& [range, place, part] : ranges) {
    const auto answer =
        Client(server).exchange("GET /file HTTP/1.1\r\nConnection: close\r\nRange: "s + range + "\r\n\r\n");
    EXPECT_TRUE(answer.find(place) != std::string::npos && answer.ends_with(part)) << range << answer;
  }

  const std::string post = "POST / HTTP/1.1\r\n";
  const std::pair<std::string, const char*> bad[] = {
      {"rubbish\r\n\r\n", "400"},
      {"GET / HTTP/2\r\n\r\n", "400"},
      {post + "no colon\r\n\r\n", "400"},
      {post + "Content-Length: -1\r\n\r\n", "400"},
      {post + "Content-Length: 99999999999999999999\r\n\r\n", "413"},
      {post + "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n", "400"},
      {post + "Transfer-Encoding: gzip\r\n\r\n", "501"},
      {post + "Transfer-Encoding: chunked\r\n\r\nzz\r\n", "400"},
      {post + "Transfer-Encoding: chunked\r\n\r\n1\r\nab\r\n", "400"},
      {"GET /" + std::string(100'000, 'a'), "431"},
  };
  for (const auto& [text, status] : bad)
    EXPECT_EQ(Client(server).exchange(text).substr(0, 12), "HTTP/1.1 "s + status) << text.substr(0, 60);
}

TEST_F(ServerTest, SpoilsAnswersOnTheWire) {
  const struct {
    Fault fault;
    CURLcode code;
    const char* body;
  } cases[] = {
      {{.cutBeforeHeaders = true}, CURLE_GOT_NOTHING, ""},
      {{.cutAfterBytes = 4}, CURLE_PARTIAL_FILE, "0123"},
      {{.declaredLength = 20}, CURLE_PARTIAL_FILE, "0123456789"},
      {{.chunkBytes = 3, .interval = 1ms}, CURLE_OK, "0123456789"},
  };
  for (const auto& expected : cases) {
    Answer answer = Answer::text(200, "0123456789");
    answer.fault = expected.fault;
    start().addRule({"fault", {.kind = Kind::Download}, {answer}});
    const Reply reply = Client(*server_).send("https://cdn.publishers.velto.example/file");
    const bool isCut = expected.fault.cutBeforeHeaders || expected.fault.cutAfterBytes;
    // Newer clients say of every connection that ends without TLS's goodbye that receiving failed.
    EXPECT_TRUE(reply.code == expected.code || (isCut && reply.code == CURLE_RECV_ERROR)) << reply.code;
    EXPECT_EQ(reply.body, expected.body);
    EXPECT_EQ(server_->requests().at(0).status, expected.fault.cutBeforeHeaders ? 0 : 200);
  }
}

TEST_F(ServerTest, SpoilsHandshakesOfOneHostOnly) {
  Server& server = start();
  Client client(server);
  const std::pair<TlsFault, CURLcode> cases[] = {
      {TlsFault::Refuse, CURLE_SSL_CONNECT_ERROR},
      {TlsFault::WrongName, CURLE_PEER_FAILED_VERIFICATION},
      {TlsFault::Expired, CURLE_PEER_FAILED_VERIFICATION},
      {TlsFault::Untrusted, CURLE_PEER_FAILED_VERIFICATION},
  };
  for (const auto& [fault, code] : cases) {
    // Leaves a session; a spoiled handshake that resumed it would succeed.
    EXPECT_EQ(client.send("https://track.velto.example/", {}, true).code, CURLE_OK);
    server.addRule(
        {.name = "tls", .when = {.host = "track.velto.example", .count = Count::nth(1)}, .tls = fault});
    EXPECT_EQ(client.send("https://track.velto.example/", {}, true).code, code);
    EXPECT_EQ(client.send("https://ads.velto.example/", {}, true).code, CURLE_OK);
  }
  EXPECT_EQ(server.requests(Kind::Tls).size(), std::size(cases));
}

TEST_F(ServerTest, KeepsCertificatesThatAreGoodAndReplacesTheRest) {
  const auto read = [&](const char* name) { return test::textOf(folder_.path(name)); };
  // Loads, and says which of the two certificates changed.
  const auto changes = [&](const std::vector<std::string>& names) {
    const std::string ca = read("ca.pem"), server = read("server.pem");
    loadOrMakeCertificates(folder_.path(), names);
    return std::string(read("ca.pem") == ca ? "" : "authority ") +
           (read("server.pem") == server ? "" : "server");
  };
  const std::vector<std::string> names{"a.example", "*.b.example"};
  EXPECT_EQ(changes(names), "authority server");
  EXPECT_EQ(changes(names), "");
  for (const char* key : {"ca.key", "server.key"}) {
    struct stat status;
    ASSERT_EQ(stat(folder_.path(key).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << key;
  }
  EXPECT_EQ(changes({"a.example", "*.c.example"}), "server");
  EXPECT_EQ(changes({"a.example"}), "") << "a certificate for more names is good enough";
  folder_.write("server.key", "damaged");
  EXPECT_EQ(changes(names), "server");
  folder_.write("ca.key", read("server.key"));
  EXPECT_EQ(changes(names), "authority server");
}

TEST_F(ServerTest, StopsWithSlowAnswersInProgressAndStartsAgain) {
  Server& server = start();
  Answer late = Answer::text(200, "late");
  late.delay = 1h;
  Answer slow = Answer::text(200, "slow");
  slow.fault.chunkBytes = 1;
  slow.fault.interval = 1h;
  server.addRule({"late", {.path = "/late"}, {late}});
  server.addRule({"slow", {.path = "/slow"}, {slow}});
  const auto get = [&](const std::string& path) {
    return std::async(std::launch::async,
                      [=, &server] { return Client(server).send("https://ads.velto.example" + path).code; });
  };
  auto first = get("/late"), second = get("/slow");
  ASSERT_TRUE(server.waitForRequests(2, 20s));
  EXPECT_EQ(Client(server).send("https://ads.velto.example/landing").status, 200)
      << "held up by slow answers";
  server.stop();
  EXPECT_NE(first.get(), CURLE_OK);
  EXPECT_NE(second.get(), CURLE_OK);

  const int port = server.port();
  server.start();
  EXPECT_EQ(server.port(), port);
  EXPECT_EQ(Client(server).send("https://ads.velto.example/landing").status, 200);
}

}  // namespace
}  // namespace velto::sandbox
