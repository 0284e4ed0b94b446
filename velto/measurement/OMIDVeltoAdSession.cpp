// The session's life, its pages and its friendly views.
#include "velto/measurement/OMIDVeltoAdSession.h"

#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/ServicePage.h"
#include "velto/measurement/SessionStart.h"
#include "velto/measurement/ViewSight.h"
#include "velto/measurement/ViewabilityWatcher.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"
#include "velto/platform/ui/ViewChanges.h"

#include <algorithm>

namespace velto {
namespace {

constexpr size_t longestReason = 50;  // characters

bool isReason(const std::string& text) {
  return text.size() <= longestReason && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ';
         });
}

}  // namespace

std::shared_ptr<OMIDVeltoAdSession> OMIDVeltoAdSession::initWithConfiguration(
    const std::shared_ptr<const OMIDVeltoAdSessionConfiguration>& configuration,
    const std::shared_ptr<const OMIDVeltoAdSessionContext>& adSessionContext, OMIDVeltoErrorResult error) {
  if (!OMIDVeltoSDK::sharedInstance()->isActive()) {
    OMIDVeltoFail(error, OMIDVeltoErrorNotActive, "The measurement engine is not active");
    return nullptr;
  }
  if (!configuration || !adSessionContext) {
    OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "A session needs a configuration and a context");
    return nullptr;
  }
  return std::shared_ptr<OMIDVeltoAdSession>(new OMIDVeltoAdSession(configuration, adSessionContext));
}

OMIDVeltoAdSession::OMIDVeltoAdSession(std::shared_ptr<const OMIDVeltoAdSessionConfiguration> configuration,
                                       std::shared_ptr<const OMIDVeltoAdSessionContext> context)
    : configuration_(std::move(configuration)), context_(std::move(context)) {}

OMIDVeltoAdSession::~OMIDVeltoAdSession() {
  finish();
}

// --- life

void OMIDVeltoAdSession::start() {
  if (state_ != State::Created) return;
  state_ = State::Started;
  if (context_->isNative)
    beginPage(ServicePage::hidden(context_->script));
  else if (const auto webView = context_->webView.lock())
    beginPage(ServicePage::ofAd(webView));
}

void OMIDVeltoAdSession::finish() {
  if (state_ == State::Started) endPage();
  state_ = State::Finished;
}

void OMIDVeltoAdSession::beginPage(std::shared_ptr<ServicePage> page) {
  if (!page) return;
  page_ = std::move(page);
  page_->wasTakenAway();  // from here on it can be
  if (lost_)
    page_->observeLoss(context_->resources.size(), [weak = weak_from_this()](std::optional<size_t> script) {
      if (const auto alive = weak.lock(); alive && alive->isStarted()) alive->lost_(script);
    });
  identifier_ = uuidString();
  watcher_ = ViewabilityWatcher::watch([this] { return look(); },
                                       [this](const Viewability& seen) {
                                         if (const auto json = writeJSON(seen.json(), false))
                                           call("geometry", *json);
                                         if (seen_) seen_(seen.percentageInView);
                                       });
  if (!context_->isNative) changes_ = ViewChanges::observe([this] { viewsChanged(); });
  tellStart();
  if (seen_) seen_(watcher_->latest().percentageInView);
}

void OMIDVeltoAdSession::tellStart() {
  JSON::Object told =
      sessionStart(identifier_, *configuration_, *context_, watcher_->latest(), page_->lossWords());
  if (loaded_) {
    told["loaded"] = loaded_->properties;
    told["loadedTime"] = loaded_->time;
  }
  if (const auto json = writeJSON(told, false)) call("start", *json);
}

void OMIDVeltoAdSession::endPage() {
  changes_.cancel();
  watcher_.reset();
  ServicePage::finish(std::exchange(page_, nullptr));
}

// A page may be moved from one view to another within a turn; one that is in no view afterwards is done with.
void OMIDVeltoAdSession::viewsChanged() {
  auto* platform = Platform::currentOrNull();
  if (checking_ || !platform || !page_->wasTakenAway()) return;
  checking_ = true;
  platform->mainQueue().post([weak = weak_from_this()] {
    const auto alive = weak.lock();
    if (!alive) return;
    alive->checking_ = false;
    if (alive->page_ && alive->page_->wasTakenAway()) alive->endPage();
  });
}

void OMIDVeltoAdSession::call(const char* operation, const std::string& arguments) {
  if (page_) page_->call(operation, ServicePage::now(), arguments);
}

