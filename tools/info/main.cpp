// velto-info: the answer to "what does this library know about me?".
#include "velto/gtk/GtkPlatform.h"
#include "velto/gtk/services/UriPortal.h"
#include "velto/gtk/store/Database.h"
#include "velto/platform/foundation/JSON.h"

#include <gtk/gtk.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "Facts.h"
#include "common/CommandLine.h"
#include "common/Supervise.h"

namespace {

using velto::JSON;
using velto::info::Fact;

constexpr auto longestWait = std::chrono::seconds(2);

std::string temporaryFolder() {
  std::string path = std::filesystem::temp_directory_path() / "velto-info-XXXXXX";
  if (!mkdtemp(path.data())) throw std::runtime_error("no temporary folder can be made");
  return path;
}

// Looking changes nothing: the library works on a copy of the application's store.
void copyStore(const std::string& identifier, const std::string& folder) {
  const auto file = std::filesystem::path(g_get_user_data_dir()) / identifier / "defaults.sqlite3";
  if (!std::filesystem::is_regular_file(file)) throw std::runtime_error(file.string() + ": no such store");
  const velto::GText uri(g_filename_to_uri(file.c_str(), nullptr, nullptr));
  const bool isOpen = std::filesystem::exists(file.string() + "-wal");
  const velto::gtk::Database store(std::string(uri.get()) + (isOpen ? "?mode=ro" : "?immutable=1"),
                                   SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  velto::gtk::Statement(store, "VACUUM INTO ?").run(folder + "/defaults.sqlite3");
}

void printColumns(const std::vector<Fact>& facts) {
  const auto width = [](const std::string& text) {
    return static_cast<size_t>(g_utf8_strlen(text.c_str(), -1));
  };
  const auto printable = [](std::string text) {
    for (char& c : text)
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return text;
  };
  std::vector<std::vector<std::string>> rows{{"REQUEST", "NAME", "VALUE", "MEANING", "SOURCE", "GATE"}};
  for (const auto& fact : facts)
    rows.push_back({fact.request, fact.name, printable(fact.value.value_or("-")), fact.meaning, fact.source,
                    fact.gate.empty() ? "-" : fact.gate});
  constexpr size_t widest = 60;  // a longer value pushes the rest of its line aside
  std::vector<size_t> widths(rows[0].size());
  for (const auto& row : rows)
    for (size_t i = 0; i < row.size(); ++i)
      if (width(row[i]) <= widest) widths[i] = std::max(widths[i], width(row[i]));
  for (const auto& row : rows) {
    for (size_t i = 0; i + 1 < row.size(); ++i)
      std::cout << row[i] << std::string(std::max(widths[i], width(row[i])) - width(row[i]) + 2, ' ');
    std::cout << row.back() << '\n';
  }
}

void printJSON(const std::vector<Fact>& facts) {
  JSON::Array array;
  for (const auto& fact : facts)
    array.emplace_back(JSON::Object{{"request", fact.request},
                                    {"name", fact.name},
                                    {"value", fact.value ? JSON(*fact.value) : JSON()},
                                    {"meaning", fact.meaning},
                                    {"source", fact.source},
                                    {"gate", fact.gate.empty() ? JSON() : JSON(fact.gate)}});
  std::cout << velto::writeJSON(JSON(array), true).value() << '\n';
}

int run(const std::vector<std::string>& words) {
  std::string identifier;
  bool asJSON = false;
  velto::tools::CommandLine line("velto-info", "prints every value that Velto would send from this computer");
  line.option("--application", "IDENTIFIER", "as that application would send it, with its key and consents",
              [&](const auto& value) { identifier = value; });
  line.flag("--json", "one array of objects instead of columns", [&] { asJSON = true; });
  line.note(
      "Each value comes with its source and whose agreement it takes; \"-\" is one that would not be sent. "
      "What an "
      "application says with each request (settings, player) is named, but known to that application only.");
  line.note(
      "Requests: ad is the request for a banner, video that for a video ad, track the report of an install "
      "or a tap, and page "
      "is what a rich-media page is told.");
  if (!line.read(words)) return 0;
  const auto handed = velto::tools::handedDown();
  const std::string folder = handed ? *handed : temporaryFolder();
  if (!handed)
    velto::tools::supervise(folder, [&folder] {
      std::error_code ignored;
      std::filesystem::remove_all(folder, ignored);
    });
  if (!identifier.empty()) copyStore(identifier, folder);
  gtk_init_check();  // without a display the screen is a guess
  velto::gtk::install(
      {.applicationIdentifier = identifier.empty() ? "velto-info" : identifier, .dataFolder = folder});
  velto::gtk::GtkPlatform::installed()->systemBus().waitUntilRead(longestWait);
  if (velto::gtk::isSandboxed()) {
    bool waited = false;
    g_timeout_add(
        400, [](gpointer flag) -> gboolean { return !(*static_cast<bool*>(flag) = true); }, &waited);
    while (!waited) g_main_context_iteration(nullptr, TRUE);
  }
  const auto facts = velto::info::facts();
  velto::gtk::uninstall();
  asJSON ? printJSON(facts) : printColumns(facts);
  return 0;
}

}  // namespace

int main(int count, char** words) {
  return velto::tools::runTool("velto-info", count, words, run);
}
