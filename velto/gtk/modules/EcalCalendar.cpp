// The calendar module: evolution-data-server by libecal. It
// connects for each event, as they are rare, and keeps nothing.
#include "velto/gtk/services/CalendarModule.h"
#include "velto/platform/foundation/GMemory.h"

#include <libecal/libecal.h>

#include <memory>
#include <string>

namespace {

using velto::GPtr;

constexpr int answerMilliseconds = 25000;                  // it may have to be started
constexpr auto withoutWaiting = static_cast<guint32>(-1);  // for a server: what is new goes there later

// A source is the description of a calendar. The default one is
// asked for only where there is any, as libecal complains otherwise.
GPtr<ESource> defaultCalendar(ESourceRegistry* registry) {
  GList* enabled = e_source_registry_list_enabled(registry, E_SOURCE_EXTENSION_CALENDAR);
  const bool some = enabled != nullptr;
  g_list_free_full(enabled, g_object_unref);
  return GPtr<ESource>::adopt(some ? e_source_registry_ref_default_calendar(registry) : nullptr);
}

void moveTo(ICalComponent* event, ICalPropertyKind kind, ICalTimezone* zone) {
  const auto property = GPtr<ICalProperty>::adopt(i_cal_component_get_first_property(event, kind));
  if (!property) return;
  const bool isStart = kind == I_CAL_DTSTART_PROPERTY;
  const auto utc = GPtr<ICalTime>::adopt(isStart ? i_cal_property_get_dtstart(property)
                                                 : i_cal_property_get_dtend(property));
  const auto local = GPtr<ICalTime>::adopt(i_cal_time_convert_to_zone(utc, zone));
  isStart ? i_cal_property_set_dtstart(property, local) : i_cal_property_set_dtend(property, local);
  i_cal_property_take_parameter(property, i_cal_parameter_new_tzid(i_cal_timezone_get_tzid(zone)));
}

// The zone that the process lives in, and where that is not one of the known ones, the system's. Not ours.
ICalTimezone* localZone() {
  const velto::GOwned<GTimeZone, g_time_zone_unref> local(g_time_zone_new_local());
  auto* zone = i_cal_timezone_get_builtin_timezone(g_time_zone_get_identifier(local.get()));
  return zone ? zone : e_cal_util_get_system_timezone();
}

// "Every Monday at nine" stays at nine when the clocks change.
bool followTimeZone(ECalClient* client, ICalComponent* event, GCancellable* cancellable, GError** error) {
  const auto rule =
      GPtr<ICalProperty>::adopt(i_cal_component_get_first_property(event, I_CAL_RRULE_PROPERTY));
  ICalTimezone* zone = rule ? localZone() : nullptr;
  if (!zone || zone == i_cal_timezone_get_utc_timezone()) return true;
  moveTo(event, I_CAL_DTSTART_PROPERTY, zone);
  moveTo(event, I_CAL_DTEND_PROPERTY, zone);
  return e_cal_client_add_timezone_sync(client, zone, cancellable, error);
}

gboolean fail(GError** error, const char* why) {
  g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_NOT_FOUND, why);
  return FALSE;
}

// Such as "…Sources5", of the bus's own: those that are there, and those that it would start.
std::string registryService(GDBusConnection* bus, GCancellable* cancellable) {
  for (const char* method : {"ListNames", "ListActivatableNames"}) {
    const velto::GOwned<GVariant, g_variant_unref> reply(g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, nullptr,
        G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE, answerMilliseconds, cancellable, nullptr));
    if (!reply) continue;
    const velto::GOwned<GVariant, g_variant_unref> list(g_variant_get_child_value(reply.get(), 0));
    const std::unique_ptr<const char*, velto::GFree> names(g_variant_get_strv(list.get(), nullptr));
    for (const char* const* name = names.get(); *name; ++name)
      if (g_str_has_prefix(*name, "org.gnome.evolution.dataserver.Sources")) return *name;
  }
  return {};
}

// libecal waits for a registry that hangs whatever is cancelled meanwhile, so it is asked first whether it is alive.
bool isAlive(GCancellable* cancellable, GError** error) {
  const auto bus = GPtr<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, error));
  if (!bus) return false;
  const auto service = registryService(bus, cancellable);
  // Where nobody was to be asked, libecal may know who keeps calendars here.
  if (service.empty()) return !g_cancellable_set_error_if_cancelled(cancellable, error);
  const velto::GOwned<GVariant, g_variant_unref> reply(
      g_dbus_connection_call_sync(bus, service.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping", nullptr,
                                  nullptr, G_DBUS_CALL_FLAGS_NONE, answerMilliseconds, cancellable, error));
  return reply != nullptr;
}

}  // namespace

gboolean velto_calendar_save(const char* text, GCancellable* cancellable, GError** error) {
  const auto event = GPtr<ICalComponent>::adopt(i_cal_component_new_from_string(text));
  if (!event || !i_cal_component_is_valid(event)) return fail(error, "not an event");
  if (!isAlive(cancellable, error)) return FALSE;
  const auto registry = GPtr<ESourceRegistry>::adopt(e_source_registry_new_sync(cancellable, error));
  if (!registry) return FALSE;
  const auto source = defaultCalendar(registry);
  if (!source) return fail(error, "no calendar");
  const auto client = GPtr<EClient>::adopt(
      e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS, withoutWaiting, cancellable, error));
  if (!client) return FALSE;
  if (e_client_is_readonly(client)) return fail(error, "the calendar is read-only");
  auto* calendar = E_CAL_CLIENT(client.get());
  if (!followTimeZone(calendar, event, cancellable, error)) return FALSE;
  char* identifier = nullptr;
  const gboolean saved = e_cal_client_create_object_sync(calendar, event, E_CAL_OPERATION_FLAG_NONE,
                                                         &identifier, cancellable, error);
  g_free(identifier);
  return saved;
}
