// The story of one load: who asked for it, what came of that step by step, and how it ended. Values, made when somebody
// asks for them.
//
//   for (const auto& load : banner->veltoAdTimeline())
//     if (load.end) std::cout << load.load << ": " << wordsOf(*load.end).sentence << "\n";
//
// A placement keeps its last 32 loads. A load keeps the first 16 entries of each kind, of what happens often in video ads
// (documents, files, events, addresses) the first 128, and counts the others. Addresses that a video ad's servers were told by
// may be written down after its end, once it is known what became of them.
#pragma once

#include "velto/Export.h"
#include "velto/timeline/VeltoTimelineEntry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

struct VELTO_EXPORT VeltoAdTimeline {
  uint64_t load = 0;                        // counts the loads of a process
  std::string placement;                    // the controller's name
  std::vector<VeltoTimelineEntry> entries;  // in the order of their times
  uint64_t leftOut = 0;                     // entries beyond the bound
  std::optional<VeltoAdEndReason> end;      // nothing: it goes on
  double endSeconds = 0;

  // The first entry of that kind, or null.
  const VeltoTimelineEntry* first(VeltoTimelineKind kind) const;
  // The entry by which its ad had loaded; null where it has brought none, or none yet.
  const VeltoTimelineEntry* filled() const;
  JSON::Object json() const;
};

// Hears of a placement's loads as they go on. Main thread, each call in a turn of its own: whatever is done inside,
// nothing of the library is in the middle of something. Held weakly.
class VELTO_EXPORT VeltoAdTimelineObserver {
 public:
  virtual ~VeltoAdTimelineObserver() = default;
  virtual void veltoAdTimelineDidAdd(const std::string& /*placement*/, uint64_t /*load*/,
                                     const VeltoTimelineEntry& /*entry*/) {}
  virtual void veltoAdTimelineDidEnd(const VeltoAdTimeline& /*timeline*/) {}
};

}  // namespace velto
