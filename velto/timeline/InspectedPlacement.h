// A controller as the tools see it that look on: the inspector's page. Each lists itself with the hub, which holds it
// weakly; without such a tool nobody asks. Main thread.
#pragma once

#include "velto/timeline/LoadRecord.h"

#include <memory>
#include <span>

namespace velto {

class TimelineHub;

class VELTO_EXPORT InspectedPlacement {
 public:
  InspectedPlacement() = default;
  InspectedPlacement(const InspectedPlacement&) = delete;
  InspectedPlacement& operator=(const InspectedPlacement&) = delete;
  virtual ~InspectedPlacement();

  // Its loads. Who holds it may read on when the controller has gone.
  virtual std::shared_ptr<const PlacementRecord> record() const = 0;
  virtual const char* kindName() const = 0;   // "banner"
  virtual const char* stateName() const = 0;  // "shown"

  // As the application does it, with its last settings.
  virtual void reload() = 0;
  // A load that fails for that reason without asking anybody, or the page that is shown fails for it; from there on
  // all is as if it had. False, and nothing: there is no page.
  virtual bool simulate(VeltoAdEndReason reason) = 0;
  // Those that can be simulated.
  static std::span<const VeltoAdEndReason> simulatedReasons();

 protected:
  void list(std::weak_ptr<InspectedPlacement> self);
  void tellChanged() const;  // of its state, to who looks on

 private:
  std::weak_ptr<TimelineHub> hub_;
};

}  // namespace velto
