// GeoClue's manager, the client of this process, and the place that it points to.
#include "velto/gtk/services/Location.h"

#include <cmath>

namespace velto::gtk {
namespace {

constexpr char locationManagerPath[] = "/org/freedesktop/GeoClue2/Manager";
constexpr char locationManagerInterface[] = "org.freedesktop.GeoClue2.Manager";
constexpr char clientInterface[] = "org.freedesktop.GeoClue2.Client";
constexpr char locationInterface[] = "org.freedesktop.GeoClue2.Location";

double realProperty(GVariant* dictionary, const char* name) {
  const auto value = property(dictionary, name, "d");
  return value ? g_variant_get_double(value.get()) : NAN;
}

// Seconds and microseconds since 1970. A fix without a time, or from the future, was made just now.
double timestampProperty(GVariant* dictionary) {
  const double now = static_cast<double>(g_get_real_time()) / G_USEC_PER_SEC;
  const auto value = property(dictionary, "Timestamp", "(tt)");
  if (!value) return now;
  guint64 seconds = 0, microseconds = 0;
  g_variant_get(value.get(), "(tt)", &seconds, &microseconds);
  const double time = static_cast<double>(seconds) + static_cast<double>(microseconds) / G_USEC_PER_SEC;
  return time > 0 && time <= now ? time : now;
}

std::optional<CLLocation> plausibleLocation(GVariant* properties) {
  CLLocation location;
  location.latitude = realProperty(properties, "Latitude");
  location.longitude = realProperty(properties, "Longitude");
  if (!(std::abs(location.latitude) <= 90) || !(std::abs(location.longitude) <= 180)) return std::nullopt;
  const double accuracy = realProperty(properties, "Accuracy");
  if (std::isfinite(accuracy) && accuracy >= 0) location.horizontalAccuracy = accuracy;
  location.timestamp = timestampProperty(properties);
  return location;
}

// Nothing has to be asked while nobody uses the service: the host application's client has not been started.
bool isInUse(GVariant* manager) {
  const auto value = property(manager, "InUse", "b");
  return !value || g_variant_get_boolean(value.get());
}

// Users turn the service off by allowing it no accuracy.
bool isAllowed(GVariant* manager) {
  return numberProperty(manager, "AvailableAccuracyLevel", 1) > 0;
}

}  // namespace

void Location::appeared() {
  listen(clientInterface, "LocationUpdated");
  listenForProperties(clientInterface);
  listenForProperties(locationManagerInterface);
}

void Location::heard(const std::string& path, const std::string& member, GVariant* parameters) {
  // Only an application's own clients signal to it; of several the one that moved last counts.
  if (member == "LocationUpdated") client_ = path;
  if (member != "PropertiesChanged" ||
      mentions(parameters, {"Location", "Active", "InUse", "AvailableAccuracyLevel"}))
    readAgain();
}

void Location::forget() {
  client_.clear();
  enabled_.set(false);
  location_.set(std::nullopt);
}

void Location::read() {
  getAll(locationManagerPath, locationManagerInterface, [this](GVariant* manager) {
    if (!isAllowed(manager)) {
      forget();
      return;
    }
    enabled_.set(true);
    if (!isInUse(manager)) return;  // the last place stands
    if (!client_.empty()) return readClient(client_);
    call(locationManagerPath, locationManagerInterface, "GetClient", nullptr, "(o)",
         [this](GVariant* client) {
           if (!client) return forget();
           const char* path = nullptr;
           g_variant_get(client, "(&o)", &path);
           readClient(path);
         });
  });
}

void Location::readClient(const std::string& path) {
  getAll(path, clientInterface, [this](GVariant* client) {
    const std::string place = textProperty(client, "Location", "o");
    if (!client) client_.clear();  // given up by the application
    if (place.empty() || place == "/")
      location_.set(std::nullopt);
    else
      getAll(place, locationInterface,
             [this](GVariant* properties) { location_.set(plausibleLocation(properties)); });
  });
}

}  // namespace velto::gtk
