// velto-track: tells people where their installs and clicks are that the tracking server has not acknowledged
// yet. It reads an application's store (velto/gtk/DefaultsFile) and never changes it, also while the
// application runs.
#include "velto/gtk/store/Database.h"

#include <glib.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "common/CommandLine.h"
#include "sandbox/TrackIdentifier.h"

namespace {

using velto::gtk::Database;
using velto::gtk::Statement;
using velto::sandbox::TrackIdentifier;
using velto::tools::UsageError;

struct Event {
  std::string type;  // as it stands in the store
  std::string identifier;
  std::optional<TrackIdentifier> track;  // nothing for an identifier that cannot be read
  std::vector<std::string> problems;
};

// --- the store

// SQLite's readers, too, make files beside a database with a log; where nobody has it open there is no log,
// and the file can be read as it stands.
std::string readingURI(const std::filesystem::path& file) {
  const std::unique_ptr<char, decltype(&g_free)> uri(
      g_filename_to_uri(std::filesystem::absolute(file).c_str(), nullptr, nullptr), g_free);
  if (!uri) throw UsageError(file.string() + ": not a file name");
  return std::string(uri.get()) +
         (std::filesystem::exists(file.string() + "-wal") ? "?mode=ro" : "?immutable=1");
}

std::vector<Event> readEvents(std::filesystem::path file) {
  std::error_code fault;
  if (std::filesystem::is_directory(file, fault)) file /= "defaults.sqlite3";
  if (!std::filesystem::is_regular_file(file, fault)) throw UsageError(file.string() + ": no such store");
  std::vector<Event> events;
  try {
    const Database database(readingURI(file), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    Statement entries(database, "SELECT content, name FROM entry WHERE key = 'kVeltoTrackIdentifierKey'");
    entries.forEachRow([&](const Statement& row) {
      Event event{row.text(0), row.text(1), {}, {}};
      event.track = velto::sandbox::readTrackIdentifier(event.identifier, event.problems);
      events.push_back(std::move(event));
    });
  } catch (const velto::gtk::DatabaseError& error) {
    throw UsageError(file.string() + ": " + error.what());
  }
  std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) {
    return (a.track ? a.track->time : "") < (b.track ? b.track->time : "");
  });
  return events;
}

// --- the commands

std::string dateOf(const std::string& seconds) {
  char* end = nullptr;
  const long long number = std::strtoll(seconds.c_str(), &end, 10);
  const auto time = static_cast<std::time_t>(number);  // of 32 bits on some machines
  std::tm date{};
  char text[64];
  if (seconds.empty() || *end || time != number || !gmtime_r(&time, &date) ||
      !std::strftime(text, sizeof text, "%FT%TZ", &date))
    return "at an unknown time";
  return text;
}

// What came from a page must not move the terminal's cursor.
std::string printable(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  return text;
}

void list(const std::vector<Event>& events) {
  for (const Event& event : events) {
    std::cout << printable(event.type) << "  ";
    if (event.track)
      std::cout << dateOf(event.track->time) << "  " << printable(event.track->arguments) << '\n';
    else
      std::cout << "cannot be read: " << event.problems.front() << '\n';
  }
}

void count(const std::vector<Event>& events) {
  std::map<std::string, size_t> counts{{"click", 0}, {"install", 0}};
  for (const Event& event : events) ++counts[event.type];
  for (const auto& [type, number] : counts) std::cout << printable(type) << ' ' << number << '\n';
  std::cout << "total " << events.size() << '\n';
}

void exportAll(const std::vector<Event>& events) {
  for (const Event& event : events) {
    nlohmann::ordered_json line{{"type", event.type}};
    if (const auto& track = event.track) {
      line["time"] = track->time;
      line["os"] = track->os;
      line["version"] = track->version;
      line["device"] = track->device;
      line["arguments"] = track->arguments;
    }
    if (!event.problems.empty()) line["problems"] = event.problems;
    line["identifier"] = event.identifier;
    std::cout << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
  }
}

int run(const std::vector<std::string>& words) {
  void (*command)(const std::vector<Event>&) = nullptr;
  std::filesystem::path store;
  const auto setStore = [&](const std::filesystem::path& path) {
    if (!store.empty()) throw UsageError("--application and --store: one of them, once");
    store = path;
  };
  velto::tools::CommandLine line(
      "velto-track", "tells which installs and clicks wait to be acknowledged by the tracking server");
  line.command("list", "one line for each: type, time, what it is about",
               [&](const auto&) { command = list; });
  line.command("count", "how many there are of each type", [&](const auto&) { command = count; });
  line.command("export", "one JSON object a line, with the decoded fields and the identifier itself",
               [&](const auto&) { command = exportAll; });
  line.option("--application", "IDENTIFIER", "the store of that application, such as org.example.player",
              [&](const auto& name) { setStore(std::filesystem::path(g_get_user_data_dir()) / name); });
  line.option("--store", "FILE", "a store elsewhere (defaults.sqlite3, or the folder it is in)", setStore,
              velto::tools::Word::Value::File);
  line.note("It only reads, also while the application runs.");
  if (!line.read(words)) return 0;
  if (store.empty()) throw UsageError("needs --application or --store (see --help)");
  command(readEvents(store));
  return 0;
}

}  // namespace

int main(int count, char** words) {
  return velto::tools::runTool("velto-track", count, words, run);
}
