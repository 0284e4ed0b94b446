// A process that shows a banner and nothing else: what its request carried, as the server saw it, and what it
// had to load for it.
#include "velto/gtk/VeltoGtk.h"
#include "velto/network/VeltoDevice.h"
#include "velto/platform/foundation/JSON.h"
#include "velto/velto.h"

#include <filesystem>

#include "../support/AdWindow.h"
#include "../support/Delegates.h"
#include "BusMock.h"
#include "sandbox/Server.h"

namespace velto {
namespace {

TEST(BannerProcessTest, SendsWhatTheServicesSayAndLoadsNothingHeavy) {
  gtk_init();
  const test::PrivateBus bus;
  const test::MockModem modem(bus);
  sandbox::Options serverOptions;
  serverOptions.dataFolder = std::filesystem::temp_directory_path() / "sandbox";
  sandbox::Server server(serverOptions);
  server.start();
  gtk::install({.applicationIdentifier = "org.example.process",
                .caFile = server.caFile(),
                .hostMap = {{"*.velto.example", "127.0.0.1:" + std::to_string(server.port())}}});
  gtk::setTrackingAllowed(true);
  gtk::setCalendarAccess(gtk::Access::Allowed);
  VeltoFramework::addVeltoKey("process-test");

  auto* window = test::newWindow(480, 320);
  auto ads = std::make_shared<test::RecordingDelegate>();
  const auto host = test::present(window);
  ads->host = host;
  EXPECT_TRUE(test::runUntil([] { return VeltoDevice::simOperatorName().has_value(); }));
  auto banner =
      VeltoBannerViewController::initWithDelegate(ads, VeltoBannerSize320x50, VeltoBannerPositionBottom);
  banner->load();
  EXPECT_TRUE(test::runUntil([&] { return ads->heardLast("finish"); }));

  std::optional<JSON> body;
  for (const auto& request : server.requests()) {
    EXPECT_EQ(request.problems, std::vector<std::string>()) << request.path;
    if (request.kind == sandbox::Kind::Ad) body = readJSON(request.body);
  }
  ASSERT_TRUE(body && body->object());
  auto sent = *body->object();
  EXPECT_EQ(sent["son"], JSON("Example Mobile"));
  EXPECT_EQ(sent["ncc"], JSON("262"));
  EXPECT_TRUE(sent["aid"].string());
  EXPECT_EQ(sent["aidl"], JSON(""));

  EXPECT_TRUE(test::isMapped("libwebkitgtk"));
  for (const char* heavy : {"libecal", "libedataserver", "velto-calendar", "libpulse", "/gstreamer-1.0/"})
    EXPECT_FALSE(test::isMapped(heavy)) << heavy;
  banner.reset();
  gtk::uninstall();
  gtk_window_destroy(window);
}

}  // namespace
}  // namespace velto
