// One installation of a host application with the library in it, on the headless platform, through all that a script does
// to it; and what must hold after each step.
#pragma once

#include "velto/ads/VeltoAdMediationAdapterProtocol.h"
#include "velto/headless/VeltoHeadless.h"
#include "velto/timeline/TimelineHub.h"
#include "velto/velto.h"

#include <array>
#include <bitset>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <variant>
#include <vector>

#include "Adapters.h"
#include "Ears.h"
#include "Promises.h"
#include "Script.h"
#include "Server.h"

namespace velto::chaos {

// What the host does inside the next call of an ad's delegate.
enum class Reaction { LetGo, Load, Show, Remove, Withdraw, CloseWindow, EndPlatform, RunLoop, Begin };
inline constexpr int reactions = 9;

// An ad of the host application, or the place for one.
struct Placement {
  std::shared_ptr<VeltoBannerViewController> banner;
  std::shared_ptr<VeltoInterstitialViewController> interstitial;
  std::shared_ptr<BannerEars> bannerEars;
  std::shared_ptr<InterstitialEars> interstitialEars;
  std::weak_ptr<UIViewController> working;
  std::shared_ptr<bool> alive;  // whether its delegate may be called
  std::deque<Reaction> reactions;
  bool ready = false, shown = false, closing = false;
  int64_t toldState = 0;

  bool exists() const { return banner || interstitial; }
  int64_t state() const { return banner ? int64_t{banner->state()} : int64_t{interstitial->state()}; }
  void load() const { banner ? banner->load() : interstitial->load(); }
};

// What a walk has met: how much at most, and what of all that there is.
struct Figures {
  size_t steps = 0, loads = 0;
  size_t timers = 0, tasks = 0, webViews = 0, tracks = 0, bytes = 0;  // at once
  std::bitset<128> ends, entries;                                     // VeltoAdEndReason, VeltoTimelineKind

  void add(const Figures& other);
};
size_t bytesInUse();  // of the heap

class World {
 public:
  static constexpr int windows = 2, banners = 3, interstitials = 2, placements = banners + interstitials;

  explicit World(Fault fault);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  // Does it and looks whether all promises hold; nothing more once one is broken.
  void run(const Step& step);
  // Lets go of everything, and looks at what is left.
  void finish();
  const std::optional<std::string>& broken() const { return promises.broken(); }

  // --- for actions
  headless::Platform& system() { return *platform; }
  headless::RecordingWebView* page(int number);
  Placement& placement(int number) { return places.at(static_cast<size_t>(number)); }
  std::unique_ptr<headless::HostWindow>& window(int number) {
    return hostWindows.at(static_cast<size_t>(number));
  }
  void openWindow(int number);
  void begin(int number, int host, int kind);
  void letGo(Placement& place);
  void doAtOnce(Placement& place, Reaction reaction);
  void registerKey();
  // The application ends, by a kill or in order, and starts again.
  enum class End { Killed, PlatformFirst, AdsFirst };
  void relaunch(End how);
  void touch(int window, CGPoint point);
  void willTouch();  // what else touches
  void moveTime(std::chrono::nanoseconds by);

  Promises promises;
  Figures figures;
  Consent consent;
  Server server{promises, consent};
  const std::shared_ptr<Network> network = std::make_shared<Network>();
  std::shared_ptr<headless::MemoryDefaults> store = std::make_shared<headless::MemoryDefaults>();
  std::shared_ptr<headless::Platform> platform;
  std::array<std::unique_ptr<headless::HostWindow>, windows> hostWindows;
  std::unique_ptr<headless::HostSlot> slot;
  std::array<Placement, placements> places;
  std::optional<VeltoTimelineKind> killAt;  // the web process, when this is written down next
  bool touchedNow = false;                  // in this step, or pressed as adapters tell
  bool loseStore = false;                   // before the next run

 private:
  class Sink;
  void start();
  void hear(Placement& place, const std::shared_ptr<bool>& alive, Heard heard);
  void follow(Placement& place, Heard heard);
  void settle();
  void check();
  void checkWindows();
  void checkTouches();
  void checkBounds();
  void checkSecrets();
  void checkNothingLeft();

  std::shared_ptr<Sink> sink_;
  std::vector<std::weak_ptr<UIViewController>> working_;
  std::vector<std::shared_ptr<void>> heldOnTo_;  // by faults
  size_t opened_ = 0;
  std::optional<double> lastTouch_;  // monotonic seconds
  bool endsPlatform_ = false;
  int64_t lastMask_ = 30;
  Handle maskObserver_;
};

}  // namespace velto::chaos
