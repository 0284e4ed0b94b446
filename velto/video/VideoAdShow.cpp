// One video ad. Whoever is called from here may end it: each step looks whether it still goes on.
#include "velto/video/VideoAdShow.h"

#include "velto/platform/AVAudioSession.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTMediaChoice.h"
#include "velto/video/VideoAdPage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr double lookInterval = 0.25, awayInterval = 1;  // seconds
// When a video ad counts as seen: half of it, so long without a break (the Media Rating Council's measure).
constexpr int seenPercent = 50;
constexpr auto seenFor = 2s;
constexpr double nearsEnd = 5;  // seconds: enough to load the next one

constexpr std::array quartiles{
    std::tuple{"firstQuartile", VeltoVideoAdQuartile::First, VideoMeasurement::Event::FirstQuartile},
    std::tuple{"midpoint", VeltoVideoAdQuartile::Midpoint, VideoMeasurement::Event::Midpoint},
    std::tuple{"thirdQuartile", VeltoVideoAdQuartile::Third, VideoMeasurement::Event::ThirdQuartile}};

OMIDVeltoPosition measuredPosition(VeltoVideoAdPosition position) {
  switch (position) {
    case VeltoVideoAdPosition::Preroll:
      return OMIDVeltoPositionPreroll;
    case VeltoVideoAdPosition::Midroll:
      return OMIDVeltoPositionMidroll;
    case VeltoVideoAdPosition::Postroll:
      return OMIDVeltoPositionPostroll;
    case VeltoVideoAdPosition::Standalone:
      break;
  }
  return OMIDVeltoPositionStandalone;
}

std::weak_ptr<UIView> rootOfWindow(const UIView& view) {
  UIView* root = view.superview();
  while (root && root->superview()) root = root->superview();
  return root ? root->weak_from_this() : std::weak_ptr<UIView>();
}

bool isSame(const std::weak_ptr<UIView>& a, const std::weak_ptr<UIView>& b) {
  return !a.owner_before(b) && !b.owner_before(a);
}

}  // namespace

VideoAdShow::VideoAdShow(VASTAd ad, VASTMacros macros, Surroundings around,
                         std::weak_ptr<VideoAdListener> listener)
    : tracker_(std::move(ad), std::move(macros)),
      around_(std::move(around)),
      notes_(around_.record, around_.number),
      listener_(std::move(listener)),
      icons_(tracker_.ad().linear->icons, {[this](size_t icon) { tracker_.iconShown(icon); },
                                           [this](size_t icon) { return tracker_.iconClicked(icon); },
                                           [this](bool opens) { pressed(opens); }}),
      isFullscreen_(around_.isFullscreen) {}

VideoAdShow::~VideoAdShow() {
  if (media_) media_->cancel();
}

// --- from files to the first picture

void VideoAdShow::prepare() {
  if (media_) return;
  auto& platform = Platform::current();
  const double scale = platform.mainScreen().scale();
  const CGSize size = around_.screen->stage()->bounds().size;
  VASTSurroundings surroundings;
  surroundings.canPlay = [&platform](const VASTMediaFile& file) {
    return platform.media().canPlay(lowercased(file.type), lowercased(file.codec));
  };
  surroundings.surelyPlays = [&platform](const VASTMediaFile& file) {
    return platform.media().surelyPlays(lowercased(file.type), lowercased(file.codec));
  };
  surroundings.width = size.width * scale;
  surroundings.height = size.height * scale;
  surroundings.bandwidth =
      around_.settings.bandwidth ? around_.settings.bandwidth : platform.media().bandwidth();
  surroundings.onlySecure = around_.settings.onlySecureFiles;
  media_ = std::make_shared<VideoAdMedia>(chooseVASTMedia(tracker_.ad().linear->mediaFiles, surroundings),
                                          around_.settings.fileTimeout, *this);
  media_->start();
}

void VideoAdShow::begin() {
  const auto self = shared_from_this();
  hasBegun_ = true;
  around_.screen->setListener(weak_from_this());
  observe();
  measurement_ = std::make_unique<VideoMeasurement>(around_.screen->stage(), [weak = weak_from_this()] {
    if (const auto alive = weak.lock()) alive->look();
  });
  measurement_->addControls(around_.screen->controls());
  root_ = rootOfWindow(*around_.screen->view());
  prepare();
  look();
  retime();
  refresh();
  if (fault_) return mediaFailed(*fault_);
  if (file_) showPicture();
}

// What is told to servers, for measurement and timeline.
void VideoAdShow::observe() {
  tracker_.observe([this](std::string_view event) {
    notes_.event(event);
    for (const auto& [name, quartile, measured] : quartiles) {
      if (event != name) continue;
      if (measurement_) measurement_->tell(measured);
      passed_.push_back(quartile);
    }
  });
  tracker_.observeSent(notes_.receipts());
}

