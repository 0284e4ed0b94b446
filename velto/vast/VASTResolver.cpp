// The walk down the wrappers. Each step is told what stands above it, and hands on what it found.
#include "velto/vast/VASTResolver.h"

#include "velto/platform/Clock.h"
#include "velto/platform/Durations.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/NSURLSession.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTMerge.h"

#include <algorithm>
#include <memory>

namespace velto {
namespace {

// A wrapper that is being followed, and those around it.
struct VASTLevel {
  std::shared_ptr<const VASTLevel> above;
  VASTAd ad;
  size_t depth = 1;
};
using VASTLevelPointer = std::shared_ptr<const VASTLevel>;

bool blocks(const VASTAd& wrapper, const VASTAd& ad) {
  const auto& blocked = wrapper.wrapper->blockedCategories;
  return std::any_of(ad.categories.begin(), ad.categories.end(), [&](const auto& category) {
    return std::any_of(blocked.begin(), blocked.end(), [&](const auto& other) {
      const bool sameList = other.authority.empty() || other.authority == category.authority;
      return sameList && lowercased(other.code) == lowercased(category.code);
    });
  });
}

class VASTResolving : public std::enable_shared_from_this<VASTResolving> {
 public:
  using Ads = std::vector<VASTAd>;
  struct Found {
    Ads pod, spare;
  };
  using Done = std::function<void(Found)>;

  VASTResolving(VASTSettings settings, VASTResolver::Completion completion)
      : settings_(std::move(settings)), completion_(std::move(completion)) {}

  void begin(const NSURL& tag) {
    fetch(tag, nullptr, [self = shared_from_this()](Found found) { self->finish(std::move(found)); });
  }
  void begin(const std::shared_ptr<VASTDocument>& document) {
    read(std::move(*document), 0, nullptr,
         [self = shared_from_this()](Found found) { self->finish(std::move(found)); });
  }
  void cancel() { completion_ = nullptr; }

 private:
  void finish(Found found) {
    if (!completion_) return;
    if (found.pod.size() > settings_.mostAds) found.pod.resize(settings_.mostAds);
    const size_t room = settings_.mostAds - found.pod.size();
    if (found.spare.size() > room) found.spare.resize(room);
    VASTResolution resolution{std::move(found.pod), std::move(found.spare), std::nullopt};
    if (resolution.pod.empty()) resolution.error = error_.value_or(VASTError::NoAdsAfterWrapper);
    std::exchange(completion_, nullptr)(std::move(resolution));
  }

  // Tells those addresses, and all of the wrappers around.
  void fail(VASTError error, std::vector<std::string> urls, const VASTLevel* above) {
    error_ = error;
    for (; above; above = above->above.get())
      urls.insert(urls.end(), above->ad.errors.begin(), above->ad.errors.end());
    hear({.kind = VASTStep::Kind::Failed, .error = error});
    VASTSender::Heard heard;
    if (settings_.heard)
      heard = [hear = settings_.heard](const VASTSent& sent) {
        hear({.kind = VASTStep::Kind::Told, .sent = sent});
      };
    VASTSender::shared()->send(urls, VASTMacros(settings_.macros).set(error), heard);
  }

  void hear(const VASTStep& step) const {
    if (settings_.heard) settings_.heard(step);
  }
  static size_t depthBelow(const VASTLevelPointer& above) { return above ? above->depth : 0; }

  // The time that is left for the whole; it begins with the first question.
  std::chrono::nanoseconds timeLeft() {
    const double now = Platform::current().clock().monotonicSeconds();
    if (!begun_) begun_ = now;
    return std::max<std::chrono::nanoseconds>(settings_.wholeTimeout - nanosecondsIn(now - *begun_), {});
  }

  void fetch(const NSURL& url, VASTLevelPointer above, Done done) {
    auto* platform = Platform::currentOrNull();
    if (!platform || !completion_) return;
    const size_t request = ++requests_;
    const size_t depth = depthBelow(above);
    hear({.kind = VASTStep::Kind::Asked, .depth = depth, .request = request});
    // Whichever comes first, answer or end of the time, takes what is to be done.
    const auto next = std::make_shared<Done>(std::move(done));
    const auto answered = [self = shared_from_this(), request, above, next](VASTDocument& document) {
      if (const auto then = std::exchange(*next, nullptr))
        self->read(std::move(document), request, above, then);
    };
    const auto failed = [self = shared_from_this(), request, above, next, depth] {
      const auto then = std::exchange(*next, nullptr);
      if (!then || !self->completion_) return;
      self->hear({.kind = VASTStep::Kind::Answered,
                  .depth = depth,
                  .request = request,
                  .error = VASTError::WrapperTimeout});
      self->fail(VASTError::WrapperTimeout, {}, above.get());
      then({});
    };
    const auto time = std::min(settings_.timeout, timeLeft());
    platform->mainQueue().postAfter(time, failed);
    if (time <= std::chrono::nanoseconds(0)) return;
    platform->urlSession().dataTask(
        {url, "GET", {}, std::nullopt, VASTDocument::mostBytes},
        [answered, failed](std::optional<std::string> data, const auto& response,
                           const std::optional<NSError>& error) {
          auto* now = Platform::currentOrNull();
          if (!now) return;
          const bool isTooLarge = error && error->cause == NSErrorCause::TooLarge;
          const bool isThere = !error && response && (!response->isHTTP || response->statusCode / 100 == 2);
          if (!isThere && !isTooLarge) return now->mainQueue().post(failed);
          // No content is an answer, too: no ads.
          if (isThere && trimmed(data.value_or("")).empty())
            return now->mainQueue().post([answered] {
              VASTDocument nothing;
              answered(nothing);
            });
          if (isTooLarge) data = "";
          now->performInBackground([answered, text = std::move(*data)] {
            const auto document = std::make_shared<VASTDocument>(VASTDocument::read(text));
            if (auto* then = Platform::currentOrNull())
              then->mainQueue().post([answered, document] { answered(*document); });
          });
        });
  }

