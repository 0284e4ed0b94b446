// One ad that is measured, from its start to its finish. Held by the controller that shows the ad
// (UIViewControllerOMSDKSDKVelto); main thread.
//
// An HTML session runs in its ad's page. When that page is taken off the screen its scripts hear the end, and
// the session goes on in the next page that is made its main ad view, so a banner that refreshes keeps one
// session while each of its pages is measured from its own start to its own end. A native session runs in a
// hidden page with the verification scripts that its context names.
#pragma once

#include "velto/measurement/OMIDVeltoAdSessionConfiguration.h"
#include "velto/measurement/OMIDVeltoAdSessionContext.h"
#include "velto/measurement/Viewability.h"
#include "velto/platform/Handle.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto {

class ServicePage;
class UIView;
class ViewabilityWatcher;

class OMIDVeltoAdSession : public std::enable_shared_from_this<OMIDVeltoAdSession> {
 public:
  // Null, with an error, without configuration or context, or while the engine is not active.
  static std::shared_ptr<OMIDVeltoAdSession> initWithConfiguration(
      const std::shared_ptr<const OMIDVeltoAdSessionConfiguration>& configuration,
      const std::shared_ptr<const OMIDVeltoAdSessionContext>& adSessionContext, OMIDVeltoErrorResult error);
  OMIDVeltoAdSession(const OMIDVeltoAdSession&) = delete;
  OMIDVeltoAdSession& operator=(const OMIDVeltoAdSession&) = delete;
  ~OMIDVeltoAdSession();

  // Each counts once; a session that has finished does nothing more.
  void start();
  void finish();

  // The view that is measured, held weakly. Until one is set an HTML session measures its page.
  void setMainAdView(const std::shared_ptr<UIView>& adView);
  std::shared_ptr<UIView> mainAdView() const { return mainAdView_.lock(); }

  // A view over the ad that does not count as covering it. The reason may be left out, else it is at most 50
  // letters, digits and blanks. A view that is friendly already stays what it was, and that is an error.
  bool addFriendlyObstruction(const std::shared_ptr<UIView>& view, OMIDVeltoFriendlyObstructionType purpose,
                              const std::optional<std::string>& detailedReason, OMIDVeltoErrorResult error);
  void removeFriendlyObstruction(const std::shared_ptr<UIView>& view);
  void removeAllFriendlyObstructions();

  const OMIDVeltoAdSessionConfiguration& configuration() const { return *configuration_; }
  bool isStarted() const { return state_ == State::Started; }
  bool isFinished() const { return state_ == State::Finished; }
  // The library is about to change the view's place itself: what is seen then is told without delay.
  void expectChange();
  // Told what part of the view can be seen, when measuring begins and when it is another: 0 … 100.
  void setSightObserver(std::function<void(int percent)> seen) { seen_ = std::move(seen); }
  // Of a native session, before its start: told of scripts that cannot be loaded (ServicePage::observeLoss).
  void setLossObserver(std::function<void(std::optional<size_t> script)> lost) { lost_ = std::move(lost); }
  // What was found at the last look; nothing while no page is measured.
  std::optional<Viewability> viewability() const;

  // For the session's event objects (OMIDVeltoAdEvents, OMIDVeltoMediaEvents).
  bool claimAdEvents() { return !std::exchange(hasAdEvents_, true); }
  bool claimMediaEvents() { return !std::exchange(hasMediaEvents_, true); }
  bool impressionOccurred(OMIDVeltoErrorResult error);
  bool loaded(JSON::Object properties, OMIDVeltoErrorResult error);
  void call(const char* operation, const std::string& arguments);  // of something that happens now

 private:
  enum class State { Created, Started, Finished };
  struct Friendly {
    std::weak_ptr<UIView> view;
    OMIDVeltoFriendlyObstructionType purpose;
    std::optional<std::string> reason;
  };

  OMIDVeltoAdSession(std::shared_ptr<const OMIDVeltoAdSessionConfiguration> configuration,
                     std::shared_ptr<const OMIDVeltoAdSessionContext> context);
  bool mayReport(bool already, OMIDVeltoErrorResult error) const;
  AdSight look() const;
  void beginPage(std::shared_ptr<ServicePage> page);
  void endPage();
  void tellStart();
  void viewsChanged();
  void lookNow();

  std::shared_ptr<const OMIDVeltoAdSessionConfiguration> configuration_;
  std::shared_ptr<const OMIDVeltoAdSessionContext> context_;
  State state_ = State::Created;
  std::weak_ptr<UIView> mainAdView_;
  std::vector<Friendly> friendly_;
  struct Loaded {
    JSON::Object properties;
    int64_t time;  // as in ServicePage::call()
  };
  std::optional<Loaded> loaded_;  // once it was reported
  bool impressionOccurred_ = false;
  bool hasAdEvents_ = false;
  bool hasMediaEvents_ = false;
  std::shared_ptr<ServicePage> page_;
  std::string identifier_;  // of this session in this page
  std::shared_ptr<ViewabilityWatcher> watcher_;
  std::function<void(int percent)> seen_;
  std::function<void(std::optional<size_t>)> lost_;
  bool checking_ = false;
  Handle changes_;
};

}  // namespace velto
