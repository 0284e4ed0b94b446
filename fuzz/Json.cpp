// JSON: what was read can be written, and reads back as the same value.
#include "velto/platform/foundation/JSON.h"

#include "Check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto value = velto::readJSON(asText(data, size));
  if (!value) return 0;
  const auto written = velto::writeJSON(*value, size % 2 == 0);
  require(written.has_value());
  const auto again = velto::readJSON(*written);
  require(again.has_value());
  require(velto::writeJSON(*again, size % 2 == 0) == written);
  return 0;
}
