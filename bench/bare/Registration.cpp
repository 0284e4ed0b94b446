// What a registration cannot do without: a new SQLite file with a write-ahead log, one table, and eight
// writes, each acknowledged on its own. Like the library it does not wait for the disk: what is acknowledged
// outlives the process, not a loss of power in the same moment.
//
//   usage: velto-bench-bare-registration FOLDER
#include <sqlite3.h>

#include <cstdio>
#include <string>

#include "Measure.h"

namespace {

constexpr int writes = 8;

bool run(sqlite3* database, const char* sql) {
  return sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool writeAll(sqlite3* database) {
  sqlite3_stmt* write = nullptr;
  bool fine = run(database, "PRAGMA synchronous = OFF") && run(database, "PRAGMA journal_mode = WAL") &&
              run(database, "CREATE TABLE value(key TEXT NOT NULL PRIMARY KEY, content) WITHOUT ROWID") &&
              run(database, "PRAGMA synchronous = NORMAL") &&
              sqlite3_prepare_v2(database, "INSERT OR REPLACE INTO value VALUES (?, ?)", -1, &write,
                                 nullptr) == SQLITE_OK;
  for (int i = 0; i < writes && fine; ++i) {
    const std::string key = "key " + std::to_string(i);
    sqlite3_bind_text(write, 1, key.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(write, 2, "value", -1, SQLITE_STATIC);
    fine = sqlite3_step(write) == SQLITE_DONE && sqlite3_reset(write) == SQLITE_OK;
  }
  sqlite3_finalize(write);
  return fine;
}

}  // namespace

int main(int count, char** words) {
  using namespace velto::bench;
  if (count != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", words[0]);
    return 2;
  }
  const double wall = wallMilliseconds();
  const double cpu = threadMilliseconds();
  sqlite3* database = nullptr;
  const std::string file = std::string(words[1]) + "/bare.sqlite";
  if (sqlite3_open(file.c_str(), &database) != SQLITE_OK || !writeAll(database)) {
    std::fprintf(stderr, "%s: %s\n", words[0], sqlite3_errmsg(database));
    return 1;
  }
  std::printf("{\"ms\": %.3f, \"cpuMs\": %.3f}\n", wallMilliseconds() - wall, threadMilliseconds() - cpu);
  sqlite3_close(database);
}
