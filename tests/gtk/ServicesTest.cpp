// Carrier, location, reachability and orientation against services on a private bus: present, absent,
// hanging, restarting and talking nonsense.
#include "velto/gtk/GtkPlatform.h"
#include "velto/network/VeltoDevice.h"
#include "velto/network/VeltoTaskRequest.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/JSON.h"

#include <stdlib.h>
#include <sys/resource.h>

#include "BusMock.h"

namespace velto {
namespace {

using test::MockService;
using test::runUntil;

constexpr char modemPath[] = "/org/freedesktop/ModemManager1/Modem/0";
constexpr char modemInterface[] = "org.freedesktop.ModemManager1.Modem";
constexpr char simPath[] = "/org/freedesktop/ModemManager1/SIM/0";
constexpr char simInterface[] = "org.freedesktop.ModemManager1.Sim";
constexpr char geoPath[] = "/org/freedesktop/GeoClue2/Manager";
constexpr char geoInterface[] = "org.freedesktop.GeoClue2.Manager";
constexpr char clientPath[] = "/org/freedesktop/GeoClue2/Client/1";
constexpr char clientInterface[] = "org.freedesktop.GeoClue2.Client";
constexpr char networkPath[] = "/org/freedesktop/NetworkManager";
constexpr char networkInterface[] = "org.freedesktop.NetworkManager";
constexpr char sensorPath[] = "/net/hadess/SensorProxy";
constexpr char sensorInterface[] = "net.hadess.SensorProxy";

constexpr uint32_t reachable = SCNetworkReachabilityFlagsReachable;
constexpr uint32_t mobile = reachable | SCNetworkReachabilityFlagsIsWWAN;

class ServicesTest : public testing::Test {
 protected:
  ~ServicesTest() override { gtk::uninstall(); }

  void install() {
    gtk::install({.applicationIdentifier = "org.example.services", .dataFolder = folder_.path()});
  }
  // And waits for the first readings. A service that answers too late is asked again.
  void installAndRead(const std::function<bool()>& isKnown = [] { return true; }) {
    install();
    ASSERT_TRUE(gtk::GtkPlatform::installed()->systemBus().waitUntilRead(std::chrono::minutes(2)));
    ASSERT_TRUE(runUntil(isKnown));
  }

  // A modem in the net of "Example Mobile", with a SIM of "Home Mobile".
  std::unique_ptr<MockService> modemManager() {
    auto service = std::make_unique<MockService>(bus, "org.freedesktop.ModemManager1",
                                                 "/org/freedesktop/ModemManager1", "org.example.Unused");
    service->addObject(modemPath, modemInterface,
                       "{'AccessTechnologies': <uint32 16384>, 'Sim': <objectpath '/'>}");
    service->addInterface(
        modemPath, "org.freedesktop.ModemManager1.Modem.Modem3gpp",
        "{'OperatorCode': <'26201'>, 'OperatorName': <'Example Mobile'>, 'RegistrationState': <uint32 1>}");
    service->addObject(simPath, simInterface,
                       "{'OperatorIdentifier': <'310260'>, 'OperatorName': <'Home Mobile'>}");
    service->pointTo(modemPath, modemInterface, "Sim", simPath);
    return service;
  }
  // As after the host application started its client and got a fix.
  std::unique_ptr<MockService> geoClue() {
    auto service = std::make_unique<MockService>(bus, "org.freedesktop.GeoClue2", geoPath, geoInterface,
                                                 "{'InUse': <true>, 'AvailableAccuracyLevel': <uint32 8>}");
    service->addMethod(geoPath, geoInterface, "GetClient", "o", "ret = '" + std::string(clientPath) + "'");
    service->addObject(clientPath, clientInterface,
                       "{'Active': <true>, 'Location': <objectpath '/place/1'>}");
    for (const char* method : {"Start", "Stop"})
      service->addMethod(clientPath, clientInterface, method, "", "");
    addPlace(*service, "/place/1", "52.5", "13.25", "(uint64 1700000000, uint64 500000)");
    service->update(geoPath, geoInterface, "{'InUse': <true>}");
    return service;
  }
  static void addPlace(MockService& service, const std::string& path, const std::string& latitude,
                       const std::string& longitude, const std::string& time) {
    service.addObject(path, "org.freedesktop.GeoClue2.Location",
                      "{'Latitude': <" + latitude + ">, 'Longitude': <" + longitude +
                          ">, 'Accuracy': <25.0>, 'Timestamp': <" + time + ">}");
  }
  std::unique_ptr<MockService> networkManager() {
    return std::make_unique<MockService>(
        bus, networkInterface, networkPath, networkInterface,
        "{'State': <uint32 70>, 'Connectivity': <uint32 4>, 'PrimaryConnectionType': <'gsm'>}");
  }
  std::unique_ptr<MockService> sensor() {
    auto service = std::make_unique<MockService>(
        bus, sensorInterface, sensorPath, sensorInterface,
        "{'HasAccelerometer': <true>, 'AccelerometerOrientation': <'left-up'>}");
    for (const char* method : {"ClaimAccelerometer", "ReleaseAccelerometer"})
      service->addMethod(sensorPath, sensorInterface, method, "", "");
    return service;
  }