void VideoAdShow::mediaReady(const VASTMediaFile& file) {
  const auto self = shared_from_this();
  file_ = file;
  notes_.file(VeltoTimelineKind::FileChosen, file);
  if (isTooLong(media_->duration())) return mediaFailed(VASTError::WrongDuration);
  if (hasBegun_) showPicture();
}

// Of the file, whatever its document says.
bool VideoAdShow::isTooLong(double seconds) const {
  constexpr double rounding = 1;  // second
  return around_.settings.longest && seconds > *around_.settings.longest + rounding;
}

void VideoAdShow::showPicture() {
  media_->setVolume(around_.sound->heard());
  around_.screen->setPicture(media_->player()->makePicture());
  notes_.picture(media_->seconds());
  tracker_.chose(*file_);
  tracker_.setMuted(around_.sound->muted);
  tracker_.setFullscreen(isFullscreen_);
  tracker_.loaded();
  startMeasuring();
  tellWhatIsLeftOut();
  isReady_ = true;
  applyPlaying();
}

// Scripts of vendors that the application wants, and of the kind that runs here; the others' servers are told.
void VideoAdShow::startMeasuring() {
  const auto& refused = around_.settings.refusedVendors;
  std::vector<VideoMeasurement::Script> scripts;
  std::vector<size_t> of;  // which verification each is of
  for (size_t place = 0; place < tracker_.ad().verifications.size(); ++place) {
    const auto& verification = tracker_.ad().verifications[place];
    if (std::find(refused.begin(), refused.end(), verification.vendor) != refused.end()) {
      notVerified(place, VASTNotVerified::VendorRefused);
      continue;
    }
    const auto before = scripts.size();
    for (const auto& script : verification.scripts) {
      const VideoMeasurement::Script found{script.url, verification.vendor, verification.parameters};
      if (scripts.size() == before && lowercased(script.apiFramework) == "omid" &&
          VideoMeasurement::canRun(found))
        scripts.push_back(found);
    }
    if (scripts.size() == before)
      notVerified(place, VASTNotVerified::NotSupported);
    else
      of.push_back(place);
  }
  measurement_->start(
      scripts, info().skippableAfter, measuredPosition(around_.settings.position),
      [weak = weak_from_this(), of, told = std::set<size_t>()](std::optional<size_t> lost) mutable {
        const auto alive = weak.lock();
        for (size_t script = 0; alive && script < of.size(); ++script)
          if (lost.value_or(script) == script && told.insert(script).second)
            alive->notVerified(of[script], VASTNotVerified::LoadFailed);
      });
}

void VideoAdShow::notVerified(size_t verification, VASTNotVerified reason) {
  tracker_.notVerified(tracker_.ad().verifications[verification], reason);
  goesOnWithout(VASTError::VerificationNotRun);
}

// What belongs to the ad, and is not its video.
void VideoAdShow::goesOnWithout(VASTError error) {
  notes_.failed(error);
  tracker_.failed(error);
}

void VideoAdShow::tellWhatIsLeftOut() {
  const auto& ad = tracker_.ad();
  if (!ad.linear->interactiveFiles.empty()) goesOnWithout(VASTError::InteractiveNotRun);
  if (!std::all_of(ad.companions.begin(), ad.companions.end(), VideoAdPage::canShow))
    goesOnWithout(VASTError::CompanionNotSupported);
}

void VideoAdShow::startPlaying() {
  hasStarted_ = isPlaying_ = true;
  AVAudioSession::sharedInstance().setActive();
  media_->setPlaying(true);
  const double length = media_->duration();
  tracker_.started(length > 0 ? std::optional(length) : std::nullopt);
  measurement_->impression();
  notes_.seen(measurement_->seen().percent);
  measurement_->started(tracker_.duration().value_or(0), around_.sound->heard());
  if (isFullscreen_) measurement_->setFullscreen(true);

  std::vector<double> times = icons_.times();
  const auto& linear = *tracker_.ad().linear;
  if (const auto duration = tracker_.duration())
    for (const double part : {0.25, 0.5, 0.75}) times.push_back(*duration * part);
  for (const auto& tracking : linear.trackings)
    if (const auto at = tracking.offset ? tracking.offset->secondsOf(tracker_.duration()) : std::nullopt)
      times.push_back(*at);
  if (const auto skippable = info().skippableAfter) times.push_back(*skippable);
  media_->atTimes(times, [weak = weak_from_this()] {
    if (const auto alive = weak.lock()) alive->playheadMoved();
  });
  retime();
  watchViewable();
  refresh();
  if (const auto to = listener_.lock()) to->adStarted();
  if (!hasEnded_) tellPassed();
}

// --- while it plays

