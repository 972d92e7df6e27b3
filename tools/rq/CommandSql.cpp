#include "rq/CommandSql.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "Host/BaseStringUtil.h"
#include "rq/TargetDatabase.h"
#include "rq/io/BlockWriter.h"
#include "rq/sql/SqlTarget.h"
#include "rq/sql/SqlWriter.h"

namespace {

constexpr const char* kFooter =
    R"help(QUERY is one SELECT, or a set operation of such, over physical tables of the
model. NAME is a database of the model or, if the model has none of that name, a
preset: ansi, duckdb, postgresql or sqlite. What it cannot do by its features is
written by other means where these give the same.

The exit status is 0; 1 if the database cannot do what the query needs; or 2 if
there was an error.

Examples:
  rq sql --target sqlite "SELECT brand FROM product GROUP BY ROLLUP (brand)"
  rq sql --target postgresql --file examples/queries/nested_with.sql)help";

}  // namespace

void CommandSql::Define(CLI::App& app) {
  m_input.Define(app);
  app.add_option("--target", m_target, "The database, or a preset")->required()->type_name("NAME");
  app.footer(kFooter);
}

int CommandSql::Run(CommandStreams& streams) {
  MemoryGateway gateway;
  const std::optional<BuiltList> built = m_input.Build(GetTexts(), gateway, streams);
  if (!built) return kExitError;
  const SqlTarget target(FindTargetDatabase(BaseStringUtil::StdStringToString(m_target), gateway), gateway);
  try {
    const std::string sql = SqlWriter(target).Write(*built->m_list, built->m_names);
    BlockWriter writer(streams.m_out);
    writer.Append(sql + '\n');
    writer.Flush();
  } catch (const SqlWriteError& error) {
    streams.m_err << "rq: " << error.what() << '\n';
    return kExitNo;
  }
  return kExitSuccess;
}
