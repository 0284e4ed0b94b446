// Shows one banner in memory. Run by the install test, which wants exit code 0.
#include <velto/headless/VeltoHeadless.h>
#include <velto/velto.h>

#include <cstdio>

struct Delegate : velto::VeltoBannerViewControllerDelegate {
  velto::headless::HostWindow window;
  int finished = 0;

  std::shared_ptr<velto::UIViewController> presentViewController() override { return window.controller(); }
  void veltoBannerViewControllerDidFinishLoad(velto::VeltoBannerViewControllerPrivate&) override {
    ++finished;
  }
};

int main() {
  auto platform = velto::headless::Platform::install();
  platform->setPagesFinishByThemselves(true);
  platform->urlSession().respond("",
                                 {.headers = {{"x-content", "html"}, {"x-width", "320"}, {"x-height", "50"}},
                                  .body = "velto://loadFinished"});
  velto::VeltoFramework::addVeltoKey("key");

  auto delegate = std::make_shared<Delegate>();
  auto banner = velto::VeltoBannerViewController::initWithDelegate(delegate, velto::VeltoBannerSize320x50,
                                                                   velto::VeltoBannerPositionBottom);
  banner->load();
  platform->runUntilIdle();
  std::printf("velto %s: %d banner\n", velto::VeltoFramework::versionSDK().c_str(), delegate->finished);
  return delegate->finished == 1 ? 0 : 1;
}