  static std::string_view trimmed(std::string_view text) {
    const auto from = text.find_first_not_of(" \t\r\n");
    return from == std::string_view::npos ? std::string_view() : text.substr(from);
  }

  void read(VASTDocument document, size_t request, const VASTLevelPointer& above, const Done& done) {
    if (!completion_) return;  // nobody waits any more
    hear({.kind = VASTStep::Kind::Answered,
          .depth = depthBelow(above),
          .request = request,
          .ads = document.ads.size(),
          .error = document.error});
    if (document.error)
      fail(*document.error, document.errors, above.get());
    else if (document.ads.empty())
      fail(VASTError::NoAdsAfterWrapper, document.errors, above.get());
    if (document.error || document.ads.empty()) return done({});
    Ads pod, standAlone;
    for (auto& ad : document.ads) (ad.sequence ? pod : standAlone).push_back(std::move(ad));
    std::stable_sort(pod.begin(), pod.end(),
                     [](const auto& a, const auto& b) { return a.sequence < b.sequence; });
    // Where a wrapper asked for one ad, that is the first that stands alone, or, where none does, the first at all.
    const bool several = above ? above->ad.wrapper->allowMultipleAds : settings_.allowMultipleAds;
    if (!several) {
      if (standAlone.empty()) standAlone.push_back(std::move(pod.front()));
      pod.clear();
      standAlone.resize(1);
      standAlone.front().sequence.reset();
    }
    if (pod.empty())
      firstOf(std::move(standAlone), 0, above, done);
    else
      wholePod(pod, std::move(standAlone), above, done);
  }

  // Of ads that stand alone: the first that can be played, and behind it those that need no fetching.
  void firstOf(Ads ads, size_t at, const VASTLevelPointer& above, const Done& done) {
    if (at == ads.size()) return done({});
    const VASTAd ad = ads[at];
    resolve(ad, above,
            [self = shared_from_this(), ads = std::move(ads), at, above, done](Found found) mutable {
              if (!found.pod.empty()) {
                auto spare = self->playable(ads, at + 1, above);
                found.spare.insert(found.spare.end(), spare.begin(), spare.end());
                return done(std::move(found));
              }
              const auto& wrapper = ads[at].wrapper;
              if (wrapper && !wrapper->fallbackOnNoAd.value_or(true)) return done({});
              self->firstOf(std::move(ads), at + 1, above, done);
            });
  }

  // All at once. Where one fails, an ad that stands alone takes its place.
  void wholePod(const Ads& pod, Ads standAlone, const VASTLevelPointer& above, const Done& done) {
    struct Round {
      std::vector<Found> found;
      size_t left = 0;
      Ads ads, spare;
    };
    const auto round = std::make_shared<Round>();
    round->found.resize(pod.size());
    round->left = pod.size();
    round->ads = pod;
    round->spare = playable(standAlone, 0, above);
    const auto isOver = [round, done] {
      Found all;
      auto spare = round->spare.begin();
      for (size_t place = 0; place < round->ads.size(); ++place) {
        auto& found = round->found[place].pod;
        const auto& wrapper = round->ads[place].wrapper;
        const bool mayReplace = !wrapper || wrapper->fallbackOnNoAd.value_or(false);
        if (found.empty() && mayReplace && spare != round->spare.end()) found.push_back(*spare++);
        std::move(found.begin(), found.end(), std::back_inserter(all.pod));
      }
      std::move(spare, round->spare.end(), std::back_inserter(all.spare));
      done(std::move(all));
    };
    for (size_t place = 0; place < pod.size(); ++place)
      resolve(pod[place], above, [round, place, isOver](Found found) {
        round->found[place] = std::move(found);
        if (--round->left == 0) isOver();
      });
  }

  // Inline ads from there on, as far as there is room, that nothing speaks against; those that something does are not told of, since they were not tried.
  Ads playable(const Ads& ads, size_t from, const VASTLevelPointer& above) {
    Ads found;
    for (size_t at = from; at < ads.size() && spares_ < settings_.mostAds; ++at) {
      if (ads[at].wrapper || faultOf(ads[at], above.get())) continue;
      ++spares_;
      found.push_back(merged(ads[at], above.get()));
    }
    return found;
  }

