// The user's calendar, by the calendar module. Main thread; events are stored on a thread of their own.
#pragma once

#include "velto/gtk/Background.h"
#include "velto/platform/EKEventStore.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>

#include <optional>

namespace velto::gtk {

class Calendar : public EKEventStore {
 public:
  Calendar(MainQueue& mainQueue, AuthorizationStatus status);
  ~Calendar() override { stop(); }

  // Without it nothing is stored, and nothing loaded.
  void setAuthorizationStatus(AuthorizationStatus status) {
    status_ = status;
    hasService_.reset();
  }
  // Events that are not stored by now will not be.
  void stop();

  // Restricted where no calendar service could be started, whatever the user says.
  AuthorizationStatus authorizationStatusForEntityType(EKEntityType type) const override;
  // Stands for the one that the user has chosen, whichever it is when an event is stored.
  std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() override;
  void saveEvent(const EKEvent& event, EKSpan span, std::function<void(bool)> completion) override;

 private:
  MainQueue& mainQueue_;
  AuthorizationStatus status_;
  mutable std::optional<bool> hasService_;  // looked for once, since each rich-media page asks
  GPtr<GCancellable> cancellable_ = GPtr<GCancellable>::adopt(g_cancellable_new());
  Background worker_;
};

}  // namespace velto::gtk
