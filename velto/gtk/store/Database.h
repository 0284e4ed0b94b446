// A SQLite connection and its statements as C++ values; failures become exceptions. Used by DefaultsFile,
// which sees to it that one thread at a time calls.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace velto::gtk {

class DatabaseError : public std::runtime_error {
 public:
  DatabaseError(int code, const std::string& text) : std::runtime_error(text), code_(code) {}
  // Whether the file's content is broken, so that trying again would not help.
  bool isCorruption() const;

 private:
  int code_;  // SQLite's primary result code
};

class Database {
 public:
  // Opens a file that exists. Throws DatabaseError.
  Database(const std::string& pathOrURI, int flags);

  void execute(const char* sql);
  sqlite3* handle() const { return connection_.get(); }

 private:
  struct Close {
    void operator()(sqlite3* connection) const;
  };
  std::unique_ptr<sqlite3, Close> connection_;
};

// A prepared statement. It is reset after each use: one that stays open would hold its view of the file.
class Statement {
 public:
  Statement(const Database& database, const char* sql);

  // Runs to the end. Values stand for the "?" in their order.
  template <class... Values>
  void run(const Values&... values) {
    forEachRow([](const Statement&) {}, values...);
  }

  // The row is read through the statement itself.
  template <class Row, class... Values>
  void forEachRow(const Row& row, const Values&... values) {
    const ResetAtEnd reset{*this};
    int index = 0;
    (bind(++index, values), ...);
    while (step()) row(*this);
  }

  bool isNull(int column) const;
  int64_t integer(int column) const;
  double number(int column) const;
  std::string text(int column) const;

 private:
  struct ResetAtEnd {
    Statement& statement;
    ~ResetAtEnd() { statement.reset(); }
  };
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };

  // Texts are not copied: they live until the reset.
  void bind(int index, std::string_view text);
  void bind(int index, double number);
  void bind(int index, int integer);
  void bind(int index, std::nullptr_t);
  bool step();
  void reset();

  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

// A write that happens as a whole or not at all.
class Transaction {
 public:
  explicit Transaction(Database& database) : database_(database) { database_.execute("BEGIN IMMEDIATE"); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();  // rolls back what was not committed
  void commit() { database_.execute("COMMIT"); }

 private:
  Database& database_;
};

}  // namespace velto::gtk
