#include "rq/run/SqliteDatabase.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

#include "rq/run/SqliteFunctions.h"

namespace {

/// Parts of the messages for what is too much; the codes of the errors do not tell.
constexpr auto kLimitMessages = std::to_array<std::string_view>(
    {"too many terms in", "too many columns in", "too many FROM clause terms", "too many SQL variables",
     "too many references to", "parser stack overflow", "Expression tree is too large", "tables in a join", "too big"});

[[noreturn]] void Fail(sqlite3* pDatabase, const std::string& what) {
  throw SqliteError(what + ": " + (pDatabase ? sqlite3_errmsg(pDatabase) : "there is not enough memory"));
}

/// Whether there is no statement in it: nothing but blanks, comments and semicolons.
bool IsEmpty(sqlite3* pDatabase, const char* sql) {
  while (*sql) {
    sqlite3_stmt* pStatement = nullptr;
    const char* pTail = nullptr;
    const int result = sqlite3_prepare_v2(pDatabase, sql, -1, &pStatement, &pTail);
    sqlite3_finalize(pStatement);
    if (result != SQLITE_OK || pStatement) return false;
    sql = pTail;
  }
  return true;
}

/// The number in ?1 or $1; 0 for another name.
int NumberOf(const char* parameterName) {
  int number = 0;
  if (parameterName && *parameterName) {
    std::from_chars(parameterName + 1, parameterName + std::strlen(parameterName), number);
  }
  return number;
}

std::string HexText(const void* pBytes, int size) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text = "x'";
  const auto* const bytes = static_cast<const unsigned char*>(pBytes);
  for (int i = 0; i < size; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text + '\'';
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// SqliteDatabase

void SqliteDatabase::Closer::operator()(sqlite3* pDatabase) const { sqlite3_close_v2(pDatabase); }

SqliteDatabase::SqliteDatabase(const std::string& file, Access access) : m_file(file) {
  const int flags = access == Access::kReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  sqlite3* pDatabase = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &pDatabase, flags, nullptr);
  m_pDatabase.reset(pDatabase);
  if (result != SQLITE_OK) Fail(pDatabase, file);
  if (AddSqliteFunctions(pDatabase) != SQLITE_OK) Fail(pDatabase, file);
  Execute("PRAGMA case_sensitive_like = ON");
}

SqliteStatement SqliteDatabase::Prepare(const std::string& sql) { return SqliteStatement(m_pDatabase.get(), sql); }

SqliteRows SqliteDatabase::Query(const std::string& sql, std::span<const SqliteValue> parameters) {
  SqliteStatement statement = Prepare(sql);
  statement.BindParameters(parameters);
  SqliteRows rows;
  const int numColumns = statement.GetNumColumns();
  for (int i = 0; i < numColumns; ++i) rows.m_columns.push_back(statement.GetColumnName(i));
  while (statement.Step()) {
    SqliteRow& row = rows.m_rows.emplace_back();
    for (int i = 0; i < numColumns; ++i) row.push_back(statement.GetValue(i));
  }
  return rows;
}

void SqliteDatabase::Execute(const std::string& sql) {
  if (sqlite3_exec(m_pDatabase.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    Fail(m_pDatabase.get(), m_file);
  }
}

void SqliteDatabase::AddSchema(const std::string& name) {
  SqliteStatement statement = Prepare("ATTACH ?1 AS " + name);
  statement.Run(std::vector<SqliteValue>{m_file});
}

// ---------------------------------------------------------------------------------------------------------------------
// SqliteStatement

void SqliteStatement::Finalizer::operator()(sqlite3_stmt* pStatement) const { sqlite3_finalize(pStatement); }

SqliteStatement::SqliteStatement(sqlite3* pDatabase, const std::string& sql) : m_pDatabase(pDatabase) {
  sqlite3_stmt* pStatement = nullptr;
  const char* pTail = nullptr;
  const int result = sqlite3_prepare_v2(pDatabase, sql.c_str(), -1, &pStatement, &pTail);
  m_pStatement.reset(pStatement);
  if (result != SQLITE_OK) {
    const std::string_view message = sqlite3_errmsg(pDatabase);
    const auto isIn = [message](std::string_view part) { return message.find(part) != std::string_view::npos; };
    if (std::ranges::any_of(kLimitMessages, isIn)) throw SqliteLimitError(std::string(message));
  }
  Check(result);
  if (!pStatement) throw std::runtime_error("there is no statement");
  if (!IsEmpty(pDatabase, pTail)) throw std::runtime_error("there is more than one statement");
}

void SqliteStatement::Check(int result) const {
  if (result != SQLITE_OK) Fail(m_pDatabase, "SQLite");
}

void SqliteStatement::Bind(int number, const SqliteValue& value) {
  struct Binder {
    sqlite3_stmt* m_pStatement;
    int m_number;
    int operator()(std::monostate) const { return sqlite3_bind_null(m_pStatement, m_number); }
    int operator()(std::int64_t integer) const { return sqlite3_bind_int64(m_pStatement, m_number, integer); }
    int operator()(double real) const { return sqlite3_bind_double(m_pStatement, m_number, real); }
    int operator()(const std::string& text) const {
      return sqlite3_bind_text(m_pStatement, m_number, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    }
  };
  Check(std::visit(Binder{m_pStatement.get(), number}, value));
}

void SqliteStatement::BindParameters(std::span<const SqliteValue> values) {
  const int numParameters = sqlite3_bind_parameter_count(m_pStatement.get());
  for (int i = 1; i <= numParameters; ++i) {
    const char* const pName = sqlite3_bind_parameter_name(m_pStatement.get(), i);
    const int number = NumberOf(pName);
    if (!pName) continue;  // a gap in the numbers
    if (number < 1 || static_cast<std::size_t>(number) > values.size()) {
      throw std::runtime_error("the parameter " + (number < 1 ? pName : '$' + std::to_string(number)) +
                               " has no value");
    }
    Bind(i, values[static_cast<std::size_t>(number) - 1]);
  }
}

bool SqliteStatement::Step() {
  const int result = sqlite3_step(m_pStatement.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) Fail(m_pDatabase, "SQLite");
  return result == SQLITE_ROW;
}

int SqliteStatement::GetNumColumns() const { return sqlite3_column_count(m_pStatement.get()); }

std::string SqliteStatement::GetColumnName(int column) const {
  const char* const pName = sqlite3_column_name(m_pStatement.get(), column);
  return pName ? pName : "";
}

SqliteValue SqliteStatement::GetValue(int column) const {
  sqlite3_stmt* const pStatement = m_pStatement.get();
  switch (sqlite3_column_type(pStatement, column)) {
    case SQLITE_INTEGER:
      return std::int64_t{sqlite3_column_int64(pStatement, column)};
    case SQLITE_FLOAT:
      return sqlite3_column_double(pStatement, column);
    case SQLITE_TEXT: {
      const auto* const pText = reinterpret_cast<const char*>(sqlite3_column_text(pStatement, column));
      return std::string(pText, static_cast<std::size_t>(sqlite3_column_bytes(pStatement, column)));
    }
    case SQLITE_BLOB: {
      const void* const pBytes = sqlite3_column_blob(pStatement, column);
      return HexText(pBytes, sqlite3_column_bytes(pStatement, column));
    }
    default:
      return std::monostate();
  }
}

void SqliteStatement::Run(std::span<const SqliteValue> values) {
  for (std::size_t i = 0; i < values.size(); ++i) Bind(static_cast<int>(i) + 1, values[i]);
  while (Step()) {
  }
  Check(sqlite3_reset(m_pStatement.get()));
}