void VideoAdShow::applyPlaying() {
  if (!isReady_ || hasEnded_) return;
  const bool plays = !pausedByPerson_ && !isAway_;
  if (!hasStarted_) return plays ? startPlaying() : retime();
  if (std::exchange(isPlaying_, plays) == plays) return;
  media_->setPlaying(plays);
  tracker_.playhead(media_->seconds());
  tracker_.setPaused(!plays);
  measurement_->tell(plays ? Event::Resume : Event::Pause);
  retime();
  watchViewable();
  refresh();
  tellPassed();
  if (const auto to = listener_.lock(); to && !hasEnded_) to->adPaused(!plays);
}

void VideoAdShow::playheadMoved() {
  if (hasEnded_) return;
  tracker_.playhead(media_->seconds());
  refresh();
  tellPassed();
}

void VideoAdShow::tellPassed() {
  const auto passed = std::exchange(passed_, {});
  for (const auto quartile : passed)
    if (const auto to = listener_.lock(); to && !hasEnded_) to->adPassed(quartile);
}

void VideoAdShow::mediaStalled(bool stalled) {
  isStalled_ = stalled;
  if (hasStarted_) measurement_->tell(stalled ? Event::BufferStart : Event::BufferFinish);
  watchViewable();
}

void VideoAdShow::mediaEnded() {
  const auto self = shared_from_this();
  if (hasEnded_) return;
  tracker_.completed();
  tellPassed();
  if (hasEnded_) return;
  measurement_->tell(Event::Complete);
  end(VideoAdEnd::Completed);
}

void VideoAdShow::mediaFailed(VASTError error) {
  const auto self = shared_from_this();
  if (hasEnded_) return;
  if (!hasBegun_) {  // its servers are told when it would have been its turn
    fault_ = error;
    return;
  }
  notes_.failed(error);
  tracker_.failed(error);
  end(VideoAdEnd::Failed, error);
}

void VideoAdShow::look() {
  if (hasEnded_) return;
  const auto seen = measurement_->seen();
  if (hasStarted_) notes_.seen(seen.percent);
  const bool wasAway = std::exchange(isAway_, seen.away);
  watchViewable();
  if (wasAway == isAway_) return;
  retime();
  applyPlaying();
}

void VideoAdShow::watchViewable() {
  const bool counts =
      hasStarted_ && !hasEnded_ && isPlaying_ && !isStalled_ && measurement_->seen().percent >= seenPercent;
  if (std::exchange(countsAsSeen_, counts) == counts) return;
  ++sighting_;
  auto* platform = Platform::currentOrNull();
  if (!counts || !platform) return;
  platform->mainQueue().postAfter(seenFor, [weak = weak_from_this(), of = sighting_] {
    const auto alive = weak.lock();
    if (alive && alive->sighting_ == of && !alive->hasEnded_)
      alive->tracker_.viewability(VASTViewability::Viewable);
  });
}

// Nothing needs to be looked at while a person has it wait.
void VideoAdShow::retime() {
  timer_.reset();
  if (hasEnded_ || (pausedByPerson_ && !isAway_)) return;
  timer_ = NSTimer::scheduledTimerWithTimeInterval(isAway_ ? awayInterval : lookInterval,
                                                   [weak = weak_from_this()] {
                                                     if (const auto alive = weak.lock()) alive->tick();
                                                   });
}

void VideoAdShow::tick() {
  if (wasTakenAway()) return end(VideoAdEnd::Closed);
  if (!hasStarted_) return;
  media_->look();
  if (!hasEnded_ && isTooLong(seconds())) return mediaFailed(VASTError::WrongDuration);
  playheadMoved();
  const auto duration = tracker_.duration();
  if (hasEnded_ || !duration || *duration - media_->seconds() > nearsEnd || std::exchange(isNearEnd_, true))
    return;
  if (const auto to = listener_.lock()) to->adNearsEnd();
}

// Without a view around it, or in one that left its window. A window that is hidden is not left.
bool VideoAdShow::wasTakenAway() const {
  const auto& view = *around_.screen->view();
  if (!view.superview()) return true;
  return !view.isInWindow() && !isSame(root_, rootOfWindow(view));
}

// --- the end

void VideoAdShow::close() {
  listener_.reset();
  end(VideoAdEnd::Closed);
}

void VideoAdShow::end(VideoAdEnd how, std::optional<VASTError> error) {
  if (std::exchange(hasEnded_, true)) return;
  const auto self = shared_from_this();
  if (how == VideoAdEnd::Closed || how == VideoAdEnd::Left) tracker_.closed();
  if (hasStarted_)
    tracker_.viewability(measurement_->seen().measurable ? VASTViewability::NotViewable
                                                         : VASTViewability::Undetermined);
  timer_.reset();
  icons_.clear();
  around_.screen->setListener({});
  if (media_) media_->cancel();
  around_.screen->setPicture(nullptr);
  measurement_.reset();
  if (const auto to = listener_.lock()) to->adEnded(how, error, hasStarted_);
}

}  // namespace velto
