// Commands and records: what is read from a page's texts.
#include "velto/core/VeltoConstants.h"
#include "velto/mraid/MRAIDSDKVelto.h"
#include "velto/mraid/VeltoMRAIDAction.h"
#include "velto/mraid/VeltoMRAIDPropertyCalendar.h"
#include "velto/platform/foundation/Patterns.h"
#include "velto/resources/Resources.h"

#include <gtest/gtest.h>

#include <map>

namespace velto {
namespace {

VeltoMRAIDAction action(const std::string& url) {
  return VeltoMRAIDAction::actionFrom(NSURL::URLWithString(url).value()).value();
}

TEST(MRAIDAction, OnlyWordsOfTheVocabularyAreCommands) {
  const auto parsed = action("mraid://createCalendarEvent/path?x");
  EXPECT_EQ(parsed.actionType(), 6U);
  EXPECT_EQ(parsed.args(), std::nullopt);
  for (const char* other : {"mraid://Expand", "mraid://opens", "mraid://setLocation", "mraid:close"})
    EXPECT_EQ(action(other).actionType(), 0U) << other;
}

TEST(MRAIDAction, TheFirstItemsValueIsTheArgument) {
  for (const auto& [query, argument] :
       std::map<std::string, std::optional<std::string>>{{"x=1&url=2", "1"},
                                                         {"x&url=2", std::nullopt},
                                                         {"u=", ""},
                                                         {"u=a%20=b+c%26%C3%BC#f", "a =b+c&\xC3\xBC"},
                                                         {"u=%FF", std::nullopt}})
    EXPECT_EQ(action("mraid://open?" + query).args(), argument) << query;
  const auto parsed = action("mraid://open?u=v");
  EXPECT_NE(parsed.description().find(">\n\tAction: open\n\tArgs: v"), std::string::npos);
}

TEST(MRAIDRecords, NothingButAnObjectIsARecord) {
  for (const char* text : {"", "[]", "1", "{", "\"{}\""}) {
    EXPECT_FALSE(VeltoMRAIDPropertyExpand::decode(text)) << text;
    EXPECT_FALSE(VeltoMRAIDPropertyResize::decode(text));
    EXPECT_FALSE(VeltoMRAIDPropertyOrientation::decode(text));
    EXPECT_FALSE(VeltoMRAIDPropertyCurrentAppOrientation::decode(text));
    EXPECT_FALSE(VeltoMRAIDPropertyCalendarEvent::decode(text));
    EXPECT_FALSE(VeltoMRAIDPropertyCalendarRepeatRule::decode(text));
  }
  EXPECT_FALSE(VeltoMRAIDProperty::decode("{}"));
}

TEST(MRAIDRecords, Expand) {
  const auto record = VeltoMRAIDPropertyExpand::decode(
      R"({"useCustomClose":true,"isModal":"true","width":"320","height":[1]})");
  EXPECT_TRUE(record->useCustomClose);
  EXPECT_FALSE(record->isModal) << "a text is no boolean";
  EXPECT_EQ(record->width, 320);
  EXPECT_EQ(record->height, std::nullopt);
}

TEST(MRAIDRecords, Resize) {
  int64_t type = 0;
  for (const std::string position : {"top-left", "top-center", "top-right", "center", "bottom-left",
                                     "bottom-center", "bottom-right", "", "Center"}) {
    const auto record = VeltoMRAIDPropertyResize::decode(R"({"customClosePosition":")" + position + "\"}");
    EXPECT_EQ(record->customClosePositionType, type < 7 ? type : 0) << "no fallback";
    ++type;
  }
  const auto record = VeltoMRAIDPropertyResize::decode(
      R"({"width":320.9,"height":true,"offsetX":-7.9,"offsetY":"1e12","customClosePosition":"center"})");
  EXPECT_EQ(record->frame, (CGRect{{-7, 2147483647}, {320, 1}}));
  EXPECT_NE(record->description().find("\n\tCustomClosePosition: center\n\tCustomClosePositionType: 3"
                                       "\n\tAllowOffscreen: (null)\n\tFrame: {{-7, 2147483647}, {320, 1}}"),
            std::string::npos)
      << record->description();
  const auto bare =
      VeltoMRAIDPropertyResize::decode(R"({"width":300,"offsetX":5,"offsetY":6,"allowOffscreen":false})");
  EXPECT_EQ(bare->frame, (CGRect{{5, 6}, {0, 0}}));
  EXPECT_EQ(bare->allowOffscreen, 0);
}

TEST(MRAIDRecords, OrientationKnowsWhoseNoneItIs) {
  const auto initial = VeltoMRAIDPropertyOrientation::orientation();
  EXPECT_TRUE(initial->allowOrientationChange);
  const auto empty = VeltoMRAIDPropertyOrientation::decode(R"({"forceOrientation":1})");
  EXPECT_FALSE(empty->allowOrientationChange);
  const auto written = VeltoMRAIDPropertyOrientation::decode(R"({"forceOrientation":"none"})");
  for (const auto& record : {initial, empty, written}) EXPECT_TRUE(record->forceOrientation == "none");
  EXPECT_TRUE(empty->forceOrientation.isEntry(MRAIDOrientation[MRAIDOrientationNone]));
  EXPECT_FALSE(written->forceOrientation.isEntry(MRAIDOrientation[MRAIDOrientationNone]));
  const auto app = VeltoMRAIDPropertyCurrentAppOrientation::decode(R"({"locked":1})");
  EXPECT_TRUE(app->locked);
  EXPECT_EQ(app->orientation, "none");
}

TEST(MRAIDRecords, CalendarEvent) {
  EXPECT_FALSE(VeltoMRAIDPropertyCalendarEvent::decode(R"({"start":"2024-05-01T10:00Z"})"));
  EXPECT_FALSE(VeltoMRAIDPropertyCalendarEvent::decode(R"({"description":1,"start":"2024-05-01T10:00Z"})"));
  EXPECT_FALSE(VeltoMRAIDPropertyCalendarEvent::decode(R"({"description":"d","start":"2024-05-01"})"));
  const auto event = VeltoMRAIDPropertyCalendarEvent::decode(
      R"({"id":"i","description":"d","location":2,"start":"2024-05-01T10:00+02:00","end":"soon","reminder":"-60",
          "recurrence":{"frequency":"daily"},"status":"s","summary":"m","transparency":"t"})");
  EXPECT_EQ(event->start.time_since_epoch().count(), 1714550400);
  EXPECT_EQ(event->end, std::nullopt);
  EXPECT_EQ(event->location, std::nullopt);
  EXPECT_FALSE(event->recurrence) << "an object is no text of one";
  EXPECT_EQ(event->idEvent.value() + event->reminder.value() + event->status.value() +
                event->summary.value() + event->transparency.value(),
            "i-60smt");
  for (const auto* line : {"Id: i", "Description: d", "Start: 1714550400", "Reminder: -60", "Status: s",
                           "Summary: m", "Transparency: t"})
    EXPECT_NE(event->description().find(std::string("\n\t") + line), std::string::npos)
        << line << " in " << event->description();
}

