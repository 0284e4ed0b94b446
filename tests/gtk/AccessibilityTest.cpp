// What a screen reader finds of an ad, asked over the bus by another process.
#include "velto/video/PlayerControls.h"

#include <future>

#include "DisplayTest.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;

// Prints the desktop's tree, "depth role name" a line.
constexpr char reader[] = R"py(
import gi
gi.require_version('Atspi', '2.0')
from gi.repository import Atspi
def walk(node, depth):
    print(depth, node.get_role_name(), node.get_name(), sep='|')
    for i in range(node.get_child_count()):
        child = node.get_child_at_index(i)
        if child: walk(child, depth + 1)
walk(Atspi.get_desktop(0), 0)
)py";

// Asked while the main loop answers.
std::string wholeTree() {
  auto tree = std::async(std::launch::async, [] { return run({"/usr/bin/python3", "-c", reader}).output; });
  EXPECT_TRUE(runUntil([&] { return tree.wait_for(0s) == std::future_status::ready; }));
  return tree.get();
}

class AccessibilityTest : public DisplayTest {};

TEST_F(AccessibilityTest, AnAdIsFoundByItsNameWithWhatIsInIt) {
  auto* slot = gtk::adSlot();
  auto* window = newWindow(480, 300, slot);
  const auto ads = std::make_shared<RecordingDelegate>();
  present(window);
  ads->host = gtk::hostViewController(slot);
  const auto banner =
      VeltoBannerViewController::initWithDelegate(ads, VeltoBannerSize320x50, VeltoBannerPositionTop);
  auto ad = VeltoAd::adWithHTML("<h1>Fresh bread</h1><button>Order</button>", {}, nullptr);
  ad->size = CGSize{320, 50};
  banner->vc()->fetchBannerSuccess(ad);
  const auto controls = PlayerControls::make({});
  controls->setFrame({{0, 100}, {480, 200}});
  controls->show({.loading = false, .playing = true, .seconds = 5, .duration = 30});
  gtk::hostViewController(window)->view()->addSubview(controls);

  std::vector<std::string> wanted{"Advertisement", "button|Pause", "button|Close", "button|0:05 / 0:30"};
  // Older toolkits have nowhere to put the tree of another process.
  if (!gtk_check_version(4, 14, 0)) wanted.insert(wanted.end(), {"Fresh bread", "button|Order"});
  std::string tree;
  const bool found = runUntil([&] {
    tree = wholeTree();
    return std::all_of(wanted.begin(), wanted.end(),
                       [&](const auto& words) { return tree.find(words) != std::string::npos; });
  });
  EXPECT_TRUE(found) << tree;
  // All that this process did is show a banner.
  for (const char* heavy : {"libecal", "libedataserver", "velto-calendar", "libpulse", "/gstreamer-1.0/"})
    EXPECT_FALSE(isMapped(heavy)) << heavy;
  gtk_window_destroy(window);
}

}  // namespace
}  // namespace velto::test

int main(int argc, char** argv) {
  setenv("GTK_A11Y", "atspi", 1);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
