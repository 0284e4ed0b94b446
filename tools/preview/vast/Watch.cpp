// Documents in, entries out.
#include "preview/vast/Watch.h"

#include <velto/platform/AVPlayer.h>
#include <velto/platform/Platform.h>
#include <velto/platform/foundation/Text.h>
#include <velto/timeline/TimelineHub.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

#include "preview/Player.h"
#include "preview/Story.h"

namespace velto::preview {
namespace {

constexpr size_t mostRequestsKept = 5000;
constexpr std::chrono::milliseconds lastAnswers{5000}, lastFiles{20'000};

JSON::Array headersOf(const HeaderFields& fields) {
  JSON::Array list;
  for (const auto& [name, value] : fields.fields())
    list.emplace_back(JSON::Object{{"name", name}, {"value", validUTF8(value)}});
  return list;
}

std::string typeOf(const NSURLResponse& response) {
  const auto type = response.allHeaderFields.value("Content-Type").value_or("");
  return validUTF8(type.substr(0, type.find(';')));
}

}  // namespace

// Keeps what the timeline says until it is asked for.
class VideoAdWatch::Ears final : public TimelineSink {
 public:
  std::vector<VeltoTimelineEntry> taken() {
    const std::lock_guard lock(mutex_);
    return std::exchange(told_, {});
  }

 private:
  void added(const std::string&, uint64_t, const VeltoTimelineEntry& entry) override {
    const std::lock_guard lock(mutex_);
    if (entry.kind == VeltoTimelineKind::AddressTold) told_.push_back(entry);
  }
  void ended(const VeltoAdTimeline&) override {}