TEST(MRAIDRecords, RepeatRule) {
  const auto rule = VeltoMRAIDPropertyCalendarRepeatRule::decode(
      R"({"frequency":"monthly","daysInWeek":[0,1,7.5,"3",8,-1,1e30,null],"daysInMonth":[1,-1,"x"],"expires":"never"})");
  EXPECT_EQ(rule->frequencyEvent, EKRecurrenceFrequencyMonthly);
  EXPECT_EQ(rule->daysInWeek, (std::vector<EKRecurrenceDayOfWeek>{{1}, {7}, {3}}));
  EXPECT_EQ(rule->daysInMonth, (std::vector<double>{1, -1}));
  EXPECT_EQ(rule->monthsInYear, std::nullopt);
  EXPECT_EQ(rule->expires, std::nullopt);
  for (const auto& [word, value] :
       std::map<std::string, int64_t>{{"weekly", 1}, {"yearly", 3}, {"Weekly", 0}})
    EXPECT_EQ(
        VeltoMRAIDPropertyCalendarRepeatRule::decode(R"({"frequency":")" + word + "\"}")->frequencyEvent,
        value);
}

TEST(MRAIDRecords, DescriptionsShowEveryField) {
  const auto rule = VeltoMRAIDPropertyCalendarRepeatRule::decode(
      R"({"frequency":"weekly","daysInWeek":[1,7],"daysInMonth":[-1],"daysInYear":[],"weeksInYear":[2,3]})");
  EXPECT_NE(rule->description().find(
                "\n\tFrequency: weekly\n\tFrequencyEvent: 1\n\tDaysInWeek: 1, 7\n\tDaysInMonth: -1"
                "\n\tMonthsInYear: (null)\n\tDaysInYear: \n\tWeeksInYear: 2, 3\n\tExpires: (null)"),
            std::string::npos)
      << rule->description();
}

// --- the page script and the markup around it

TEST(MRAIDScript, IsSmallAndOfThisVersion) {
  const std::string script(resourceText("mraid.js").value());
  EXPECT_LE(script.size(), 18 * 1024U);
  EXPECT_NE(script.find(std::string("sdkVersion:\"") + kVeltoSDKVersion + "\""), std::string::npos);
}

TEST(MRAIDScript, TagsOfTheMarkupGo) {
  using MRAIDSDKVelto::withoutLocalScript;
  const std::pair<const char*, const char*> cases[] = {
      {"a<SCRIPT SRC='MRAID.JS'></SCRIPT>\n\n b", "a b"},
      {R"(<script src="mraid.js" async>text</script>x)", "x"},
      {R"(<script type="a" src = \"mraid.js\"></script>)", ""},
      {"<script <script src=\\mraid.js\\></script>\r\n", "\r\n"},
      {"<script>1</script><script src='mraid.js'></script><script src='other.js'></script>",
       "<script>1</script><script src='other.js'></script>"},
  };
  for (const auto& [html, kept] : cases) EXPECT_EQ(withoutLocalScript(html), kept) << html;
  for (const char* kept :
       {"<script src='mraid.js\"></script>", "<script src=mraid.js></script>", "<script data-src='mraid.js'",
        "<script src='x/mraid.js'></script>", "<scriptsrc='mraid.js'></script>",
        "<script src='mraid.js'><b></script>", "<script xsrc='mraid.js'></script>", "<script src='mraid.js'>",
        "<script src='mraid.js", "<script src=", "<script src='mraid.js'></script >"})
    EXPECT_EQ(withoutLocalScript(kept), kept);
}

TEST(MRAIDScript, HostileMarkupIsReadOnceOnly) {
  constexpr size_t size = 5 << 20;
  for (const std::string part : {"<script ", "<script src=", "<script src='mraid.js'>", "<", "\n", "src = ",
                                 "<script src='mraid.js'></scrip", ">", "<script src='mraid.js' "}) {
    std::string html;
    while (html.size() < size) html += part;
    size_t steps = 0;
    EXPECT_EQ(MRAIDSDKVelto::withoutLocalScript(html, &steps), html);
    EXPECT_LE(steps, 4 * html.size()) << part;
  }
}

}  // namespace
}  // namespace velto
