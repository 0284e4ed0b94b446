// Faults below SQLite, at the n-th call of a kind: its file system through the interface for those, its memory through
// the one for allocators. Made before main, as SQLite wants to be told before its first use. One thread.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstring>
#include <map>

namespace velto::test {

// What fails, in SQLite's words. ShortWrite leaves half of what was to be written.
enum class Fault {
  WriteError,
  Full,
  ShortWrite,
  ReadError,
  SyncError,
  TruncateError,
  LockError,
  MapError,
  OpenError,
  Memory
};
inline constexpr std::array allFaults{
    Fault::WriteError,    Fault::Full,      Fault::ShortWrite, Fault::ReadError, Fault::SyncError,
    Fault::TruncateError, Fault::LockError, Fault::MapError,   Fault::OpenError, Fault::Memory};

class Faults {
 public:
  // From now on the n-th call (from 1) of that kind fails; for ever: also all that come after it.
  static void arm(Fault kind, int n, bool forEver) { plan() = {kind, n, forEver, false, true}; }
  // Whether anything has failed since.
  static bool disarm() {
    plan().armed = false;
    return plan().came;
  }
  static void install() {
    static sqlite3_mem_methods memory;
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory());
    memory = realMemory();
    memory.xMalloc = [](int size) { return fails(Fault::Memory) ? nullptr : realMemory().xMalloc(size); };
    memory.xRealloc = [](void* old, int size) {
      return fails(Fault::Memory) ? nullptr : realMemory().xRealloc(old, size);
    };
    sqlite3_config(SQLITE_CONFIG_MALLOC, &memory);
    realSystem() = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs system = *realSystem();
    system.zName = "faulty";
    system.xOpen = open;
    sqlite3_vfs_register(&system, 1);
  }

 private:
  struct Plan {
    Fault kind = {};
    int left = 0;
    bool forEver = false, came = false, armed = false;
  };
  // A file's methods with faults in them, and those that do the work.
  struct Methods {
    sqlite3_io_methods faulty;
    const sqlite3_io_methods* real;
  };

  static Plan& plan() {
    static Plan instance;
    return instance;
  }
  static sqlite3_mem_methods& realMemory() {
    static sqlite3_mem_methods instance;
    return instance;
  }
  static sqlite3_vfs*& realSystem() {
    static sqlite3_vfs* instance = nullptr;
    return instance;
  }
  static bool fails(Fault kind) {
    auto& now = plan();
    if (!now.armed || now.kind != kind || --now.left > 0 || (now.left < 0 && !now.forEver)) return false;
    return now.came = true;
  }
  static const sqlite3_io_methods* real(sqlite3_file* file) {
    return reinterpret_cast<const Methods*>(file->pMethods)->real;
  }
  static int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 at) {
    if (fails(Fault::WriteError)) return SQLITE_IOERR_WRITE;
    if (fails(Fault::Full)) return SQLITE_FULL;
    if (!fails(Fault::ShortWrite)) return real(file)->xWrite(file, bytes, size, at);
    real(file)->xWrite(file, bytes, size / 2, at);
    return SQLITE_FULL;
  }
  static int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    if (fails(Fault::OpenError)) {
      file->pMethods = nullptr;
      return SQLITE_CANTOPEN;
    }
    const int result = realSystem()->xOpen(realSystem(), name, file, flags, outFlags);
    if (!file->pMethods) return result;
    static std::map<const sqlite3_io_methods*, Methods> all;
    auto& [faulty, real] = all[file->pMethods];
    real = file->pMethods;
    faulty = *real;
    faulty.xWrite = write;
    faulty.xRead = [](sqlite3_file* from, void* bytes, int size, sqlite3_int64 at) {
      return fails(Fault::ReadError) ? SQLITE_IOERR_READ : Faults::real(from)->xRead(from, bytes, size, at);
    };
    faulty.xSync = [](sqlite3_file*, int) {  // the machine's own disk is spared
      return fails(Fault::SyncError) ? SQLITE_IOERR_FSYNC : SQLITE_OK;
    };
    faulty.xTruncate = [](sqlite3_file* of, sqlite3_int64 size) {
      return fails(Fault::TruncateError) ? SQLITE_IOERR_TRUNCATE : Faults::real(of)->xTruncate(of, size);
    };
    faulty.xLock = [](sqlite3_file* of, int how) {
      return fails(Fault::LockError) ? SQLITE_IOERR_LOCK : Faults::real(of)->xLock(of, how);
    };
    faulty.xShmMap = [](sqlite3_file* of, int page, int size, int extend, void volatile** map) {
      return fails(Fault::MapError) ? SQLITE_IOERR_SHMMAP
                                    : Faults::real(of)->xShmMap(of, page, size, extend, map);
    };
    file->pMethods = &faulty;
    return result;
  }
};

}  // namespace velto::test
