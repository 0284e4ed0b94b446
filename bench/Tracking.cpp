// The tracker on the Linux platform's store with so many events waiting: what starting costs the main thread,
// and what adding and deleting one event takes. Prints one JSON object. usage: velto-bench-tracking <folder>
// <waiting>
#include "velto/gtk/VeltoGtk.h"
#include "velto/network/VeltoURL.h"
#include "velto/platform/NSUserDefaults.h"
#include "velto/platform/Platform.h"
#include "velto/tracking/VeltoTrackerManager.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "Measure.h"

namespace velto {
namespace {

constexpr char storeKey[] = "kVeltoTrackIdentifierKey";
constexpr int changes = 300;

void install(const std::string& folder) {
  gtk::Options options;
  options.applicationIdentifier = "org.example.bench";
  options.dataFolder = folder;
  options.hostMap = {{"track.velto.example", "127.0.0.1:1"}};  // nobody listens there
  VeltoURL::setServerNames({"", "", "track.velto.example"});
  gtk::install(options);
}

std::string identifier(int number) {
  return VeltoTrackerManager::clickIdentifierForBannerId("banner-" + std::to_string(number), "publisher",
                                                         "order");
}

void print(const char* name, const std::vector<double>& samples) {
  std::cout << ", \"" << name << "\": [";
  for (size_t i = 0; i < samples.size(); ++i) std::cout << (i > 0 ? ", " : "") << samples[i];
  std::cout << ']';
}

template <class Work>
double microseconds(const Work& work) {
  const double before = bench::wallMilliseconds();
  work();
  return (bench::wallMilliseconds() - before) * 1e3;
}

int run(const std::string& folder, int waiting) {
  install(folder);
  DefaultsDictionary events;
  for (int i = 0; i < waiting; ++i) events[identifier(i)] = "click";
  Platform::current().standardUserDefaults().setObject(storeKey, events);
  gtk::uninstall();

  install(folder);
  const double before = bench::threadMilliseconds();
  VeltoTrackerManager::start();
  const double load = bench::threadMilliseconds() - before;
  const auto manager = VeltoTrackerManager::shared();
  std::vector<double> add, remove;
  for (int i = 0; i < changes; ++i) {
    const auto event = identifier(waiting + i);
    add.push_back(microseconds([&] { manager->storeTrackIdentifier(event, VeltoTrackTypeClick); }));
    remove.push_back(microseconds([&] { manager->deleteTrackIdentifier(event); }));
  }
  const auto left = Platform::current().standardUserDefaults().objectForKey(storeKey);
  gtk::uninstall();
  if (left != DefaultsValue(events)) {
    std::cerr << "velto-bench-tracking: the store does not hold what it should\n";
    return 1;
  }
  std::cout << "{\"waiting\": " << waiting << ", \"startMs\": " << load;
  print("addUs", add);
  print("deleteUs", remove);
  std::cout << "}" << std::endl;
  return 0;
}

}  // namespace
}  // namespace velto

int main(int count, char** words) {
  const int waiting = count == 3 ? std::atoi(words[2]) : 0;
  if (waiting < 1) {
    std::cerr << "usage: velto-bench-tracking <folder> <waiting>\n";
    return 2;
  }
  return velto::run(words[1], waiting);
}
