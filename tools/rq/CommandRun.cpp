#include "rq/CommandRun.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <ostream>

#include "rq/io/BlockWriter.h"
#include "rq/rewrite/RewriteRefusal.h"
#include "rq/rewrite/Rewrites.h"
#include "rq/run/RowWriter.h"
#include "rq/run/RunDatabase.h"
#include "rq/run/SqliteDatabase.h"
#include "rq/sample/SampleFile.h"
#include "rq/sql/SqlTarget.h"
#include "rq/sql/SqlWriter.h"

namespace {

constexpr const char* kFooter =
    R"help(The query is written as SQL for SQLite, as "rq sql --target sqlite" shows it but
for deviations and medians, of which rq brings functions, and run there. Without
--db that is on a sample of the built-in model, which is made at first use, in
$XDG_CACHE_HOME/rq or ~/.cache/rq, and then only read. LIKE tells letter cases
apart; dates and times are texts; CURRENT_DATE and the like are in UTC.

The exit status is 0; 1 if SQLite cannot do what the query needs, or a rewriting
cannot be done; or 2 if there was an error.

Examples:
  rq run "SELECT city, country FROM store ORDER BY 2, 1"
  rq run --rewrite cnf --rewrite bytes --file examples/queries/neighbours.sql
  rq run --format csv --param Germany --file query.sql)help";

/// An integer or a real where the text reads as one; NULL for the word.
SqliteValue ReadParameter(const std::string& text) {
  const char* const end = text.data() + text.size();
  std::int64_t integer = 0;
  if (const auto result = std::from_chars(text.data(), end, integer); result.ec == std::errc() && result.ptr == end) {
    return integer;
  }
  double real = 0;
  if (const auto result = std::from_chars(text.data(), end, real);
      result.ec == std::errc() && result.ptr == end && std::isfinite(real)) {
    return real;
  }
  if (text == "NULL") return std::monostate();
  return text;
}

}  // namespace

void CommandRun::Define(CLI::App& app) {
  m_input.Define(app);
  app.add_option("--db", m_db, "A database file of SQLite, which is only read")->type_name("FILE");
  app.add_option("--format", m_format, "table: to read; csv; json: an array of objects")
      ->check(CLI::IsMember({"table", "csv", "json"}))
      ->type_name("FORMAT")
      ->capture_default_str();
  app.add_option("--param", m_parameters, "The value of $1, then that of $2, ...: a number, NULL or a text")
      ->allow_extra_args(false)
      ->type_name("VALUE");
  app.add_option("--rewrite", m_rewrites,
                 "Rewrite the request first; may stand more than once, and works in that order:\n" + RewriteHelp())
      ->allow_extra_args(false)
      ->type_name("NAME");
  app.footer(kFooter);
}

int CommandRun::Run(CommandStreams& streams) {
  MemoryGateway gateway;
  Rewrites rewrites(m_rewrites);
  std::optional<BuiltList> built = m_input.Build(GetTexts(), gateway, streams, &rewrites.GetObserver());
  if (!built) return kExitError;
  std::string sql;
  try {
    built->m_list = rewrites.Apply(built->m_list, gateway);
    const SqlTarget target(MakeRunDatabase(gateway), gateway);
    sql = SqlWriter(target).Write(*built->m_list, built->m_names);
  } catch (const SqlWriteError& error) {
    streams.m_err << "rq: " << error.what() << '\n';
    return kExitNo;
  } catch (const RewriteRefusal& refusal) {
    streams.m_err << "rq: " << refusal.what() << '\n';
    return kExitNo;
  }
  std::vector<SqliteValue> parameters;
  for (const std::string& parameter : m_parameters) parameters.push_back(ReadParameter(parameter));
  if (m_db && m_db->empty()) throw std::runtime_error("--db takes the name of a file");
  SqliteDatabase database(m_db ? *m_db : GetSampleFile(), SqliteDatabase::Access::kReadOnly);
  SqliteRows rows;
  try {
    rows = database.Query(sql, parameters);
  } catch (const SqliteLimitError& error) {
    streams.m_err << "rq: SQLite cannot run the query: " << error.what() << '\n';
    return kExitNo;
  } catch (const SqliteError& error) {
    if (!m_db) throw;
    throw SqliteError(*m_db + ": " + error.what());
  }
  BlockWriter writer(streams.m_out);
  writer.Append(m_format == "csv" ? RowsCsv(rows) : m_format == "json" ? RowsJson(rows) : RowsTable(rows));
  writer.Flush();
  return kExitSuccess;
}