  std::mutex mutex_;
  std::vector<VeltoTimelineEntry> told_;
};

VideoAdWatch::VideoAdWatch(Journal& journal, ListeningPlatform& platform)
    : journal_(journal), platform_(platform), ears_(std::make_shared<Ears>()) {
  TimelineHub::shared()->add(ears_);
  platform_.urlSession().observe([this](const Exchange& exchange) { heard(exchange); });
  platform_.application().observe([this](const std::string& url, bool opened) {
    journal_.add("open", {{"url", url}, {"opened", opened}});
  });
}

VideoAdWatch::~VideoAdWatch() {
  platform_.urlSession().observe(nullptr);
  platform_.application().observe(nullptr);
}

void VideoAdWatch::lookIntoFiles(std::chrono::milliseconds longest) {
  longestLook_ = longest;
  files_ = std::make_unique<FileLook>(longest, platform_.caFile(),
                                      [this](const FileFacts& facts) { found(facts); });
}

void VideoAdWatch::begin(const std::string& source, const std::string& text, double duration) {
  documents_.clear();
  addresses_.clear();
  ears_->taken();
  since_ = g_get_monotonic_time();
  if (files_) files_->forget();
  read({source, {}}, text, {{"duration", duration}});
}

void VideoAdWatch::read(Place place, const std::string& text, JSON::Object details) {
  auto& media = Platform::current().media();
  const auto reading = readDocument(
      text, {place.tags, [&](const auto& type, const auto& codec) { return media.canPlay(type, codec); }});
  details["url"] = validUTF8(place.url);
  details["wrappers"] = static_cast<int64_t>(place.tags.size());
  details["version"] = reading.version;
  details["ads"] = static_cast<int64_t>(reading.ads);
  details["bytes"] = static_cast<int64_t>(text.size());
  journal_.add("document", std::move(details));
  for (const auto& fault : reading.faults) {
    JSON::Object told{{"id", fault.id}, {"text", fault.text}, {"document", validUTF8(place.url)}};
    if (fault.line > 0) told["line"] = fault.line;
    journal_.add("fault", std::move(told));
  }
  for (const auto& declared : reading.files) {
    const auto& file = declared.file;
    JSON::Object told{
        {"url", file.url}, {"type", file.type}, {"document", validUTF8(place.url)}, {"line", declared.line}};
    if (file.width > 0) told["width"] = file.width;
    if (file.height > 0) told["height"] = file.height;
    if (file.bitrate) told["bitrate"] = *file.bitrate;
    if (file.fileSize) told["bytes"] = *file.fileSize;
    if (declared.duration) told["seconds"] = *declared.duration;
    if (file.delivery == VASTMediaFile::Delivery::Streaming) told["streaming"] = true;
    journal_.add("file", std::move(told));
    if (files_ && partsOf(file.url).size() == 1) files_->look(file.url);
  }
  for (const auto& address : reading.addresses) {
    if (address.name == "script" || address.name == "picture" || address.name == "page")
      journal_.add("part", {{"name", address.name},
                            {"url", address.url},
                            {"document", validUTF8(place.url)},
                            {"line", address.line}});
    addresses_.add(address, documents_.size());
  }
  documents_.push_back(std::move(place));
}

void VideoAdWatch::heard(const Exchange& exchange, bool isOver) {
  if (!isOfNow(exchange)) return;  // of what was played before
  const auto url = exchange.request.url.absoluteString();
  const auto now = isOver ? exchange.ended : g_get_monotonic_time();
  const auto milliseconds = static_cast<double>((now - exchange.begun) / 100) / 10;
  JSON::Object answer{{"url", url}, {"duration", milliseconds}};
  if (!isOver) answer["error"] = "not finished";
  if (exchange.error) answer["error"] = exchange.error->localizedDescription;
  if (exchange.response && exchange.response->isHTTP) answer["status"] = exchange.response->statusCode;

  auto resource = answer;
  resource["method"] = exchange.request.httpMethod;
  // As milliseconds, to the tenth.
  const auto age = static_cast<double>((g_get_monotonic_time() - exchange.begun) / 100) / 10;
  resource["start"] = std::round((journal_.milliseconds() - age) * 10) / 10;
  resource["bytes"] = static_cast<int64_t>(exchange.body.size());
  if (exchange.response) resource["type"] = typeOf(*exchange.response);
  journal_.add("resource", resource);
  if (requests_.size() < mostRequestsKept) {
    resource["requestHeaders"] = headersOf(exchange.request.allHTTPHeaderFields);
    if (exchange.response) resource["responseHeaders"] = headersOf(exchange.response->allHeaderFields);
    requests_.push_back(std::move(resource));
  }

  for (const auto& entry : ears_->taken()) addresses_.note(entry);
  const auto* known = addresses_.take(url, exchange.error ? 0 : static_cast<int>(numberIn(answer, "status")));
  if (!known) return;
  if (known->address.name != "wrapper") {
    answer["name"] = known->address.name;
    answer["line"] = known->address.line;
    answer["document"] = validUTF8(documents_[known->document].url);
    return journal_.add("told", std::move(answer));
  }
  answer["from"] = validUTF8(documents_[known->document].url);
  answer["line"] = known->address.line;
  const bool isThere =
      isOver && !exchange.error && numberIn(answer, "status") / 100 >= 2 && numberIn(answer, "status") < 300;
  if (!isThere) return journal_.add("wrapper", std::move(answer));
  journal_.add("wrapper", answer);
  auto tags = documents_[known->document].tags;
  tags.push_back(known->address.url);
  read({url, std::move(tags)}, exchange.body.empty() ? "<VAST version=\"4.2\"/>" : exchange.body,
       {{"duration", milliseconds}});
}

void VideoAdWatch::found(const FileFacts& facts) {
  JSON::Object told{{"url", facts.url}};
  const auto add = [&](const char* name, double value) {
    if (value > 0) told[name] = value;
  };
  add("status", facts.status);
  add("bytes", facts.bytes);
  add("width", facts.width);
  add("height", facts.height);
  add("seconds", facts.duration);
  if (!facts.servedAs.empty()) told["servedAs"] = validUTF8(facts.servedAs);
  if (!facts.container.empty()) told["type"] = facts.container;
  if (!facts.codecs.empty()) told["codecs"] = facts.codecs;
  if (!facts.error.empty()) told["error"] = validUTF8(facts.error);
  journal_.add("file-look", std::move(told));
}

void VideoAdWatch::settle() {
  runUntil(lastAnswers, [this] {
    const auto pending = platform_.urlSession().pending();
    return std::none_of(pending.begin(), pending.end(),
                        [this](const auto& exchange) { return isOfNow(*exchange); });
  });
  if (files_) runUntil(std::max(lastFiles, longestLook_), [this] { return files_->pending() == 0; });
}

void VideoAdWatch::finish() {
  settle();
  for (const auto& exchange : platform_.urlSession().pending())
    if (isOfNow(*exchange)) heard(*exchange, false);
}

}  // namespace velto::preview
