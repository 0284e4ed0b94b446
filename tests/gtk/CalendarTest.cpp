// Events that arrive in a real evolution-data-server on this test's session bus, and what is never stored.
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/services/EventText.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <libecal/libecal.h>
#include <stdlib.h>

#include <atomic>

#include "BusMock.h"

namespace velto {
namespace {

using namespace std::chrono;

constexpr sys_seconds start = sys_days(year(2027) / 3 / 1) + hours(8);  // a Monday

EKEvent lunch() {
  EKEvent event;
  event.calendar = Platform::current().eventStore().defaultCalendarForNewEvents();
  event.title = "Lunch; with \"bread\", and\nwine\r\nBEGIN:VALARM";
  event.location = "Caf\u00e9 \\ Bar";
  event.startDate = start;
  event.endDate = start + minutes(90);
  return event;
}

// A service that takes calls and answers none, on a bus of its own.
class SilentService {
 public:
  explicit SilentService(const char* name) : connection_(bus_.connect()) {
    g_dbus_connection_add_filter(connection_, swallow, new Calls(calls_),
                                 [](gpointer calls) { delete static_cast<Calls*>(calls); });
    const GOwned<GVariant, g_variant_unref> reply(g_dbus_connection_call_sync(
        connection_, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", name, 0), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    EXPECT_TRUE(reply);
  }
  bool wasCalled() const { return *calls_ > 0; }

 private:
  using Calls = std::shared_ptr<std::atomic<int>>;  // the connection's thread may be the last to go
  static GDBusMessage* swallow(GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer calls) {
    if (!incoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
      return message;
    ++**static_cast<Calls*>(calls);
    g_object_unref(message);
    return nullptr;
  }
  test::PrivateBus bus_;
  Calls calls_ = std::make_shared<std::atomic<int>>(0);
  GPtr<GDBusConnection> connection_;
};

// First, before anything has a bus.
TEST(Calendar, WhoseServiceHangsHoldsNobodyUp) {
  const std::string session = g_getenv("DBUS_SESSION_BUS_ADDRESS");
  {
    const SilentService service("org.gnome.evolution.dataserver.Sources5");
    gtk::install({.applicationIdentifier = "org.example.calendar"});
    bool isTold = false;
    const auto save = [&] {
      Platform::current().eventStore().saveEvent(lunch(), EKSpan::ThisEvent, [&](bool) { isTold = true; });
    };
    save();
    EXPECT_TRUE(test::runUntil([&] { return isTold; }));
    EXPECT_FALSE(test::isMapped("velto-calendar.so")) << "the user has not allowed it";

    isTold = false;
    gtk::setCalendarAccess(gtk::Access::Allowed);
    for (int i = 0; i < 3; ++i) save();
    EXPECT_TRUE(test::runUntil([&] { return service.wasCalled(); }));
    const auto began = steady_clock::now();
    gtk::uninstall();
    EXPECT_FALSE(isTold);
    EXPECT_LT(steady_clock::now() - began, seconds(20)) << "where nothing else would wait for less than 25";
  }
  g_setenv("DBUS_SESSION_BUS_ADDRESS", session.c_str(), TRUE);
}

class CalendarTest : public testing::Test {
 protected:
  CalendarTest() {
    setenv("TZ", "Europe/Berlin", 1);
    gtk::install({.applicationIdentifier = "org.example.calendar"});
  }
  ~CalendarTest() override { gtk::uninstall(); }

  static bool save(const EKEvent& event) {
    std::optional<bool> outcome;
    Platform::current().eventStore().saveEvent(event, EKSpan::ThisEvent, [&](bool saved) {
      EXPECT_TRUE(Platform::current().mainQueue().isCurrent());
      outcome = saved;
    });
    EXPECT_FALSE(outcome) << "never inside the call";
    EXPECT_TRUE(test::runUntil([&] { return outcome.has_value(); }));
    return outcome.value_or(false);
  }

  // What the calendar holds, each event as text, with lines unfolded.
  static std::vector<std::string> stored() {
    const auto registry = GPtr<ESourceRegistry>::adopt(e_source_registry_new_sync(nullptr, nullptr));
    const auto source = GPtr<ESource>::adopt(e_source_registry_ref_default_calendar(registry));
    const auto client = GPtr<EClient>::adopt(e_cal_client_connect_sync(
        source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS, static_cast<guint32>(-1), nullptr, nullptr));
    GSList* components = nullptr;
    e_cal_client_get_object_list_as_comps_sync(E_CAL_CLIENT(client.get()), "#t", &components, nullptr,
                                               nullptr);
    std::vector<std::string> texts;
    for (auto* entry = components; entry; entry = entry->next) {
      const GText text(e_cal_component_get_as_string(E_CAL_COMPONENT(entry->data)));
      std::string unfolded = text.get();
      for (size_t fold; (fold = unfolded.find("\r\n ")) != std::string::npos;) unfolded.erase(fold, 3);
      texts.push_back(unfolded);
    }
    g_slist_free_full(components, g_object_unref);
    return texts;
  }
};

void expectLines(const std::string& text, std::initializer_list<const char*> lines) {
  for (const char* line : lines)
    EXPECT_NE(text.find(std::string("\r\n") + line + "\r\n"), std::string::npos) << line << "\nin " << text;
}

TEST_F(CalendarTest, NothingIsStoredBeforeTheUserAllowedIt) {
  auto& store = Platform::current().eventStore();
  EXPECT_EQ(store.authorizationStatusForEntityType(EKEntityType::Event), AuthorizationStatusNotDetermined);
  EXPECT_FALSE(save(lunch()));
  gtk::setCalendarAccess(gtk::Access::Denied);
  EXPECT_EQ(store.authorizationStatusForEntityType(EKEntityType::Event), 2);
  EXPECT_FALSE(save(lunch()));

  gtk::setCalendarAccess(gtk::Access::Allowed);
  EXPECT_EQ(store.authorizationStatusForEntityType(EKEntityType::Event), 3);
  setenv("XDG_DATA_DIRS", "/nowhere", 1);
  gtk::setCalendarAccess(gtk::Access::Allowed);
  EXPECT_EQ(store.authorizationStatusForEntityType(EKEntityType::Event), 1) << "nobody keeps a calendar here";
  unsetenv("XDG_DATA_DIRS");
  gtk::setCalendarAccess(gtk::Access::Allowed);
  auto endless = lunch();
  endless.startDate = sys_seconds::max();
  EXPECT_FALSE(save(endless));
  EXPECT_TRUE(stored().empty());
}

TEST_F(CalendarTest, EventsComeBackAsTheyWereStored) {
  gtk::setCalendarAccess(gtk::Access::Allowed);
  ASSERT_TRUE(save(lunch()));
  EXPECT_TRUE(test::isMapped("velto-calendar.so"));
  auto found = stored();
  ASSERT_EQ(found.size(), 1u);
  expectLines(found[0], {"DTSTART:20270301T080000Z", "DTEND:20270301T093000Z",
                         "SUMMARY:Lunch\\; with \"bread\"\\, and\\nwine\\nBEGIN:VALARM",
                         "LOCATION:Caf\u00e9 \\\\ Bar"});
  EXPECT_EQ(found[0].find("\r\nBEGIN:VALARM"), std::string::npos);

  auto weekly = lunch();
  EKRecurrenceRule rule;
  rule.frequency = EKRecurrenceFrequencyYearly;
  rule.interval = 2;
  rule.daysOfTheWeek = {EKRecurrenceDayOfWeek{1}, EKRecurrenceDayOfWeek{7}, EKRecurrenceDayOfWeek{8}};
  rule.daysOfTheMonth = {1, -1, 0, 32, 1.5};
  rule.monthsOfTheYear = {3, 12, 13, -1};
  rule.weeksOfTheYear = {10, -53};
  rule.daysOfTheYear = {60, -366, 1e300};
  rule.setPositions = {1, -1};
  rule.recurrenceEnd = EKRecurrenceEnd::recurrenceEndWithEndDate(start + years(3));
  weekly.addRecurrenceRule(rule);
  ASSERT_TRUE(save(weekly));
  found = stored();
  ASSERT_EQ(found.size(), 2u);
  const auto& repeated = found[0].find("RRULE") == std::string::npos ? found[1] : found[0];
  EXPECT_NE(repeated.find(":20270301T090000\r\n"), std::string::npos) << "Berlin's time: " << repeated;
  for (const char* part :
       {"FREQ=YEARLY", "INTERVAL=2", "UNTIL=20300301T012736Z", "BYDAY=SA,SU", "BYMONTHDAY=1,-1",
        "BYMONTH=3,12", "BYWEEKNO=10,-53", "BYYEARDAY=60,-366", "BYSETPOS=1,-1"})
    EXPECT_NE(repeated.find(part), std::string::npos) << part << " in " << repeated;
}

TEST(EventText, ListsThatDoNotGoWithAFrequencyAreLeftOut) {
  EKEvent event;
  event.startDate = start;
  event.endDate = start - hours(1);
  EKRecurrenceRule rule;
  rule.frequency = EKRecurrenceFrequencyDaily;
  rule.daysOfTheMonth = rule.weeksOfTheYear = rule.daysOfTheYear = rule.setPositions = {1};
  event.recurrenceRules = {rule};
  const auto text = gtk::eventText(event, "id", start).value();
  EXPECT_EQ(text.find("DTEND"), std::string::npos);
  expectLines(text, {"RRULE:FREQ=DAILY;BYMONTHDAY=1;BYSETPOS=1"});
}

}  // namespace
}  // namespace velto
