// Command URLs and the records in their arguments: whatever a page sends is read without harm, and what comes
// out keeps to what the library builds on.
#include "velto/mraid/MRAIDSDKVelto.h"
#include "velto/mraid/VeltoMRAIDAction.h"
#include "velto/mraid/VeltoMRAIDPropertyCalendar.h"
#include "velto/platform/foundation/Text.h"

#include <cmath>

#include "Check.h"

namespace {

void readRecords(const std::string& text) {
  using namespace velto;
  require(!VeltoMRAIDProperty::decode(text));
  VeltoMRAIDPropertyExpand::decode(text);
  VeltoMRAIDPropertyOrientation::decode(text);
  VeltoMRAIDPropertyCurrentAppOrientation::decode(text);
  if (const auto resize = VeltoMRAIDPropertyResize::decode(text)) {
    const auto& [origin, size] = resize->frame;
    for (const double value : {origin.x, origin.y, size.width, size.height})
      require(std::trunc(value) == value && std::abs(value) <= 2147483648.0);
    require(resize->customClosePositionType >= 0 && resize->customClosePositionType <= 6);
    require(!resize->description().empty());
  }
  const auto rule = VeltoMRAIDPropertyCalendarRepeatRule::decode(text);
  if (rule && rule->daysInWeek)
    for (const auto& day : *rule->daysInWeek) require(day.dayOfTheWeek >= 1 && day.dayOfTheWeek <= 7);
  if (const auto event = VeltoMRAIDPropertyCalendarEvent::decode(text))
    require(!event->description().empty());
}

// Script tags go, in one pass, wherever they stand.
void removeTags(const std::string& text) {
  using velto::MRAIDSDKVelto::withoutLocalScript;
  size_t steps = 0;
  const auto found = withoutLocalScript(text, &steps);
  require(steps <= 4 * text.size() + 8);
  require(withoutLocalScript("<script src='mraid.js'></script>x" + text) == "x" + found);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const auto text = std::string(asText(data, size).substr(1));
  if (data[0] % 3 == 0) {
    readRecords(text);
  } else if (data[0] % 3 == 1) {
    removeTags(spelled(
        text,
        {{'A', "<script"}, {'B', "src"}, {'C', "mraid.js"}, {'D', "</script>"}, {'E', "\\"}, {'F', "SRC"}}));
  } else if (const auto url = velto::NSURL::URLWithString("mraid://" + text)) {
    const auto action = velto::VeltoMRAIDAction::actionFrom(*url);
    require(action && action->actionType() <= velto::VeltoMRAIDActionLog);
    if (action->args()) readRecords(*action->args());
  }
  return 0;
}
