// Watches one page of an ad: weighs it, tells when it costs too much, and has the engine hold it back while nobody
// sees it. Owned by the shown ad; main thread.
//
// Nothing runs for a page that rests: the platform calls when the page's process has done some work, and the views when
// something on the screen has changed. One that works is looked at once a second.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/timeline/AdScales.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace velto {

class WKWebView;

class AdWatch : public std::enable_shared_from_this<AdWatch> {
 public:
  // Between two looks at a page that works, and for how long nobody sees a page before it is held back.
  static constexpr double interval = 1;  // seconds
  // A page may take up to 300 MiB with that.
  static constexpr double stepOfWork = 0.05;  // seconds of processor time
  // Between two looks at whether a page comes into sight that nobody sees: an application that animates changes in each frame.
  static constexpr double glance = 0.05;  // seconds
  // A page this far from where it would be seen is to be ready when somebody scrolls there.
  static constexpr double margin = 200;  // points

  using Heavy = std::function<void(const VeltoAdExcess&)>;

  // From right before its load on. `heavy` may end all of this.
  static std::shared_ptr<AdWatch> watch(std::weak_ptr<WKWebView> page, const VeltoHeavyAdLimits& limits,
                                        Heavy heavy);

  // From now on it may be seen, and is held back while it is not. Not before: pages load unseen.
  void lookAtSight();
  // What it plays stands still, too, and without delay.
  void pauseUnseen();
  void touched() { scales_.touched(); }
  // Now; nothing where it cannot be told.
  std::optional<VeltoAdWeight> weigh();

 private:
  AdWatch(std::weak_ptr<WKWebView> page, const VeltoHeavyAdLimits& limits, Heavy heavy)
      : page_(std::move(page)), scales_(limits), heavy_(std::move(heavy)) {}
  void await();
  void worked();
  void weighAndTell();
  void add();
  void tell();
  void noteChange();
  void lookAfter(double seconds);
  void look();
  bool isSeen(const WKWebView& page) const;
  void setSeen(WKWebView& page, bool seen);
  static void setPaused(WKWebView& page, bool paused);

  const std::weak_ptr<WKWebView> page_;
  AdScales scales_;
  const Heavy heavy_;
  std::vector<VeltoAdExcess> untold_;
  Handle work_, changes_;
  // Monotonic seconds, as all of these. A look before there was a process does not count: the first at one is not to wait,
  // since it is the one before the page comes.
  std::optional<double> lastWeighed_;
  std::optional<double> unseenSince_;
  std::optional<double> lookDue_, lookedAt_;
  bool isUnseen_ = false;
  bool pauses_ = false;
};

}  // namespace velto
