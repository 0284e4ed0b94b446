// Entries in words.
#include "velto/timeline/VeltoTimelineEntry.h"

#include <array>

namespace velto {
namespace {

constexpr std::array kindNames{"asked",
                               "list-hit",
                               "request-built",
                               "sent",
                               "first-byte",
                               "answered",
                               "answer-failed",
                               "resolved",
                               "network-tried",
                               "network-passed-over",
                               "web-process",
                               "markup-given",
                               "page-loaded",
                               "load-finished",
                               "animated",
                               "painted-first",
                               "ready",
                               "show-asked",
                               "show-failed",
                               "appeared",
                               "disappeared",
                               "visible",
                               "tapped",
                               "rich-media",
                               "measured",
                               "adapter-failed",
                               "adapter-closed",
                               "heavy",
                               "weighed",
                               "document-asked",
                               "document-answered",
                               "file-tried",
                               "file-chosen",
                               "first-picture",
                               "video-event",
                               "address-told",
                               "video-failed"};
static_assert(kindNames.size() == static_cast<size_t>(VeltoTimelineKind::VideoFailed) + 1);

template <class Enumeration, size_t count>
JSON word(Enumeration value, const std::array<const char*, count>& words) {
  return words.at(static_cast<size_t>(value));
}

JSON nameIn(VeltoAdEndReason reason) {
  return std::string(wordsOf(reason).name);
}

struct Fields {
  JSON::Object operator()(std::monostate) const { return {}; }
  JSON::Object operator()(VeltoAskedBy by) const {
    return {{"by", word(by, std::array{"application", "refresh", "auto-show", "inspector"})}};
  }
  JSON::Object operator()(VeltoBytes size) const { return {{"bytes", static_cast<int64_t>(size.bytes)}}; }
  JSON::Object operator()(VeltoSeconds since) const { return {{"seconds", since.seconds}}; }
  JSON::Object operator()(VeltoConnection connection) const {
    return {{"connection", word(connection, std::array{"made", "reused"})}};
  }
  JSON::Object operator()(const VeltoAnswer& answer) const {
    return {{"status", answer.status},
            {"class", word(answer.kind, std::array{"unknown", "no-fill", "markup", "mediation"})}};
  }
  JSON::Object operator()(VeltoAdEndReason reason) const { return {{"reason", nameIn(reason)}}; }
  JSON::Object operator()(VeltoAdKind kind) const {
    return {{"kind", word(kind, std::array{"markup", "adapter", "rich-media"})}};
  }
  JSON::Object operator()(const VeltoNetworkTry& tried) const {
    JSON::Object fields{{"network", tried.network}};
    if (tried.passedOver) fields.emplace("reason", nameIn(*tried.passedOver));
    return fields;
  }
  JSON::Object operator()(VeltoWebProcess process) const {
    return {{"process", word(process, std::array{"cold", "warm"})}};
  }
  JSON::Object operator()(VeltoShare share) const { return {{"percent", share.percent}}; }
  JSON::Object operator()(VeltoTap tap) const {
    return {{"outcome", word(tap, std::array{"told", "click-tracked", "link-opened", "link-in-place"})}};
  }
  JSON::Object operator()(VeltoRichMedia state) const {
    return {{"state", word(state, std::array{"loading", "default", "expanded", "resized", "hidden"})}};
  }
  JSON::Object operator()(VeltoMeasured event) const {
    return {{"event", word(event, std::array{"session-started", "impression", "session-finished"})}};
  }
  JSON::Object operator()(const VeltoAdExcess& excess) const {
    JSON::Object fields{
        {"limit", std::string(nameOf(excess.limit))}, {"figure", excess.figure}, {"most", excess.most}};
    if (excess.ads > 1) fields.emplace("ads", static_cast<double>(excess.ads));
    return fields;
  }
  JSON::Object operator()(const VeltoAdWeight& weight) const {
    JSON::Object fields{{"seconds", weight.seconds}};
    const auto add = [&](const char* name, const auto& figure) {
      if (figure) fields.emplace(name, static_cast<double>(*figure));
    };
    add("processorSeconds", weight.processorSeconds);
    add("mainThreadShare", weight.mainThreadShare());
    add("networkBytes", weight.networkBytes);
    add("memoryBytes", weight.memoryBytes);
    add("wakeUps", weight.wakeUps);
    return fields;
  }
  JSON::Object operator()(const VeltoVideoDocument& document) const {
    JSON::Object fields{{"depth", document.depth}};
    if (document.ads) fields.emplace("ads", *document.ads);
    if (document.code) fields.emplace("code", *document.code);
    if (document.request > 0) fields.emplace("request", document.request);
    return fields;
  }
  JSON::Object operator()(const VeltoVideoPod& pod) const { return {{"ads", pod.ads}, {"spare", pod.spare}}; }
  JSON::Object operator()(const VeltoVideoFile& file) const {
    JSON::Object fields{{"ad", file.ad}, {"type", file.type}};
    if (file.width > 0) fields.emplace("width", file.width);
    if (file.height > 0) fields.emplace("height", file.height);
    if (file.bitrate) fields.emplace("bitrate", *file.bitrate);
    return fields;
  }
  JSON::Object operator()(const VeltoVideoMoment& moment) const {
    return {{"ad", moment.ad}, {"playhead", moment.playhead}};
  }
  JSON::Object operator()(const VeltoVideoEvent& event) const {
    return {{"ad", event.ad}, {"event", event.event}};
  }
  JSON::Object operator()(const VeltoVideoTold& told) const {
    JSON::Object fields{{"ad", told.ad},
                        {"event", told.event},
                        {"result", word(told.result, std::array{"arrived", "perhaps", "waits", "given-up"})}};
    if (told.status > 0) fields.emplace("status", told.status);
    return fields;
  }
  JSON::Object operator()(const VeltoVideoFailure& failure) const {
    return {{"ad", failure.ad}, {"code", failure.code}};
  }
};

}  // namespace

std::string_view nameOf(VeltoTimelineKind kind) {
  return kindNames[static_cast<size_t>(kind)];
}

JSON::Object VeltoTimelineEntry::fields() const {
  return std::visit(Fields(), detail);
}

}  // namespace velto
