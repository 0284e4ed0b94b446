// What a page's commands do in a controller that carries out some of them only.
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"

#include "../ui/UITest.h"

namespace velto {
namespace {

using Lines = std::vector<std::string>;

class MRAIDControllerTest : public test::UITest {};

// A controller that shows pages and carries nothing out.
class Plain : public UIViewController, public UIViewControllerMRAIDSDKVelto {
 public:
  std::shared_ptr<VeltoMRAIDHandler> handler;
  std::vector<std::string> asked;
  std::vector<Operation> missing;

  std::shared_ptr<VeltoMRAIDHandler> veltoGetMRAIDHandler() override { return handler; }
  bool respondsTo(Operation operation) const override {
    return std::find(missing.begin(), missing.end(), operation) == missing.end();
  }
  void veltoMRAIDExpand(const std::optional<std::string>&, const CloseButton&) override {
    asked.emplace_back("expand");
  }
  void veltoMRAIDResize(const std::shared_ptr<VeltoMRAIDPropertyResize>&,
                        const VeltoCloseButtonUIConfiguration&) override {
    asked.emplace_back("resize");
  }
  void veltoMRAIDRemoveCloseCustomButton() override { asked.emplace_back("remove"); }
  void playVideoAt(const NSURL& url) override { asked.push_back(url.absoluteString()); }

 private:
  UIViewController& viewController() override { return *this; }
};

TEST_F(MRAIDControllerTest, OperationsThatItLacksAreLeftOut) {
  const auto plain = std::make_shared<Plain>();
  const auto web = WKWebView::initWithFrame({}, {});
  const auto act = [&](const std::string& name, const std::string& argument = "") {
    const auto bare = NSURL::URLWithString("mraid://" + name).value();
    plain->mraidHandleAction(argument.empty() ? bare : bare.URLByReplacingQueryItems({{"p", argument}}),
                             *web);
    return std::exchange(plain->asked, {});
  };
  EXPECT_EQ(act("playVideo", "https://v.example/a.mp4"), Lines{}) << "without a handler nothing";
  plain->handler = VeltoMRAIDHandler::handler();
  EXPECT_EQ(act("playVideo", "https://v.example/a.mp4"), Lines{"https://v.example/a.mp4"});
  EXPECT_EQ(act("playVideo", "odd://v"), Lines{});
  plain->mraidReady(web, false, {}, plain->handler);
  EXPECT_EQ(plain->handler->state, "loading") << "neither banner nor interstitial";
  plain->mraidReady(web, true, {}, plain->handler);
  EXPECT_EQ(plain->handler->state, "default");

  using Operation = UIViewControllerMRAIDSDKVelto::Operation;
  EXPECT_EQ(act("expand"), Lines{"expand"});
  plain->missing = {Operation::Expand, Operation::GetFullscreenFrame};
  platform->device().facts.orientation = 3;
  plain->handler->setOrientationProperty(
      VeltoMRAIDPropertyOrientation::decode(R"({"forceOrientation":"portrait"})"));
  EXPECT_EQ(act("expand"), Lines{});
  EXPECT_EQ(platform->device().facts.orientation, 3);
  EXPECT_EQ(act("resize"), (Lines{"remove", "resize"}));
  act("setResizeProperties",
      R"({"allowOffscreen":true,"width":300,"height":250,"customClosePosition":"center"})");
  EXPECT_EQ(act("resize"), Lines{"remove"});
  plain->missing = {Operation::Resize};
  EXPECT_EQ(act("resize"), Lines{});
}

}  // namespace
}  // namespace velto
