// Thin cover over SQLite's C interface.
#include "velto/gtk/store/Database.h"

#include <sqlite3.h>

namespace velto::gtk {
namespace {

[[noreturn]] void fail(sqlite3* connection, int result) {
  const char* text = connection ? sqlite3_errmsg(connection) : sqlite3_errstr(result);
  throw DatabaseError(result & 0xff, std::string("the store: ") + text);
}

void check(sqlite3* connection, int result) {
  if (result != SQLITE_OK) fail(connection, result);
}

}  // namespace

bool DatabaseError::isCorruption() const {
  return code_ == SQLITE_CORRUPT || code_ == SQLITE_NOTADB;
}

Database::Database(const std::string& pathOrURI, int flags) {
  sqlite3* connection = nullptr;
  const int result = sqlite3_open_v2(pathOrURI.c_str(), &connection, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(connection);  // SQLite hands one out even when it fails
  check(connection, result);
}

void Database::Close::operator()(sqlite3* connection) const {
  sqlite3_close_v2(connection);
}

void Database::execute(const char* sql) {
  check(handle(), sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr));
}

Statement::Statement(const Database& database, const char* sql) {
  sqlite3_stmt* statement = nullptr;
  check(database.handle(),
        sqlite3_prepare_v3(database.handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
  statement_.reset(statement);
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

double Statement::number(int column) const {
  return sqlite3_column_double(statement_.get(), column);
}

std::string Statement::text(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  const int size = sqlite3_column_bytes(statement_.get(), column);
  return bytes ? std::string(bytes, static_cast<size_t>(size)) : std::string();
}

void Statement::bind(int index, std::string_view text) {
  // A view may be of nothing, which SQLite would take for NULL.
  check(sqlite3_db_handle(statement_.get()),
        sqlite3_bind_text64(statement_.get(), index, text.data() ? text.data() : "", text.size(),
                            SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::bind(int index, double number) {
  check(sqlite3_db_handle(statement_.get()), sqlite3_bind_double(statement_.get(), index, number));
}

void Statement::bind(int index, int integer) {
  check(sqlite3_db_handle(statement_.get()), sqlite3_bind_int(statement_.get(), index, integer));
}

void Statement::bind(int index, std::nullptr_t) {
  check(sqlite3_db_handle(statement_.get()), sqlite3_bind_null(statement_.get(), index));
}

bool Statement::step() {
  const int result = sqlite3_step(statement_.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) fail(sqlite3_db_handle(statement_.get()), result);
  return result == SQLITE_ROW;
}

void Statement::reset() {
  sqlite3_reset(statement_.get());  // tells the last step's error again
  sqlite3_clear_bindings(statement_.get());
}

Transaction::~Transaction() {
  if (!sqlite3_get_autocommit(database_.handle()))
    sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

}  // namespace velto::gtk
