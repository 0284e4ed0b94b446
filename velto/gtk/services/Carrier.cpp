// ModemManager's objects: one for each modem, and the SIM that it points to.
#include "velto/gtk/services/Carrier.h"

#include "velto/platform/foundation/Text.h"

#include <algorithm>

namespace velto::gtk {
namespace {

constexpr char managerPath[] = "/org/freedesktop/ModemManager1";
constexpr char objectManager[] = "org.freedesktop.DBus.ObjectManager";
constexpr char modemInterface[] = "org.freedesktop.ModemManager1.Modem";
constexpr char gsmInterface[] = "org.freedesktop.ModemManager1.Modem.Modem3gpp";
constexpr char simInterface[] = "org.freedesktop.ModemManager1.Sim";
constexpr size_t longestName = 64;

// MMModem3gppRegistrationState
constexpr std::initializer_list<uint32_t> atHome{1, 6, 9}, roaming{5, 7, 10};

bool isOneOf(uint32_t state, std::initializer_list<uint32_t> states) {
  return std::find(states.begin(), states.end(), state) != states.end();
}

std::optional<std::string> plausibleName(const std::string& name) {
  const GText text(g_strdup(name.c_str()));
  g_strstrip(text.get());
  const std::string_view stripped(text.get());
  const bool isText =
      std::none_of(stripped.begin(), stripped.end(), [](char c) { return g_ascii_iscntrl(c); });
  if (stripped.empty() || stripped.size() > longestName || !isText) return std::nullopt;
  return std::string(stripped);
}

// Three digits of the country and two or three of the network (ITU-T E.212).
bool isOperatorCode(const std::string& code) {
  return (code.size() == 5 || code.size() == 6) &&
         std::all_of(code.begin(), code.end(), [](char c) { return g_ascii_isdigit(c); });
}

}  // namespace

std::optional<std::string> radioAccessTechnology(uint32_t technologies) {
  enum Bit : uint32_t {  // MMModemAccessTechnology
    Gsm = 1U << 1,
    GsmCompact = 1U << 2,
    Gprs = 1U << 3,
    Edge = 1U << 4,
    Umts = 1U << 5,
    Hsdpa = 1U << 6,
    Hsupa = 1U << 7,
    Hspa = 1U << 8,
    HspaPlus = 1U << 9,
    OneXRtt = 1U << 10,
    Evdo0 = 1U << 11,
    EvdoA = 1U << 12,
    EvdoB = 1U << 13,
    Lte = 1U << 14,
    NewRadio = 1U << 15,
    LteCatM = 1U << 16,
    LteNbIot = 1U << 17,
    Any = 0xFFFFFFFFU,
  };
  if (technologies == Any) return std::nullopt;  // a wish, not a state
  static constexpr std::pair<uint32_t, const char*> words[] = {
      {Lte | LteCatM | LteNbIot, "LTE"},
      {Hspa | HspaPlus | Hsdpa, "HSDPA"},
      {Hsupa, "HSUPA"},
      {Umts, "WCDMA"},
      {EvdoB, "CDMAEVDORevB"},
      {EvdoA, "CDMAEVDORevA"},
      {Evdo0, "CDMAEVDORev0"},
      {Edge, "Edge"},
      {OneXRtt, "CDMA1x"},
      {Gprs | Gsm | GsmCompact, "GPRS"},
  };
  const std::string prefix = "CTRadioAccessTechnology";
  if (technologies & NewRadio) return prefix + (technologies & Lte ? "NRNSA" : "NR");
  for (const auto& [bits, word] : words)
    if (technologies & bits) return prefix + word;
  return std::nullopt;
}

void Carrier::appeared() {
  listen(objectManager, "InterfacesAdded");
  listen(objectManager, "InterfacesRemoved");
  for (const char* interface : {modemInterface, gsmInterface, simInterface}) listenForProperties(interface);
}

void Carrier::heard(const std::string&, const std::string& member, GVariant* parameters) {
  // The strength of the signal changes all the time.
  if (member != "PropertiesChanged" ||
      mentions(parameters, {"Sim", "AccessTechnologies", "OperatorCode", "OperatorName", "RegistrationState",
                            "OperatorIdentifier"}))
    readAgain();
}

void Carrier::read() {
  call(managerPath, objectManager, "GetManagedObjects", nullptr, "(a{oa{sa{sv}}})", [this](GVariant* reply) {
    const GOwned<GVariant, g_variant_unref> objects(reply ? g_variant_get_child_value(reply, 0) : nullptr);
    choose(objects.get());
  });
}

void Carrier::forget() {
  carrier_.set(std::nullopt);
  radio_.set(std::nullopt);
}

void Carrier::choose(GVariant* objects) {
  std::map<std::string, Modem> modems;
  const gsize count = objects ? g_variant_n_children(objects) : 0;
  for (gsize i = 0; i < count; ++i) {
    const char* path = nullptr;
    GVariant* found = nullptr;
    g_variant_get_child(objects, i, "{&o@a{sa{sv}}}", &path, &found);
    const GOwned<GVariant, g_variant_unref> interfaces(found);
    const auto general = property(interfaces.get(), modemInterface, "a{sv}");
    const auto gsm = property(interfaces.get(), gsmInterface, "a{sv}");
    if (!general) continue;
    modems[path] = {textProperty(general.get(), "Sim", "o"), textProperty(gsm.get(), "OperatorCode"),
                    textProperty(gsm.get(), "OperatorName"), numberProperty(gsm.get(), "RegistrationState"),
                    numberProperty(general.get(), "AccessTechnologies")};
  }
  const auto registered = std::find_if(modems.begin(), modems.end(), [](const auto& modem) {
    return isOneOf(modem.second.registration, atHome) || isOneOf(modem.second.registration, roaming);
  });
  const auto chosen = registered != modems.end() ? registered : modems.begin();
  if (chosen == modems.end()) {
    forget();
    return;
  }
  const Modem modem = chosen->second;
  const bool knowsHome = isOneOf(modem.registration, atHome) && isOperatorCode(modem.network);
  if (knowsHome || modem.sim.empty() || modem.sim == "/")
    tellOf(modem, nullptr);
  else
    getAll(modem.sim, simInterface, [this, modem](GVariant* sim) { tellOf(modem, sim); });
}

void Carrier::tellOf(const Modem& modem, GVariant* sim) {
  std::string code = textProperty(sim, "OperatorIdentifier");
  std::string name = textProperty(sim, "OperatorName");
  if (!sim && !isOneOf(modem.registration, roaming)) {
    code = modem.network;
    name = modem.networkName;
  }
  CTCarrier carrier;
  carrier.carrierName = plausibleName(name);
  if (isOperatorCode(code)) {
    carrier.mobileCountryCode = code.substr(0, 3);
    carrier.mobileNetworkCode = code.substr(3);
  }
  const bool known = carrier.carrierName || carrier.mobileCountryCode;
  carrier_.set(known ? std::optional(carrier) : std::nullopt);
  radio_.set(radioAccessTechnology(modem.technologies));
}

}  // namespace velto::gtk
