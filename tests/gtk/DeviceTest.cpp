// What the machine is, from the files in which firmware and administrators say it; where the user is.
#include "velto/gtk/services/Device.h"
#include "velto/gtk/services/Locale.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "../support/Folder.h"

namespace velto::gtk {
namespace {

struct FixedScreen : UIScreen {
  CGSize size{1280, 800};
  CGRect bounds() const override { return {{0, 0}, size}; }
  double scale() const override { return 1; }
};

class DeviceTest : public testing::Test {
 protected:
  void write(const std::string& path, const std::string& text) const { folder.write(path, text); }
  Device device() const { return Device(screen, root); }

  test::TemporaryFolder folder;
  std::string root = folder.path();
  FixedScreen screen;
};

TEST_F(DeviceTest, TheAdministratorKnowsBestThenTheFirmwareThenTheScreen) {
  EXPECT_EQ(device().model(), "Desktop");
  screen.size = {360, 720};
  EXPECT_EQ(device().model(), "Handset");
  write("/proc/device-tree/chassis-type", std::string("tablet\0", 7));
  EXPECT_EQ(device().model(), "Tablet");
  write("/sys/class/dmi/id/chassis_type", "1\n");  // "other" says nothing
  EXPECT_EQ(device().model(), "Tablet");
  write("/sys/class/dmi/id/chassis_type", "10\n");
  EXPECT_EQ(device().model(), "Laptop");
  screen.size = {1280, 800};
  write("/etc/machine-info", "PRETTY_HOSTNAME=\"Anna's phone\"\nCHASSIS=handset\n");
  EXPECT_EQ(device().userInterfaceIdiom(), UIUserInterfaceIdiom::Phone);
  EXPECT_EQ(device().name(), "Anna's phone");

  write("/proc/device-tree/model", std::string("Example Phone 2\0", 16));
  EXPECT_EQ(device().machine(), "Example Phone 2");
  write("/sys/class/dmi/id/product_name", "To Be Filled By O.E.M.\n");
  EXPECT_EQ(device().machine(), "Example Phone 2");
}

TEST_F(DeviceTest, OrientationIsTheScreensUntilItIsSetOrSensed) {
  auto turning = device();
  EXPECT_EQ(turning.orientation(), 0);
  screen.size = {800, 1280};
  EXPECT_EQ(turning.orientation(), 1);
  turning.turned(4);
  EXPECT_EQ(turning.orientation(), 4);
  turning.setOrientation(3);
  EXPECT_EQ(turning.orientation(), 3);

  EXPECT_FALSE(isPanelUpright(UIUserInterfaceIdiom::Pad, root));
  write("/sys/class/drm/card0-HDMI-A-1/modes", "1080x1920\n");  // somebody's monitor
  EXPECT_FALSE(isPanelUpright(UIUserInterfaceIdiom::Pad, root));
  write("/sys/class/drm/card0-DSI-1/modes", "1200x1920\n600x960\n");
  EXPECT_TRUE(isPanelUpright(UIUserInterfaceIdiom::Pad, root));
}

TEST_F(DeviceTest, TheTimeZoneIsFollowedWhileTheProgramRuns) {
  const TimeZone zone;
  for (const auto& [name, seconds] : {std::pair("Asia/Kolkata", 19800), {"Etc/GMT+5", -18000}, {"UTC", 0}}) {
    setenv("TZ", name, 1);
    EXPECT_EQ(zone.secondsFromGMT(), seconds) << name;
  }
  unsetenv("TZ");
}

}  // namespace
}  // namespace velto::gtk
