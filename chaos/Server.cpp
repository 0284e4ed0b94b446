// Answers, and what is read from requests.
#include "Server.h"

#include "velto/network/VeltoParameterNames.h"
#include "velto/platform/NSUserDefaults.h"
#include "velto/platform/foundation/JSON.h"

namespace velto::chaos {
namespace {

using headless::Answer;
using namespace std::chrono_literals;

constexpr char storeKey[] = "kVeltoTrackIdentifierKey";
constexpr double pollingInterval = 10;  // seconds
constexpr size_t mostForgotten = 32;    // requests that a simulation keeps

const DefaultsDictionary* dictionaryIn(const std::map<std::string, DefaultsValue>& stored) {
  const auto found = stored.find(storeKey);
  return found == stored.end() ? nullptr : std::get_if<DefaultsDictionary>(&found->second);
}

}  // namespace

void Server::attach(headless::Platform& platform) {
  platform_ = &platform;
  sent_.clear();
  clicksDue_ = 0;
  inFront_ = true;
  quietSince_ = polledFor_ = 0;
  const auto stored = platform.defaults()->entries();
  const auto* dictionary = dictionaryIn(stored);
  found_ = dictionary ? dictionary->size() : 0;
  platform.urlSession().respond([](const NSURLRequest&) { return true; },
                                [this](const NSURLRequest& request) { return answer(request); });
}

// What the store would not take is lost with the process, and nobody was told otherwise.
void Server::detach() {
  if (!platform_) return;
  const auto stored = platform_->defaults()->entries();
  const auto* dictionary = dictionaryIn(stored);
  std::erase_if(waiting_, [&](const auto& track) {
    return !track.second.inStore && !(dictionary && dictionary->contains(track.first));
  });
  for (auto& [identifier, track] : waiting_) track.inStore = true;
  platform_ = nullptr;
}

void Server::storeFails(bool fails) {
  storeFails_ = fails;
  quietSince_ = now();
}

void Server::storeWasLost() {
  waiting_.clear();
}

void Server::applicationInFront(bool inFront) {
  inFront_ = inFront;
  quietSince_ = now();
}

Answer Server::answer(const NSURLRequest& request) {
  if (!platform_) return Answer::offline();
  if (platform_->urlSession().tasks().size() > mostForgotten) platform_->urlSession().forgetAnswered();
  const auto path = request.url.absoluteString();
  const bool isClick = path.find("/trk_click.php?") != std::string::npos;
  if (isClick || path.find("/trk_install.php?") != std::string::npos) return answerTrack(request, isClick);
  if (path.find("/sdk/") != std::string::npos) {
    ++adRequests_;
    checkConsent(request);
  }
  if (next.empty()) return {.status = 204};
  const auto answer = next.front();
  next.pop_front();
  return answer;
}

Answer Server::answerTrack(const NSURLRequest& request, bool isClick) {
  const auto items = request.url.queryItems();
  promises_.require(items && !items->empty() && items->front().value, "a track says which one it is");
  if (promises_.broken()) return {};
  const auto& identifier = *items->front().value;
  promises_.require(sent_.insert(identifier).second, "a track is sent once in a run of the application");
  const bool isNew = waiting_.try_emplace(identifier, Track{!storeFails_}).second;
  if (isNew && isClick && clicksDue_ > 0) --clicksDue_;  // of a load that has ended nothing is written down
  const auto acknowledge = [&] {
    waiting_.erase(identifier);
    return Answer{.body = "1"};
  };
  switch (tracks) {
    case TrackAnswer::Acknowledge:
      return acknowledge();
    case TrackAnswer::AcknowledgeLate: {
      auto answer = acknowledge();
      answer.delay = 5s;
      return answer;
    }
    case TrackAnswer::Refuse:
      return {.body = "0"};
    case TrackAnswer::Error:
      return {.status = 500};
    case TrackAnswer::Offline:
      return Answer::offline();
    case TrackAnswer::Silence:
      return Answer::silence();
    case TrackAnswer::CaptivePortal:
      return Answer::captivePortal();
    case TrackAnswer::Cut:
      return {.body = ""};
  }
  return {};
}

void Server::checkConsent(const NSURLRequest& request) {
  const auto body = readJSON(request.httpBody.value_or(""));
  promises_.require(body && body->object(), "an ad request has a body");
  if (promises_.broken()) return;
  const auto value = [&](const char* name) {
    const auto found = body->object()->find(name);
    return found == body->object()->end() ? JSON() : found->second;
  };
  const auto says = [&](const char* name, const std::string& text) {
    const auto sent = value(name);
    return sent == JSON(text) || (sent.isNull() && text.empty());
  };
  const bool accepts = value(constParamGDPR).number().value_or(0) != 0;
  promises_.require(accepts == consent_.accepted, "an ad request says what consent there is");
  promises_.require(says(constParamGDPRConsent, consent_.gdpr),
                    "an ad request has the consent string of now");
  promises_.require(says(constParamPrivacy, consent_.usPrivacy),
                    "an ad request has the US privacy string of now");
  const bool mayTrack = platform_->trackingManager().authorizationStatus == 3;
  promises_.require(mayTrack || value(constParamIDFA).isNull(),
                    "who must not be tracked has no advertising identifier");
  const auto& place = platform_->location();
  promises_.require(value(constParamGeoCoordinate).isNull() || (place.servicesEnabled && place.lastKnown),
                    "a place is told only where the system knows one");
}

void Server::checkTracks() {
  promises_.require(clicksDue_ == 0, "a press that counts is sent as a click at once");
  const auto stored = platform_->defaults()->entries();
  const auto* dictionary = dictionaryIn(stored);
  if (promises_.has(Fault::LostTrack) && dictionary && !dictionary->empty())
    platform_->defaults()->setEntry(storeKey, dictionary->begin()->first, std::nullopt);
  const bool wasPolled = !storeFails_ && inFront_ && now() > quietSince_ + pollingInterval;
  const bool allWereSent = polledFor_ > pollingInterval * static_cast<double>(found_ + 2);
  for (auto& [identifier, track] : waiting_) {
    promises_.require(!allWereSent || sent_.contains(identifier), "what waits is sent again in each run");
    const bool isThere = dictionary && dictionary->contains(identifier);
    promises_.require(isThere || !(track.inStore || wasPolled), "a track stays until it is acknowledged");
    track.inStore = track.inStore || isThere;
  }
}

}  // namespace velto::chaos
