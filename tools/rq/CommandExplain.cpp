#include "rq/CommandExplain.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/CommandLine.h"
#include "rq/QueryStages.h"
#include "rq/TreeDot.h"
#include "rq/TreeJson.h"
#include "rq/io/BlockWriter.h"

namespace {

constexpr const char* kFooter =
    R"help(QUERY is one SELECT, or a set operation of such, over the tables of the model;
"-" reads it from the standard input. Without --model it is over the built-in
one, a retail star, which is also in examples/retail.json.

The exit status is 0, 1 if the tree was found to be damaged, or 2 if there was
an error.

Examples:
  rq explain "SELECT category, brand FROM product WHERE list_price > 100"
  rq explain --stages --file examples/queries/chained_outer_joins.sql
  rq explain --format dot --file query.sql | dot -Tsvg > query.svg)help";

}  // namespace

void CommandExplain::Define(CLI::App& app) {
  m_input.Define(app);
  app.add_option("--format", m_format, "text: the text form; json: nested objects; dot: a graph for Graphviz")
      ->check(CLI::IsMember({"text", "json", "dot"}))
      ->type_name("FORMAT")
      ->capture_default_str();
  app.add_flag("--ids", m_bIds, "Show the identities of nodes, and with them the links of joins");
  app.add_flag("--one-line", m_bOneLine, "Text on one line");
  app.add_flag("--stages", m_bStages, "Show for each block what stands between its text and its tree");
  app.footer(kFooter);
}

int CommandExplain::Run(CommandStreams& streams) {
  if (m_format != "text" && (m_bOneLine || m_bStages)) {
    throw UsageError("--one-line and --stages go with --format text");
  }
  MemoryGateway gateway;
  QueryStages stages(gateway);
  const std::optional<BuiltList> built = m_input.Build(GetTexts(), gateway, streams, m_bStages ? &stages : nullptr);
  if (!built) return kExitError;

  std::string output;
  if (m_format == "json") {
    output = WriteTreeJson(*built->m_list, &gateway, {.m_bIds = m_bIds});
  } else if (m_format == "dot") {
    output = WriteTreeDot(*built->m_list, &gateway, {.m_bIds = m_bIds});
  } else {
    if (m_bStages) output = stages.GetText() + "\n== request tree\n";
    const std::string tree = RqDumpout::StringFrom(*built->m_list, false, !m_bOneLine, &gateway, m_bIds).ToUTF8();
    output += tree.substr(std::min(tree.find_first_not_of(" \n"), tree.size()));
    output += '\n';
  }
  BlockWriter writer(streams.m_out);
  writer.Append(output);
  writer.Flush();
  return PlanChecker::CheckPlan(&gateway, *built->m_list) == 0 ? kExitSuccess : kExitNo;
}
