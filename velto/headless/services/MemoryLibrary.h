// Calendar and pictures of the headless platform: lists in memory, with access that a test grants. Nobody has
// been asked at the beginning.
#pragma once

#include "velto/Export.h"
#include "velto/platform/EKEventStore.h"
#include "velto/platform/PHPhotoLibrary.h"

#include <memory>
#include <mutex>
#include <vector>

namespace velto::headless {

class VirtualQueue;

// Main thread.
class VELTO_EXPORT MemoryEventStore : public EKEventStore {
 public:
  explicit MemoryEventStore(std::shared_ptr<VirtualQueue> queue);

  AuthorizationStatus eventStatus = AuthorizationStatusNotDetermined;
  AuthorizationStatus reminderStatus = AuthorizationStatusNotDetermined;
  std::shared_ptr<EKCalendar> defaultCalendar;  // "Calendar" at first; null: there is none
  bool failing = false;                         // events are not saved
  std::vector<EKEvent> events;                  // saved ones, in order
  std::vector<EKSpan> spans;                    // with which span each

  AuthorizationStatus authorizationStatusForEntityType(EKEntityType type) const override;
  std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() override { return defaultCalendar; }
  void saveEvent(const EKEvent& event, EKSpan span, std::function<void(bool)> completion) override;

 private:
  std::shared_ptr<VirtualQueue> queue_;
};

// Any thread. Images are told by the signature of their format (PNG, JPEG, GIF, WebP, BMP).
class VELTO_EXPORT MemoryPhotoLibrary : public PHPhotoLibrary {
 public:
  struct Picture {
    std::string bytes;
    std::string address;
  };

  explicit MemoryPhotoLibrary(std::shared_ptr<VirtualQueue> queue);
  void setAuthorizationStatus(AuthorizationStatus status);
  std::vector<Picture> pictures() const;  // added ones, in order

  AuthorizationStatus authorizationStatus() const override;
  void UIImageWriteToSavedPhotosAlbum(std::string bytes, std::string address,
                                      std::function<void(bool)> completion) override;

 private:
  std::shared_ptr<VirtualQueue> queue_;
  mutable std::mutex mutex_;
  AuthorizationStatus status_ = AuthorizationStatusNotDetermined;
  std::vector<Picture> pictures_;
};

}  // namespace velto::headless
