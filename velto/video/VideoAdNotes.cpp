// Entries of timelines.
#include "velto/video/VideoAdNotes.h"

#include "velto/platform/foundation/Text.h"

#include <algorithm>

namespace velto {
namespace {

using Result = VeltoVideoTold::Result;

Result resultOf(VASTSent::Result result) {
  switch (result) {
    case VASTSent::Result::Arrived:
      return Result::Arrived;
    case VASTSent::Result::Perhaps:
      return Result::Perhaps;
    case VASTSent::Result::Waits:
      return Result::Waits;
    case VASTSent::Result::GivenUp:
      break;
  }
  return Result::GivenUp;
}

std::optional<int> codeOf(const std::optional<VASTError>& error) {
  return error ? std::optional(static_cast<int>(*error)) : std::nullopt;
}

}  // namespace

void VideoAdNotes::file(Kind kind, const VASTMediaFile& file) const {
  constexpr size_t longestType = 64;
  const auto points = [](double length) { return length > 0 ? static_cast<int>(std::min(length, 1e6)) : 0; };
  note(kind, VeltoVideoFile{ad_, validUTF8(file.type.substr(0, longestType)), points(file.width),
                            points(file.height), file.bitrate});
}

void VideoAdNotes::step(const VASTStep& step) const {
  VeltoVideoDocument document{
      static_cast<int>(step.depth), {}, codeOf(step.error), static_cast<int>(step.request)};
  switch (step.kind) {
    case VASTStep::Kind::Asked:
      return note(Kind::DocumentAsked, document);
    case VASTStep::Kind::Answered:
      if (!step.error) document.ads = static_cast<int>(step.ads);
      return note(Kind::DocumentAnswered, document);
    case VASTStep::Kind::Failed:
      return step.error ? failed(*step.error) : void();
    case VASTStep::Kind::Told:
      return told("error", step.sent);
  }
}

void VideoAdNotes::told(std::string_view event, const VASTSent& sent) const {
  note(Kind::AddressTold, VeltoVideoTold{ad_, std::string(event), resultOf(sent.result), sent.status});
}

VASTTracker::Heard VideoAdNotes::receipts() const {
  if (!record_) return nullptr;
  return [notes = *this](std::string_view event, const VASTSent& sent) { notes.told(event, sent); };
}

}  // namespace velto
