// Events and pictures go into lists.
#include "velto/headless/services/MemoryLibrary.h"

#include "velto/headless/VirtualQueue.h"

#include <array>
#include <string_view>

namespace velto::headless {
namespace {

bool isImage(std::string_view bytes) {
  using namespace std::string_view_literals;
  static constexpr std::array signatures{"\x89PNG\r\n\x1a\n"sv, "\xff\xd8\xff"sv, "GIF87a"sv, "GIF89a"sv,
                                         "BM"sv};
  for (const auto signature : signatures)
    if (bytes.starts_with(signature)) return true;
  return bytes.starts_with("RIFF"sv) && bytes.substr(0, 12).ends_with("WEBP"sv);
}

void answer(VirtualQueue& queue, std::function<void(bool)> completion, bool value) {
  if (completion) queue.post([completion = std::move(completion), value] { completion(value); });
}

}  // namespace

MemoryEventStore::MemoryEventStore(std::shared_ptr<VirtualQueue> queue)
    : defaultCalendar(std::make_shared<EKCalendar>(EKCalendar{"calendar", "Calendar"})),
      queue_(std::move(queue)) {}

AuthorizationStatus MemoryEventStore::authorizationStatusForEntityType(EKEntityType type) const {
  return type == EKEntityType::Event ? eventStatus : reminderStatus;
}

void MemoryEventStore::saveEvent(const EKEvent& event, EKSpan span, std::function<void(bool)> completion) {
  queue_->requireMain("EKEventStore::saveEvent");
  const bool saved = !failing && event.calendar;
  if (saved) {
    events.push_back(event);
    spans.push_back(span);
  }
  answer(*queue_, std::move(completion), saved);
}

MemoryPhotoLibrary::MemoryPhotoLibrary(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}

void MemoryPhotoLibrary::setAuthorizationStatus(AuthorizationStatus status) {
  std::lock_guard lock(mutex_);
  status_ = status;
}

std::vector<MemoryPhotoLibrary::Picture> MemoryPhotoLibrary::pictures() const {
  std::lock_guard lock(mutex_);
  return pictures_;
}

AuthorizationStatus MemoryPhotoLibrary::authorizationStatus() const {
  std::lock_guard lock(mutex_);
  return status_;
}

void MemoryPhotoLibrary::UIImageWriteToSavedPhotosAlbum(std::string bytes, std::string address,
                                                        std::function<void(bool)> completion) {
  const bool image = isImage(bytes);
  if (image) {
    std::lock_guard lock(mutex_);
    pictures_.push_back({std::move(bytes), std::move(address)});
  }
  answer(*queue_, std::move(completion), image);
}

}  // namespace velto::headless
