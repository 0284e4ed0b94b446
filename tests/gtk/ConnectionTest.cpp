// Connections that are made before the first request, as the server sees them.
#include "velto/gtk/GtkPlatform.h"

#include <curl/curl.h>

#include "../support/Folder.h"
#include "../support/MainLoop.h"
#include "Http2Server.h"

namespace velto::test {
namespace {

class ConnectionTest : public testing::Test {
 protected:
  void SetUp() override { start("h2"); }
  void start(const std::string& protocol) {
    gtk::uninstall();
    server.reset();
    server = std::make_unique<Http2Server>(folder.path(), protocol);
    gtk::install({.applicationIdentifier = "org.example.connection",
                  .dataFolder = folder.path("store"),
                  .caFile = server->caFile(),
                  .hostMap = {{Http2Server::host, server->address()}}});
  }
  ~ConnectionTest() override { gtk::uninstall(); }

  static gtk::UrlSession& session() {
    return dynamic_cast<gtk::UrlSession&>(gtk::GtkPlatform::installed()->urlSession());
  }
  Handle connected(int connections = 1) {
    Handle handle = session().connectAhead(url);
    EXPECT_TRUE(runUntil([&] { return server->connections == connections; }));
    return handle;
  }
  // Whether the connection was there.
  bool request() {
    std::atomic<int> reused = -1;
    session().dataTask({url, "POST", {}, "{}"}, [&](auto, auto response, auto error) {
      EXPECT_FALSE(error) << error->localizedDescription;
      reused = response && response->metrics && response->metrics->reusedConnection;
    });
    EXPECT_TRUE(runUntil([&] { return reused >= 0; }));
    return reused == 1;
  }

  const NSURL url = *NSURL::URLWithString(std::string("https://") + Http2Server::host + "/sdk/v3/req");
  TemporaryFolder folder;
  std::unique_ptr<Http2Server> server;
};

TEST_F(ConnectionTest, ServesTheFirstRequestAndBringsNone) {
  const auto handle = connected();
  // The version of Debian 13 says nothing before the first request.
  const bool speaksAtOnce = curl_version_info(CURLVERSION_NOW)->version_num < 0x080000;
  EXPECT_TRUE(runUntil([&] { return !speaksAtOnce || server->settled == 1; }));
  EXPECT_EQ(server->requests, 0);
  EXPECT_TRUE(request());
  EXPECT_EQ(server->requests, 1);
  EXPECT_EQ(server->connections, 1);
}

TEST_F(ConnectionTest, ARequestThatComesMeanwhileWaitsForIt) {
  const auto handle = session().connectAhead(url);
  request();
  EXPECT_EQ(server->connections, 1);
}

TEST_F(ConnectionTest, OneThatDiedCostsNoRequest) {
  const auto handle = connected();
  server->hangUp();
  ASSERT_TRUE(runUntil([&] { return server->ended == 1; }));
  EXPECT_FALSE(request());
  EXPECT_EQ(server->connections, 2);

  session().networkChanged();  // nobody hears of the other end any more
  EXPECT_FALSE(request());
  EXPECT_EQ(server->connections, 3);
  EXPECT_EQ(server->requests, 2);
}

TEST_F(ConnectionTest, GoesWithItsHandleUnlessARequestWasMade) {
  connected().cancel();
  EXPECT_TRUE(runUntil([&] { return server->ended == 1; }));
  auto handle = connected(2);
  EXPECT_TRUE(request());
  handle.cancel();
  EXPECT_TRUE(request());
  EXPECT_EQ(server->connections, 2);
}

TEST_F(ConnectionTest, OfHttp1NoneRemains) {
  start("http/1.1");
  const auto handle = connected();
  EXPECT_FALSE(request());
  EXPECT_EQ(server->connections, 2);
  EXPECT_EQ(server->requests, 1);
}

}  // namespace
}  // namespace velto::test