// --- what is measured

void OMIDVeltoAdSession::setMainAdView(const std::shared_ptr<UIView>& adView) {
  if (state_ == State::Finished) return;
  mainAdView_ = adView;
  if (state_ == State::Created) return;
  if (const auto webView = std::dynamic_pointer_cast<WKWebView>(adView); webView && !context_->isNative) {
    if (page_ && page_->wasTakenAway()) endPage();
    if (!page_) return beginPage(ServicePage::ofAd(webView));
    // It may have loaded another document; one that knows of the session stays as it is.
    if (page_->webView() == webView) tellStart();
  }
  lookNow();
}

AdSight OMIDVeltoAdSession::look() const {
  auto view = mainAdView_.lock();
  if (!view && page_ && !context_->isNative) view = page_->webView();
  std::vector<std::shared_ptr<UIView>> held;
  FriendlyViews friendly;
  for (const auto& entry : friendly_)
    if (auto alive = entry.view.lock()) friendly.push_back(held.emplace_back(std::move(alive)).get());
  AdSight sight = sightOf(view.get(), friendly);
  sight.backgrounded = sight.backgrounded || OMIDVeltoSDK::sharedInstance()->isInBackground();
  sight.locked = OMIDVeltoSDK::sharedInstance()->isDeviceLocked();
  return sight;
}

void OMIDVeltoAdSession::lookNow() {
  if (watcher_) watcher_->lookNow();
}

void OMIDVeltoAdSession::expectChange() {
  if (watcher_) watcher_->hurry();
}

std::optional<Viewability> OMIDVeltoAdSession::viewability() const {
  return watcher_ ? std::optional(watcher_->latest()) : std::nullopt;
}

// --- friendly views

bool OMIDVeltoAdSession::addFriendlyObstruction(const std::shared_ptr<UIView>& view,
                                                OMIDVeltoFriendlyObstructionType purpose,
                                                const std::optional<std::string>& detailedReason,
                                                OMIDVeltoErrorResult error) {
  if (state_ == State::Finished)
    return OMIDVeltoFail(error, OMIDVeltoErrorInvalidState, "The session has finished");
  if (!view) return OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "There is no view");
  if (detailedReason && !isReason(*detailedReason))
    return OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument,
                         "A reason has at most 50 letters, digits and blanks");
  std::erase_if(friendly_, [](const auto& entry) { return entry.view.expired(); });
  if (std::any_of(friendly_.begin(), friendly_.end(),
                  [&](const auto& entry) { return entry.view.lock() == view; }))
    return OMIDVeltoFail(error, OMIDVeltoErrorInvalidState, "The view is friendly already");
  friendly_.push_back({view, purpose, detailedReason});
  lookNow();
  return true;
}

void OMIDVeltoAdSession::removeFriendlyObstruction(const std::shared_ptr<UIView>& view) {
  if (state_ == State::Finished || !view) return;
  if (std::erase_if(friendly_, [&](const auto& entry) { return entry.view.lock() == view; }) > 0) lookNow();
}

void OMIDVeltoAdSession::removeAllFriendlyObstructions() {
  if (state_ == State::Finished || friendly_.empty()) return;
  friendly_.clear();
  lookNow();
}

// --- events

bool OMIDVeltoAdSession::mayReport(bool already, OMIDVeltoErrorResult error) const {
  if (configuration_->impressionOwner != OMIDVeltoOwnerNative)
    return OMIDVeltoFail(error, OMIDVeltoErrorWrongOwner, "The page reports that");
  if (state_ == State::Finished)
    return OMIDVeltoFail(error, OMIDVeltoErrorInvalidState, "The session has finished");
  if (already) return OMIDVeltoFail(error, OMIDVeltoErrorInvalidState, "It was reported already");
  return true;
}

bool OMIDVeltoAdSession::impressionOccurred(OMIDVeltoErrorResult error) {
  if (!mayReport(impressionOccurred_, error)) return false;
  impressionOccurred_ = true;
  start();
  call("impression", "");
  return true;
}

bool OMIDVeltoAdSession::loaded(JSON::Object properties, OMIDVeltoErrorResult error) {
  if (!mayReport(loaded_.has_value(), error)) return false;
  loaded_ = {std::move(properties), ServicePage::now()};
  if (const auto json = writeJSON(loaded_->properties, false)) call("loaded", *json);
  return true;
}

}  // namespace velto