  static uint32_t flags() {
    return Platform::current().network().reachabilityWithAddress({"0.0.0.0"})->flags().value_or(99);
  }
  static std::string carrier() {
    return VeltoDevice::simOperatorName().value_or("-") + "/" + VeltoDevice::simOperatorCode().value_or("-");
  }
  static std::optional<std::string> radio() {
    return Platform::current().telephony().currentRadioAccessTechnology();
  }
  static int64_t orientation() { return Platform::current().device().orientation(); }
  static bool allKnown() {
    return carrier() == "Example Mobile/262-01" && VeltoDevice::locationLatitude() == 52.5 &&
           flags() == mobile;
  }

  test::PrivateBus bus;

 private:
  test::TemporaryFolder folder_;
};

TEST_F(ServicesTest, TheCarrierIsTheOneOfTheSim) {
  auto service = modemManager();
  installAndRead([] { return carrier() == "Example Mobile/262-01"; });
  EXPECT_EQ(radio(), "CTRadioAccessTechnologyLTE");

  service->update(modemPath, std::string(modemInterface) + ".Modem3gpp",
                  "{'RegistrationState': <uint32 5>, 'OperatorName': <'Abroad'>}");
  EXPECT_TRUE(runUntil([] { return carrier() == "Home Mobile/310-260"; })) << "roaming";
  service->update(simPath, simInterface,
                  "{'OperatorIdentifier': <'nonsense'>, 'OperatorName': <'Only a name'>}");
  EXPECT_TRUE(runUntil([] { return carrier() == "Only a name/-"; }));

  const std::map<uint32_t, std::optional<std::string>> technologies{
      {0xFFFFFFFF, std::nullopt},     {1U << 4, "Edge"},
      {1U << 6 | 1U << 7, "HSDPA"},   {1U << 14 | 1U << 5, "LTE"},
      {1U << 15 | 1U << 14, "NRNSA"}, {1U << 15, "NR"}};
  for (const auto& [bits, word] : technologies)
    EXPECT_EQ(gtk::radioAccessTechnology(bits),
              word ? std::optional("CTRadioAccessTechnology" + *word) : word);

  service->pointTo(modemPath, modemInterface, "Sim", "/");
  EXPECT_TRUE(runUntil([] { return carrier() == "-/-"; })) << "no SIM, and not at home";
}

TEST_F(ServicesTest, ThePlaceIsTheHostApplicationsAndNothingIsStarted) {
  auto service = geoClue();
  installAndRead(VeltoDevice::isLocationServiceEnabled);
  EXPECT_EQ(VeltoDevice::locationLatitude(), 52.5);
  EXPECT_EQ(VeltoDevice::locationLongitude(), 13.25);
  EXPECT_EQ(VeltoDevice::locationAccuracy(), 25);
  EXPECT_EQ(VeltoDevice::locationTimestampInMilliseconds(), 1700000000500);

  addPlace(*service, "/place/2", "-91.0", "13.25", "(uint64 1700000001, uint64 0)");
  addPlace(*service, "/place/3", "1.0", "2.0", "'yesterday'");
  service->pointTo(clientPath, clientInterface, "Location", "/place/2");
  EXPECT_TRUE(runUntil([] { return !VeltoDevice::isLocationServiceEnabled(); })) << "no such latitude";
  service->pointTo(clientPath, clientInterface, "Location", "/place/3");
  EXPECT_TRUE(runUntil([] { return VeltoDevice::locationLatitude() == 1.0; }));
  EXPECT_NEAR(*VeltoDevice::locationTimestampInSeconds(), static_cast<double>(time(nullptr)), 60);

  const std::string second = "/org/freedesktop/GeoClue2/Client/2";
  addPlace(*service, "/place/4", "-3.5", "4.0", "(uint64 1700000002, uint64 0)");
  service->addObject(second, clientInterface, "{'Active': <true>, 'Location': <objectpath '/place/4'>}");
  service->signal(second, clientInterface, "LocationUpdated", "oo", "[<'/'>, <'/place/4'>]");
  EXPECT_TRUE(runUntil([] { return VeltoDevice::locationLatitude() == -3.5; }))
      << "another client of the host";

  service->update(geoPath, geoInterface, "{'AvailableAccuracyLevel': <uint32 0>}");
  EXPECT_TRUE(runUntil([] { return !VeltoDevice::isLocationServiceEnabled(); }))
      << "switched off by the user";
  EXPECT_EQ(service->callsOf(clientPath, "Start") + service->callsOf(clientPath, "Stop"), 0u);
}

TEST_F(ServicesTest, WithoutAClientOfTheHostNoPlaceIsKnown) {
  const auto service = geoClue();
  service->update(geoPath, geoInterface, "{'InUse': <false>}");
  installAndRead();
  EXPECT_FALSE(VeltoDevice::isLocationServiceEnabled());
  EXPECT_EQ(service->callsOf(geoPath, "GetClient"), 0u) << "a client would be made";
  service->pointTo(clientPath, clientInterface, "Location", "/");
  service->update(geoPath, geoInterface, "{'InUse': <true>}");
  EXPECT_TRUE(runUntil([&] { return service->callsOf(geoPath, "GetClient") > 0; }));
  EXPECT_FALSE(VeltoDevice::isLocationServiceEnabled());
}

TEST_F(ServicesTest, ReachabilityFollowsThePrimaryConnectionAndTells) {
  auto service = networkManager();
  install();
  int told = 0;
  const auto target = Platform::current().network().reachabilityWithAddress({"0.0.0.0"});
  const Handle watch = target->setCallback([&] { ++told; });
  // Another thread changes them, and has it told then.
  ASSERT_TRUE(runUntil([&] { return flags() == mobile && told > 0; }));
  const std::pair<const char*, uint32_t> changes[] = {
      {"{'PrimaryConnectionType': <'802-11-wireless'>}", reachable},
      {"{'State': <uint32 20>}", 0},
      {"{'State': <uint32 60>, 'Connectivity': <uint32 2>}", reachable | 4 | 16}};
  for (const auto& [properties, expected] : changes) {
    const int before = told;
    service->update(networkPath, networkInterface, properties);
    EXPECT_TRUE(runUntil([&] { return flags() == expected && told == before + 1; })) << properties << flags();
  }
}

TEST_F(ServicesTest, TheDeviceTurnsWithItsSensor) {
  auto service = sensor();
  installAndRead();
  // Without a built-in display this machine's panel counts as lying.
  const bool upright = gtk::isPanelUpright(Platform::current().device().userInterfaceIdiom());
  EXPECT_TRUE(runUntil([&] { return orientation() == (upright ? 4 : 1); })) << orientation();
  EXPECT_TRUE(runUntil([&] { return service->callsOf(sensorPath, "ClaimAccelerometer") == 1; }));
  Platform::current().device().setOrientation(2);
  EXPECT_EQ(orientation(), 2);
  service->update(sensorPath, sensorInterface, "{'AccelerometerOrientation': <'normal'>}");
  EXPECT_TRUE(runUntil([&] { return orientation() == (upright ? 1 : 3); })) << orientation();
  service->update(sensorPath, sensorInterface, "{'AccelerometerOrientation': <'undefined'>}");
  // A connection of the host application's own does not end with the library.
  const auto shared = GPtr<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
  gtk::uninstall();
  EXPECT_TRUE(runUntil([&] { return service->callsOf(sensorPath, "ReleaseAccelerometer") == 1; }));
}

TEST_F(ServicesTest, ALockedSessionIsToldAndOneWithoutItsServiceIsOpen) {
  const std::string path = "/org/freedesktop/login1/session/auto", session = "org.freedesktop.login1.Session";
  auto login =
      std::make_unique<MockService>(bus, "org.freedesktop.login1", path, session, "{'LockedHint': <true>}");
  install();
  int told = 0;
  const auto count = [&](const NSNotification&) { ++told; };
  auto& center = Platform::current().notificationCenter();
  const auto locked = center.addObserver(UIApplicationProtectedDataWillBecomeUnavailable, count);
  const auto unlocked = center.addObserver(UIApplicationProtectedDataDidBecomeAvailable, count);
  const auto isOpen = [] { return Platform::current().application().isProtectedDataAvailable(); };
  EXPECT_TRUE(runUntil([&] { return !isOpen(); }));
  login->update(path, session, "{'LockedHint': <false>}");
  EXPECT_TRUE(runUntil(isOpen));
  login->update(path, session, "{'LockedHint': <true>}");
  EXPECT_TRUE(runUntil([&] { return !isOpen(); }));
  login.reset();
  EXPECT_TRUE(runUntil([&] { return isOpen() && told >= 4; }));
  EXPECT_EQ(told, 4);
}

TEST_F(ServicesTest, ServicesThatHangOrCrashHoldNobodyUpAndAreAskedAgain) {
  auto modems = modemManager(), places = geoClue(), networks = networkManager();
  const auto sensors = sensor();
  const std::initializer_list<MockService*> all = {modems.get(), places.get(), networks.get(), sensors.get()};
  for (auto* service : all) service->hang();
  install();
  // A thread that waits for something gives the processor up of its own will.
  const auto waits = [] {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
  };
  const auto before = waits();
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(VeltoTaskRequest::httpBodyFor(std::nullopt));
  EXPECT_LT(waits() - before, 1000) << "not even once in each";
  auto& systemBus = gtk::GtkPlatform::installed()->systemBus();
  EXPECT_TRUE(systemBus.waitUntilRead(std::chrono::minutes(2))) << "given up for now";
  EXPECT_EQ(carrier(), "-/-");

  for (auto* service : all) service->goOn();
  EXPECT_TRUE(runUntil([] { return allKnown() && orientation() != 0; })) << carrier() << flags();

  for (auto* service : all) service->hang();
  EXPECT_TRUE(allKnown()) << "the last known values";
  for (auto* service : all) service->goOn();

  // Those that crash are forgotten, and read anew.
  modems.reset();
  places.reset();
  networks.reset();
  EXPECT_TRUE(runUntil([] {
    return carrier() == "-/-" && !radio() && !VeltoDevice::isLocationServiceEnabled() && flags() != mobile;
  }));
  modems = modemManager();
  places = geoClue();
  networks = networkManager();
  EXPECT_TRUE(runUntil(allKnown)) << carrier() << flags();
  bus.stop();
  EXPECT_TRUE(runUntil([] { return carrier() == "-/-"; })) << "and this process lives on without a bus";
}

}  // namespace
}  // namespace velto
