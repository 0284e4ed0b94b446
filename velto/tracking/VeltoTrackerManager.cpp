// The queue of pending events: stored, sent, retried, removed.
#include "velto/tracking/VeltoTrackerManager.h"

#include "velto/core/PrivacyValues.h"
#include "velto/core/VeltoDataStore.h"
#include "velto/network/VeltoTaskRequest.h"
#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/tracking/VeltoTrackText.h"

namespace velto {
namespace {

constexpr char storeKey[] = "kVeltoTrackIdentifierKey";
constexpr char clickName[] = "click";
constexpr double pollingInterval = 10;  // seconds
constexpr char acknowledgement[] = "1";
// Room for a server's short complaint, so that the connection
// stays in use; a longer body cannot be an acknowledgement.
constexpr size_t longestAnswer = 1024;

const char* nameOf(VeltoTrackType type) {
  return type == VeltoTrackTypeClick ? clickName : VeltoTrackTypeId;
}

}  // namespace

// --- events

std::shared_ptr<VeltoTrackerManager> VeltoTrackerManager::shared() {
  return Platform::shared<VeltoTrackerManager>();
}

void VeltoTrackerManager::start() {
  auto& queue = Platform::current().mainQueue();
  if (!queue.isCurrent()) return queue.post([] { shared(); });
  shared();
}

void VeltoTrackerManager::trackInstall() {
  const auto key = VeltoDataStore::getVeltoKey();
  if (!key) return;
  const auto identifier = installIdentifierForVeltoKey(*key);
  auto& queue = Platform::current().mainQueue();
  if (queue.isCurrent()) return shared()->_sendTrackIdentifier(identifier, VeltoTrackTypeInstall, true);
  // The main thread may be busy for long. The event is safe meanwhile, and polling may come upon it first.
  VeltoDataStore::storeEntry(identifier, VeltoTrackTypeId, storeKey);
  queue.post([identifier] {
    const auto manager = shared();
    if (!manager->identifierInProgress_.contains(identifier))
      manager->_sendTrackIdentifier(identifier, VeltoTrackTypeInstall, true);
  });
}

void VeltoTrackerManager::trackClickForBannerId(const std::optional<std::string>& bannerId,
                                                const std::optional<std::string>& publisherId,
                                                const std::optional<std::string>& ordId) {
  if (!bannerId || !publisherId || !ordId) return;
  shared()->_sendTrackIdentifier(clickIdentifierForBannerId(*bannerId, *publisherId, *ordId),
                                 VeltoTrackTypeClick, true);
}

std::string VeltoTrackerManager::installIdentifierForVeltoKey(const std::string& key) {
  return VeltoTrackText::_identifierForArgs(VeltoTrackText::filled(VeltoTrackArg, {key}));
}

std::string VeltoTrackerManager::clickIdentifierForBannerId(const std::string& bannerId,
                                                            const std::string& publisherId,
                                                            const std::string& ord) {
  return VeltoTrackText::_identifierForArgs(VeltoTrackText::filled("%@:%@:%@", {bannerId, publisherId, ord}));
}

// --- life

VeltoTrackerManager::VeltoTrackerManager() : self_(std::make_shared<VeltoTrackerManager*>(this)) {
  _startPollingService();
  auto& center = Platform::current().notificationCenter();
  foregroundObserver_ = center.addObserver(UIApplicationWillEnterForegroundNotification,
                                           [this](const NSNotification&) { _willEnterForeground(); });
  backgroundObserver_ = center.addObserver(UIApplicationDidEnterBackgroundNotification,
                                           [this](const NSNotification&) { _didEnterBackground(); });
  endObserver_ = center.addObserver(notificationPlatformWillGo,
                                    [this](const NSNotification&) { _keepWhatWasRefused(); });
}

VeltoTrackerManager::~VeltoTrackerManager() {
  _stopPollingService();
}

void VeltoTrackerManager::_startPollingService() {
  _stopPollingService();
  pollingTimer_ =
      NSTimer::scheduledTimerWithTimeInterval(pollingInterval, [this] { _pollingTimerPerformed(); });
  _pollingTimerPerformed();
}

void VeltoTrackerManager::_stopPollingService() {
  pollingTimer_.reset();
}

void VeltoTrackerManager::_didEnterBackground() {
  _keepWhatWasRefused();
  _stopPollingService();
}

// By a store that was full or broken; there may be no later time for it in this run.
void VeltoTrackerManager::_keepWhatWasRefused() {
  storeUnsaved();
  PrivacyValues::storeRefused();
}

// One event a tick, so that a long queue does not fall upon the server at once. What was tried in vain stays in
// the queue, so the search goes on where the last one ended.
void VeltoTrackerManager::_pollingTimerPerformed() {
  _keepWhatWasRefused();
  const auto identifier = nextFrom(polledUpTo_, identifierInProgress_);
  if (!identifier) return;
  polledUpTo_ = *identifier;
  _sendTrackIdentifier(*identifier, getTrackTypeFromTrackIdenfier(*identifier), false);
}

// --- the queue

DefaultsDictionary& VeltoTrackerManager::identifiers() {
  if (!identifiers_)
    identifiers_ = VeltoDataStore::getDictionaryForKey(storeKey).value_or(DefaultsDictionary{});
  return *identifiers_;
}

std::optional<std::string> VeltoTrackerManager::getNextTrackIdentifierExcept(const Identifiers& except) {
  return nextFrom("", except);
}

std::optional<std::string> VeltoTrackerManager::nextFrom(const std::string& start,
                                                         const Identifiers& except) {
  for (auto event = identifiers().lower_bound(start); event != identifiers().end(); ++event)
    if (!except.contains(event->first)) return event->first;
  return std::nullopt;
}

VeltoTrackType VeltoTrackerManager::getTrackTypeFromTrackIdenfier(const std::string& identifier) {
  const auto found = identifiers().find(identifier);
  if (found == identifiers().end()) return VeltoTrackTypeUnknown;
  if (found->second == VeltoTrackTypeId) return VeltoTrackTypeInstall;
  return found->second == clickName ? VeltoTrackTypeClick : VeltoTrackTypeUnknown;
}

void VeltoTrackerManager::storeTrackIdentifier(const std::string& identifier, VeltoTrackType trackType) {
  _appendIdentifier(identifier, trackType);
}

void VeltoTrackerManager::_appendIdentifier(const std::string& identifier, VeltoTrackType trackType) {
  if (trackType == VeltoTrackTypeUnknown) return;
  if (!identifiers().try_emplace(identifier, nameOf(trackType)).second) return;
  if (!identifierInProgress_.contains(identifier)) polledUpTo_.clear();  // it may stand before those
  save(identifier, nameOf(trackType));
}

void VeltoTrackerManager::deleteTrackIdentifier(const std::string& identifier) {
  identifiers().erase(identifier);
  save(identifier, std::nullopt);
}

// Each change goes into the store at once. What the store refuses is tried again with the next change and with each
// poll, so that in the end it holds what would be there had the whole been written each time.
void VeltoTrackerManager::save(const std::string& identifier, const std::optional<std::string>& type) {
  unsaved_.insert_or_assign(identifier, type);
  storeUnsaved();
}

void VeltoTrackerManager::storeUnsaved() {
  for (auto change = unsaved_.begin(); change != unsaved_.end(); change = unsaved_.erase(change))
    if (!VeltoDataStore::storeEntry(change->first, change->second, storeKey)) return;
}

// --- sending

// What is not acknowledged stays in progress, so that polling
// leaves it alone until the application starts again.
void VeltoTrackerManager::_sendTrackIdentifier(const std::string& identifier, VeltoTrackType trackType,
                                               bool toBeStored) {
  identifierInProgress_.insert(identifier);
  if (toBeStored) storeTrackIdentifier(identifier, trackType);
  _performSendTrackIdentifier(identifier, trackType);
}

void VeltoTrackerManager::_performSendTrackIdentifier(const std::string& identifier,
                                                      VeltoTrackType trackType) {
  taskWithTrackInstall(identifier, trackType, [weak = std::weak_ptr(self_), identifier](bool success) {
    const auto alive = weak.lock();
    if (!alive || !success) return;
    (*alive)->identifierInProgress_.erase(identifier);
    (*alive)->deleteTrackIdentifier(identifier);
  });
}

void VeltoTrackerManager::taskWithTrackInstall(const std::string& identifier, VeltoTrackType trackType,
                                               std::function<void(bool)> completionHandler) {
  std::optional<NSURLRequest> request;
  if (trackType == VeltoTrackTypeInstall) request = VeltoTaskRequest::requestForTrackInstall(identifier);
  if (trackType == VeltoTrackTypeClick) request = VeltoTaskRequest::requestForTrackClick(identifier);
  if (request) _taskWithRequest(std::move(*request), std::move(completionHandler));
}

void VeltoTrackerManager::_taskWithRequest(NSURLRequest request,
                                           std::function<void(bool)> completionHandler) {
  request.maximumBodySize = longestAnswer;
  Platform::current().urlSession().dataTask(
      std::move(request), [completion = std::move(completionHandler)](auto data, auto response, auto error) {
        const bool success = !error && data && response && response->isHTTP && response->statusCode == 200 &&
                             *data == acknowledgement;
        answerOnMain(completion, success);
      });
}

}  // namespace velto