  std::optional<VASTError> faultOf(const VASTAd& ad, const VASTLevel* above) const {
    if (const auto fault = VASTResolver::faultOf(ad)) return fault;
    if (settings_.longest && ad.linear->duration && *ad.linear->duration > *settings_.longest)
      return VASTError::WrongDuration;
    for (; above; above = above->above.get()) {
      if (above->ad.wrapper->blockedCategories.empty()) continue;
      if (ad.categories.empty()) return VASTError::CategoryMissing;
      if (blocks(above->ad, ad)) return VASTError::CategoryBlocked;
    }
    return std::nullopt;
  }

  static VASTAd merged(VASTAd ad, const VASTLevel* above) {
    size_t room = mostVASTBytesOfWrappers;
    for (; above; above = above->above.get()) addVASTWrapper(ad, above->ad, room);
    return ad;
  }

  void resolve(const VASTAd& ad, const VASTLevelPointer& above, const Done& done) {
    if (const auto fault = ad.wrapper ? faultOfWrapper(ad, above.get()) : faultOf(ad, above.get())) {
      fail(*fault, ad.errors, above.get());
      return done({});
    }
    if (!ad.wrapper && ads_ >= settings_.mostAds) return done({});
    if (!ad.wrapper) {
      ++ads_;
      return done({{merged(ad, above.get())}, {}});
    }
    auto level = std::make_shared<VASTLevel>(VASTLevel{above, ad, above ? above->depth + 1 : 1});
    const auto url = NSURL::URLByEscaping(macrosAt(*level).expanded(ad.wrapper->tag));
    fetch(url.value(), std::move(level), done);
  }

  // Whom a wrapper sends to is told what it and those around it do not want.
  VASTMacros macrosAt(const VASTLevel& level) const {
    auto macros = settings_.macros;
    std::vector<std::string> blocked;
    for (const auto* at = &level; at; at = at->above.get())
      for (const auto& category : at->ad.wrapper->blockedCategories)
        blocked.push_back(vastCategoryText(category));
    if (!blocked.empty()) macros.set(VASTMacro::BlockedAdCategories, blocked);
    return macros;
  }

  std::optional<VASTError> faultOfWrapper(const VASTAd& ad, const VASTLevel* above) const {
    const auto& tag = ad.wrapper->tag;
    if (tag.empty() || !NSURL::URLByEscaping(VASTMacros(settings_.macros).expanded(tag)))
      return VASTError::Wrapper;
    if (!(above ? above->ad.wrapper->followAdditionalWrappers : settings_.followWrappers))
      return VASTError::Wrapper;
    if (requests_ >= settings_.mostRequests || (above ? above->depth : 0) >= settings_.mostWrappers)
      return VASTError::WrapperLimit;
    for (; above; above = above->above.get())
      if (above->ad.wrapper->tag == tag) return VASTError::WrapperLimit;
    return std::nullopt;
  }

  const VASTSettings settings_;
  VASTResolver::Completion completion_;
  size_t requests_ = 0;
  size_t ads_ = 0, spares_ = 0;  // that were made, each with what its wrappers have
  std::optional<double> begun_;  // monotonic seconds
  std::optional<VASTError> error_;
};

template <class Source>
Handle startResolving(Source source, VASTSettings settings, VASTResolver::Completion completion) {
  const auto resolving = std::make_shared<VASTResolving>(std::move(settings), std::move(completion));
  Platform::current().mainQueue().post([resolving, source = std::move(source)] { resolving->begin(source); });
  return Handle([weak = std::weak_ptr(resolving)] {
    if (const auto alive = weak.lock()) alive->cancel();
  });
}

}  // namespace

Handle VASTResolver::resolve(const NSURL& tag, VASTSettings settings, Completion completion) {
  return startResolving(tag, std::move(settings), std::move(completion));
}

Handle VASTResolver::resolve(VASTDocument document, VASTSettings settings, Completion completion) {
  return startResolving(std::make_shared<VASTDocument>(std::move(document)), std::move(settings),
                        std::move(completion));
}

std::optional<VASTError> VASTResolver::faultOf(const VASTAd& ad) {
  if (!ad.linear && ad.hasNonLinear) return VASTError::WrongLinearity;
  if (!ad.linear) return ad.companions.empty() ? VASTError::NotVAST : VASTError::Trafficking;
  const auto& linear = *ad.linear;
  if (linear.mediaFiles.empty())
    return linear.interactiveFiles.empty() ? VASTError::NotVAST : VASTError::NoSupportedFile;
  const bool onlyPrograms = std::all_of(linear.mediaFiles.begin(), linear.mediaFiles.end(),
                                        [](const auto& file) { return !file.apiFramework.empty(); });
  return onlyPrograms ? std::optional(VASTError::NoSupportedFile) : std::nullopt;
}

}  // namespace velto
