// The last place that the host application obtained from GeoClue. Any thread.
#pragma once

#include "velto/gtk/services/BusService.h"
#include "velto/platform/Network.h"

#include <optional>
#include <string>

namespace velto::gtk {

// GeoClue knows an application by its connection to the bus, so the client that the host application started
// on the shared one is seen here. Nothing is started and nobody is asked: without that client, or without a
// fix of it, no place is known. When the user turns the service off, the last one is forgotten.
class Location : public CLLocationManager, public BusService {
 public:
  Location() : BusService("org.freedesktop.GeoClue2") {}

  bool locationServicesEnabled() const override { return enabled_.get(); }
  std::optional<CLLocation> location() const override { return location_.get(); }

 private:
  void read() override;
  void forget() override;
  void appeared() override;
  void heard(const std::string& path, const std::string& member, GVariant* parameters) override;
  void readClient(const std::string& path);

  std::string client_;  // on the bus's thread only; empty: to be asked for
  Kept<bool> enabled_;
  Kept<std::optional<CLLocation>> location_;
};

}  // namespace velto::gtk
