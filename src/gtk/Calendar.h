// The calendar of the Linux platform. So far events are kept in memory, and gone with the process. Main
// thread.
#pragma once

#include "velto/platform/EKEventStore.h"
#include "velto/platform/MainQueue.h"

#include <vector>

namespace velto::gtk {

class Calendar : public EKEventStore {
 public:
  Calendar(MainQueue& mainQueue, bool granted) : mainQueue_(mainQueue), granted_(granted) {}

  AuthorizationStatus authorizationStatusForEntityType(EKEntityType) const override {
    return granted_ ? AuthorizationStatusAuthorized : AuthorizationStatusNotDetermined;
  }
  std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() override {
    return std::make_shared<EKCalendar>(EKCalendar{"memory", "Calendar"});
  }
  void saveEvent(const EKEvent& event, EKSpan, std::function<void(bool)> completion) override {
    events_.push_back(event);
    if (completion) mainQueue_.post([completion = std::move(completion)] { completion(true); });
  }
  const std::vector<EKEvent>& events() const { return events_; }

 private:
  MainQueue& mainQueue_;
  bool granted_;
  std::vector<EKEvent> events_;
};

}  // namespace velto::gtk
