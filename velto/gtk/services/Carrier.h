// The mobile carrier, as ModemManager knows it. Any thread.
#pragma once

#include "velto/gtk/services/BusService.h"
#include "velto/platform/Network.h"

#include <map>
#include <optional>
#include <string>

namespace velto::gtk {

// The carrier is the one that the SIM belongs to: abroad the network's own name says nothing about it. Of
// several modems the one that is registered with a network counts.
class Carrier : public CTTelephonyNetworkInfo, public BusService {
 public:
  Carrier() : BusService("org.freedesktop.ModemManager1") {}

  std::optional<CTCarrier> subscriberCellularProvider() const override { return carrier_.get(); }
  std::optional<std::string> currentRadioAccessTechnology() const override { return radio_.get(); }

 private:
  struct Modem {
    std::string sim;
    std::string network, networkName;  // the code of the network in use, its name
    uint32_t registration = 0;
    uint32_t technologies = 0;
  };

  void read() override;
  void forget() override;
  void appeared() override;
  void heard(const std::string& path, const std::string& member, GVariant* parameters) override;
  void choose(GVariant* objects);
  void tellOf(const Modem& modem, GVariant* sim);

  Kept<std::optional<CTCarrier>> carrier_;
  Kept<std::optional<std::string>> radio_;
};

// The word for the best of ModemManager's access technologies (a set of bits); nothing for those that a
// phone's system has no word for.
std::optional<std::string> radioAccessTechnology(uint32_t technologies);

}  // namespace velto::gtk
