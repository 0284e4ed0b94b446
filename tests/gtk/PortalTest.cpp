// Opening URLs from inside a sandbox: what the desktop's portal says, also when it says nothing.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include <stdlib.h>

#include "BusMock.h"

namespace velto {
namespace {

using test::runUntil;

constexpr char portalPath[] = "/org/freedesktop/portal/desktop";
constexpr char portalInterface[] = "org.freedesktop.portal.OpenURI";

// Before GLib looks: this process is in a sandbox, with no other application in sight.
const test::EnvironmentFolder folder{"XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"};
const int usesPortal = setenv("GTK_USE_PORTAL", "1", 1) + setenv("GIO_USE_PORTALS", "1", 1);

class PortalTest : public testing::Test {
 protected:
  ~PortalTest() override { gtk::uninstall(); }

  std::unique_ptr<test::MockService> portal() {
    return std::make_unique<test::MockService>(bus, "org.freedesktop.portal.Desktop", portalPath,
                                               portalInterface);
  }
  static void install() {
    gtk::install({.applicationIdentifier = "org.example.portal", .dataFolder = folder.path()});
  }
  static bool opens(const std::string& url) {
    return Platform::current().application().canOpenURL(*NSURL::URLWithString(url));
  }

  // GLib's own opening keeps to the first session bus that it met. This one ends with the process.
  test::PrivateBus& bus = *[] {
    static auto* const first = new test::PrivateBus;
    return first;
  }();
};

TEST_F(PortalTest, AnswersForTheDesktop) {
  const auto service = portal();
  service->addMethod(portalPath, portalInterface, "SchemeSupported", "b", "ret = args[0] in ('https', 'tel')",
                     "sa{sv}");
  service->addMethod(portalPath, portalInterface, "OpenURI", "o", "ret = '/request'", "ssa{sv}");
  install();
  EXPECT_TRUE(opens("https://a.example/")) << "until it has answered";
  EXPECT_FALSE(opens("tel://12345678901"));
  EXPECT_TRUE(runUntil([] { return opens("tel://12345678901") && !opens("http://a.example/"); }));
  EXPECT_FALSE(opens("sms://12345678901"));
  EXPECT_FALSE(opens("unknown://x"));

  Platform::current().application().openURL(*NSURL::URLWithString("https://a.example/page"));
  EXPECT_TRUE(runUntil([&] { return service->callsOf(portalPath, "OpenURI") == 1; }));
}

TEST_F(PortalTest, ThatIsOldHangingOrAbsentOpensNoTelephone) {
  {
    const auto old = portal();
    old->addMethod(portalPath, portalInterface, "OpenURI", "o", "ret = '/request'", "ssa{sv}");
    install();
    Platform::current().application().openURL(*NSURL::URLWithString("https://a.example/"));
    EXPECT_TRUE(runUntil([&] { return old->callsOf(portalPath, "OpenURI") == 1; }))
        << "by now it has answered";
    EXPECT_FALSE(opens("tel://1"));
    EXPECT_TRUE(opens("https://a.example/"));
  }
  install();
  EXPECT_TRUE(runUntil([] { return !opens("https://a.example/"); })) << "nobody is there";
  EXPECT_FALSE(opens("tel://1"));

  const auto hanging = portal();
  hanging->addMethod(portalPath, portalInterface, "SchemeSupported", "b", "ret = True", "sa{sv}");
  hanging->hang();
  install();
  EXPECT_FALSE(opens("tel://1"));
  hanging->goOn();
  EXPECT_TRUE(runUntil([] { return opens("tel://1"); }));
}

}  // namespace
}  // namespace velto
