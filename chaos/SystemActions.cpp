// What the system does: clocks, the store, background and lock, the end of the process.
#include <array>

#include "World.h"

namespace velto::chaos {
namespace {

using namespace std::chrono_literals;

void storeFails(World& world, bool writes, bool reads) {
  world.store->failWrites(writes);
  world.store->failReads(reads);
  world.server.storeFails(writes);
}

void store(World& world, const Numbers& n) {
  switch (n[0]) {
    case 0:  // full, read-only, or locked by another process
      return storeFails(world, true, false);
    case 1:  // its medium is gone
      return storeFails(world, true, true);
    case 2:
      return world.store->breakFile();
    case 3:  // another process of the application writes
      if (!world.server.storeCanBeWritten()) return;
      return world.store->setEntry("kVeltoTrackIdentifierKey", "another's", "unknown");
    default:
      return storeFails(world, false, false);
  }
}

void jump(World& world, const Numbers& n) {
  static constexpr std::array<double, 6> by{-365 * 86400.0, -3600, -1, 3600, 365 * 86400.0, 1e11};
  auto& queue = world.system().mainQueue();
  const double wanted = queue.secondsSince1970() + by.at(static_cast<size_t>(n[0]));
  queue.setSecondsSince1970(std::max(0.0, wanted > 4e11 ? headless::VirtualQueue::defaultStart : wanted));
}

}  // namespace

std::vector<Action> systemActions() {
  return {
      {"time",
       160,
       {8},
       "time passes: a turn of the main loop to a minute",
       [](World& world, const Numbers& n) {
         static constexpr std::array<std::chrono::milliseconds, 8> all{0ms, 16ms,   110ms, 350ms,
                                                                       1s,  1500ms, 11s,   1min};
         world.moveTime(all.at(static_cast<size_t>(n[0])));
       }},
      {"clock-jumps", 3, {6}, "somebody sets the clock: a year back to three thousand years ahead", jump},
      {"suspend",
       2,
       {2},
       "the device sleeps for an hour or a week",
       [](World& world, const Numbers& n) { world.system().mainQueue().suspend(n[0] == 0 ? 1h : 7 * 24h); }},
      {"stall",
       2,
       {3},
       "the process is held up for a second, a minute or a week",
       [](World& world, const Numbers& n) {
         static constexpr std::array<std::chrono::seconds, 3> all{1s, 60s, 7 * 24h};
         world.system().mainQueue().stall(all.at(static_cast<size_t>(n[0])));
         world.moveTime(0s);
       }},
      {"front",
       4,
       {2},
       "the application goes to the background, or comes back",
       [](World& world, const Numbers& n) {
         auto& application = world.system().application();
         n[0] == 0 ? application.enterBackground() : application.enterForeground();
         world.server.applicationInFront(n[0] == 1);
       }},
      {"lock",
       2,
       {2},
       "the device is locked, or opened",
       [](World& world, const Numbers& n) { world.system().application().setLocked(n[0] == 1); }},
      {"store",
       10,
       {8},
       "the store cannot be written, cannot be read, is broken, is written by another, is well",
       store},
      {"store-fails-after",
       4,
       {16},
       "the store fails after so many calls",
       [](World& world, const Numbers& n) {
         world.store->failWritesAfter(static_cast<size_t>(n[0]));
         world.server.storeFails(true);
       }},
      {"store-lost",
       1,
       {},
       "the application is killed, and its store is broken when it starts again",
       [](World& world, const Numbers&) {
         world.server.storeWasLost();
         world.loseStore = true;
         world.relaunch(World::End::Killed);
       }},
      {"relaunch",
       4,
       {3},
       "the application is killed, or ends, and starts again",
       [](World& world, const Numbers& n) { world.relaunch(static_cast<World::End>(n[0])); }},
  };
}

}  // namespace velto::chaos
