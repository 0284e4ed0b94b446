// What an ad's page costs the device, and when that is too much. Values; any thread.
//
// The limits of network and processor are those of the heavy ad intervention (explainer of the W3C's Web Incubator
// Community Group); as there, they hold until a person touches the ad, which is then doing what it was asked to. Here
// processor time is that of the page's whole process, as its other threads warm the device just as well.
#pragma once

#include "velto/Export.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velto {

// Each as far as the platform tells. A process that ads share is counted to none of them while it holds the pages of more
// than one; what it used before the ad's page came is not the ad's.
struct VeltoAdWeight {
  double seconds = 0;  // for how long the page has been weighed
  std::optional<double> processorSeconds;
  std::optional<double> mainThreadSeconds;  // of these, in the thread that runs its scripts
  std::optional<uint64_t> networkBytes;  // answers that came whole and told their length, as they were sent
  std::optional<uint64_t> memoryBytes;   // the most by which the process has grown
  std::optional<uint64_t> wakeUps;       // how often its threads had waited and went on
  // The part of that time in which its main thread was busy, 0 … 1.
  std::optional<double> mainThreadShare() const {
    return mainThreadSeconds && seconds > 0 ? std::optional(*mainThreadSeconds / seconds) : std::nullopt;
  }
  bool operator==(const VeltoAdWeight&) const = default;
};

enum class VeltoAdLimit : uint8_t {
  Network,        // bytes
  ProcessorPeak,  // seconds of processor time within 30 s
  Processor,      // seconds of processor time in all
  Memory,         // bytes
  Unseen,         // seconds of processor time within 10 s in which its page knew that nobody saw it
};
// "processor-peak": stays as it is.
VELTO_EXPORT std::string_view nameOf(VeltoAdLimit limit);

// What was found when a limit had been crossed; units as above.
struct VeltoAdExcess {
  VeltoAdLimit limit = VeltoAdLimit::Network;
  double figure = 0;
  double most = 0;
  int ads = 1;  // that lived in the process: more than one of them are told of the same
  bool operator==(const VeltoAdExcess&) const = default;
};

struct VeltoHeavyAdLimits {
  uint64_t networkBytes = 4'000'000;
  double processorPeakSeconds = 15;
  double processorSeconds = 60;
  // Ads take 20 to 80 MiB. A page that grows beyond this is a leak, and a tenth of the memory of a small device.
  uint64_t memoryBytes = uint64_t{300} << 20;
  double unseenProcessorSeconds = 0.5;  // what never stops to animate needs some times that
};

}  // namespace velto
