// A host application's own code: the strip at the bottom of its article page. It takes room only while an ad
// is in it, asks for a fresh ad every 30 seconds, and counts taps for the application's statistics.
// Subscribers see no ads: then the application closes it. The page makes one and asks it for its height
// whenever it lays itself out. Main thread.
#pragma once

#include <velto/velto.h>

class BannerSlot : public velto::VeltoBannerViewControllerDelegate,
                   public std::enable_shared_from_this<BannerSlot> {
 public:
  explicit BannerSlot(std::shared_ptr<velto::UIViewController> page) : page_(std::move(page)) {}

  void open(const velto::VeltoSettings& reader);
  void close();
  double height() const { return isFilled_ ? 50 : 0; }  // points
  int taps() const { return taps_; }
  bool hasFailed() const { return hasFailed_; }

 private:
  std::shared_ptr<velto::UIViewController> presentViewController() override { return page_; }
  void veltoBannerViewControllerDidFinishLoad(velto::VeltoBannerViewControllerPrivate&) override;
  void veltoBannerViewControllerDidPress(velto::VeltoBannerViewControllerPrivate&) override;
  void veltoBannerViewControllerDidFail(velto::VeltoBannerViewControllerPrivate&,
                                        const velto::VeltoErrorAd&) override;

  std::shared_ptr<velto::UIViewController> page_;
  std::shared_ptr<velto::VeltoBannerViewController> banner_;
  bool isFilled_ = false;
  bool hasFailed_ = false;
  int taps_ = 0;
};
