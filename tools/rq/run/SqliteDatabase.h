#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

/// What SQLite says is wrong.
class SqliteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A statement that is beyond what SQLite can do: one with too many parts, or parts too deep in each other.
class SqliteLimitError : public SqliteError {
 public:
  using SqliteError::SqliteError;
};

/// A value of SQLite: null, an integer, a real or a text. Bytes come as the text of their digits, x'..'.
using SqliteValue = std::variant<std::monostate, std::int64_t, double, std::string>;
using SqliteRow = std::vector<SqliteValue>;

/// The result of a query: names of columns, of which several may have one, and rows.
struct SqliteRows {
  std::vector<std::string> m_columns;
  std::vector<SqliteRow> m_rows;
};

class SqliteStatement;

/// A connection to a database file, on which LIKE tells letter cases apart. It knows functions that SQLite
/// lacks: stddev_pop, stddev_samp and median, and those of numbers where the library was built without them.
///
/// All operations raise SqliteError, and std::runtime_error for what is no single statement, or lacks a parameter. A
/// connection belongs to one thread at a time.
class SqliteDatabase {
 public:
  enum class Access { kReadOnly, kReadWrite };

  /// Opens a file. For writing it is made if it is not there; ":memory:" is a database of its own.
  SqliteDatabase(const std::string& file, Access access);

  /// All rows of one statement. Parameter n is the n-th value, whatever their order in the text; one without a value
  /// is an error.
  SqliteRows Query(const std::string& sql, std::span<const SqliteValue> parameters = {});
  /// Runs any number of statements.
  void Execute(const std::string& sql);
  /// Lets the tables of the file also go by that schema. It must be a file.
  void AddSchema(const std::string& name);
  /// One that is run often. The connection must outlive it.
  SqliteStatement Prepare(const std::string& sql);

 private:
  struct Closer {
    void operator()(sqlite3* pDatabase) const;
  };

  std::string m_file;
  std::unique_ptr<sqlite3, Closer> m_pDatabase;
};

/// A statement with parameters.
class SqliteStatement {
 public:
  void Bind(int number, const SqliteValue& value);
  /// Whether there is a row.
  bool Step();
  SqliteValue GetValue(int column) const;
  int GetNumColumns() const;
  std::string GetColumnName(int column) const;
  /// Runs it with those values and forgets its rows.
  void Run(std::span<const SqliteValue> values);

 private:
  friend class SqliteDatabase;
  struct Finalizer {
    void operator()(sqlite3_stmt* pStatement) const;
  };

  SqliteStatement(sqlite3* pDatabase, const std::string& sql);
  void BindParameters(std::span<const SqliteValue> values);
  void Check(int result) const;

  sqlite3* m_pDatabase;
  std::unique_ptr<sqlite3_stmt, Finalizer> m_pStatement;
};
