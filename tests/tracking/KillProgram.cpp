// Proves that no event is ever lost: a process that produces clicks on the Linux platform, against a server
// that acknowledges, refuses, breaks off, keeps silent or dies, is killed at random moments, again and again
// on the same store. In the end every event that was stored has been acknowledged by the server or is in the
// store still. scripts/kill-test runs it.
//
// This program is both sides: the killer, which has the server in its own process, and, called with --click,
// the victim.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/NSUserDefaults.h"
#include "velto/platform/Platform.h"
#include "velto/tracking/VeltoTrackerManager.h"
#include "velto/velto.h"

#include <glib.h>

#include <iostream>
#include <map>
#include <random>
#include <set>

#include "../support/Program.h"
#include "sandbox/Server.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using sandbox::Answer;
using sandbox::Kind;

constexpr char storeKey[] = "kVeltoTrackIdentifierKey";
constexpr char publisherKey[] = "kill-test";
constexpr int clicksOfALaunch = 20;
constexpr auto betweenClicks = 4ms;
constexpr int longestLife = 120'000;  // microseconds from the registration to the kill

void installOn(const std::string& folder, const std::string& caFile = {}, const std::string& port = "1") {
  VeltoURL::setServerNames({"", "", "track.velto.example"});
  gtk::install({.applicationIdentifier = "org.example.kill",
                .dataFolder = folder,
                .caFile = caFile,
                .hostMap = {{"track.velto.example", "127.0.0.1:" + port}}});
}

// --- the victim

// Tells on standard output what has happened: "registered", "stored EVENT" once that is on the medium, "gone
// EVENT" once it was removed again; until it is killed.
[[noreturn]] void produceClicks(const std::string& folder, const std::string& caFile, const std::string& port,
                                const std::string& launch) {
  installOn(folder, caFile, port);
  VeltoFramework::addVeltoKey(publisherKey);
  std::cout << "registered" << std::endl;
  const auto manager = VeltoTrackerManager::shared();
  std::map<std::string, std::string> waiting;  // identifier to event
  int clicks = 0;
  const auto work = Platform::current().mainQueue().every(betweenClicks, [&] {
    if (clicks < clicksOfALaunch) {
      const auto event = launch + "-" + std::to_string(clicks++);
      const auto identifier = VeltoTrackerManager::clickIdentifierForBannerId(event, "p", "o");
      manager->_sendTrackIdentifier(identifier, VeltoTrackTypeClick, true);
      std::cout << "stored " << event << std::endl;
      waiting[identifier] = event;
    }
    std::erase_if(waiting, [&](const auto& click) {
      if (manager->getTrackTypeFromTrackIdenfier(click.first) != VeltoTrackTypeUnknown) return false;
      std::cout << "gone " << click.second << std::endl;
      return true;
    });
  });
  while (true) g_main_context_iteration(nullptr, TRUE);
}

// --- the killer

class Killer {
 public:
  explicit Killer(unsigned seed) : random_(seed) {
    sandbox::Options options;
    options.dataFolder = folder_.path("sandbox");
    server_ = std::make_unique<sandbox::Server>(options);
    Answer silence = Answer::text(200, "1"), cut = silence;
    silence.delay = 1min;
    cut.fault.cutBeforeHeaders = true;
    for (const auto& [n, answer] :
         {std::pair(3U, Answer::text(200, "0")), {5U, Answer::text(500)}, {7U, cut}, {11U, silence}})
      server_->addRule({"fault", {.kind = Kind::Click, .count = sandbox::Count::multiplesOf(n)}, {answer}});
    server_->start();
  }

  // One life of the victim. In some the server dies first. The last goes on until an event of its own is gone.
  void launchAndKill(int launch, bool last) {
    if (last) server_->addRule({"acknowledge", {.kind = Kind::Click}, {Answer::text(200, "1")}});
    const auto sign = last ? "gone " + std::to_string(launch) + "-" : "registered";
    test::Process victim({std::filesystem::read_symlink("/proc/self/exe"), "--click", folder_.path("store"),
                          server_->caFile(), std::to_string(server_->port()), std::to_string(launch)});
    while (const auto line = victim.line()) {
      note(*line);
      if (line->starts_with(sign)) break;
    }
    g_usleep(below(longestLife));
    const bool serverDies = below(8) == 0;
    if (serverDies) {
      server_->stop();
      g_usleep(below(longestLife / 4));
    }
    victim.signal(SIGKILL);
    while (const auto line = victim.line()) note(*line);  // what it said before
    if (serverDies) server_->start();
  }

  // Prints what became of the events; whether all is well.
  bool report(int kills) {
    std::set<std::string> acknowledged;
    bool good = true;
    const auto complain = [&](const std::string& what) {
      std::cerr << "kill test: " << what << '\n';
      good = false;
    };
    for (const auto& request : server_->requests()) {
      for (const auto& problem : request.problems) complain("a request was wrong: " + problem);
      if (request.track && request.rule == "acknowledge")
        acknowledged.insert(eventOf(request.track->arguments));
    }
    const auto waiting = eventsInStore();
    for (const auto& event : stored_)
      if (!acknowledged.contains(event) && !waiting.contains(event)) complain("lost: " + event);
    for (const auto& event : gone_) {
      if (!acknowledged.contains(event)) complain("removed without an acknowledgement: " + event);
      if (waiting.contains(event)) complain("came back after it was removed: " + event);
    }
    if (gone_.empty() || waiting.empty()) complain("too little happened to prove anything");
    std::cout << kills << " kills: " << stored_.size() << " events stored, " << gone_.size()
              << " acknowledged and gone, " << waiting.size() << " waiting, "
              << (good ? "none lost" : "not as it should be") << std::endl;
    return good;
  }

 private:
  int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }

  void note(const std::string& line) {
    if (line == "registered") stored_.insert(publisherKey);
    if (line.starts_with("stored ")) stored_.insert(line.substr(7));
    if (line.starts_with("gone ")) gone_.insert(line.substr(5));
  }

  std::set<std::string> eventsInStore() {
    std::set<std::string> events;
    installOn(folder_.path("store"));
    if (const auto value = Platform::current().standardUserDefaults().objectForKey(storeKey))
      for (const auto& [identifier, type] : std::get<DefaultsDictionary>(*value)) {
        std::vector<std::string> problems;
        const auto track = sandbox::readTrackIdentifier(identifier, problems);
        events.insert(track ? eventOf(track->arguments) : "unreadable");
      }
    gtk::uninstall();
    return events;
  }

  // Clicks are known by their banner, the install by its key.
  static std::string eventOf(const std::string& arguments) {
    return arguments.substr(0, arguments.find(':'));
  }

  std::mt19937 random_;
  const test::TemporaryFolder folder_;
  std::unique_ptr<sandbox::Server> server_;
  std::set<std::string> stored_, gone_;
};

}  // namespace
}  // namespace velto

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words.size() == 5) velto::produceClicks(words[1], words[2], words[3], words[4]);
  const int times = words.empty() ? 1000 : std::stoi(words[0]);
  const unsigned long seed = words.size() < 2 ? std::random_device()() : std::stoul(words[1]);
  velto::Killer killer(static_cast<unsigned>(seed));
  for (int launch = 0; launch <= times; ++launch) killer.launchAndKill(launch, launch == times);
  const bool good = killer.report(times);
  if (!good) std::cerr << "kill test: the seed was " << seed << '\n';
  return good ? 0 : 1;
}
