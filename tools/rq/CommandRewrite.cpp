#include "rq/CommandRewrite.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "Host/BaseStringUtil.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"
#include "rq/CommandLine.h"
#include "rq/io/BlockWriter.h"
#include "rq/rewrite/RewriteRefusal.h"
#include "rq/rewrite/SplitBlock.h"
#include "rq/rewrite/SummaryAnswer.h"
#include "rq/sql/SqlTarget.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr std::size_t kMaxQuotedCharacters = 40;

constexpr const char* kSplitFooter =
    R"help(The inner block groups by the columns of the query's own GROUP BY and by those of
--grain; the outer one groups its rows. The columns of the grain are expressions
over the tables of the query, by the names that they have there.

The exit status is 0; 1 if the query cannot be split, and then standard error
names the aggregate and the reason, or if the tree was found to be damaged; or 2
if there was an error.

Examples:
  rq split --grain product_id "SELECT date_id, AVG(amount) FROM sales GROUP BY date_id"
  rq split --grain month_id --format sql "SELECT year_id, COUNT(*) FROM calendar GROUP BY year_id")help";

constexpr const char* kAnswerFooter =
    R"help(The query is over logical tables of the model. TABLE is a physical table that is
a source of one of them and less detailed than another source. Aggregates are
rewritten onto its columns, by the rules of the model's measures.

The exit status is 0; 1 if the table does not have the answer, and then standard
error names the aggregate or the column that has no mapping, or if the tree was
found to be damaged; or 2 if there was an error.

Examples:
  rq answer --from sales_month_category --format sql \
    'SELECT "Times"."YearKey", SUM("Turnover"."Amount") FROM "Turnover", "Times" GROUP BY 1')help";

}  // namespace

void CommandRewrite::Define(CLI::App& app) {
  m_input.Define(app);
  m_format.Define(app);
  DefineOwn(app);
}

int CommandRewrite::Run(CommandStreams& streams) {
  MemoryGateway gateway;
  std::optional<BuiltList> built = m_input.Build(GetTexts(), gateway, streams, GetObserver());
  if (!built) return kExitError;
  try {
    if (!built->m_list->IsRqList()) throw RewriteRefusal("the query is no single block");
    Rewrite(static_cast<RqList&>(*built->m_list), gateway);
    BlockWriter writer(streams.m_out);
    writer.Append(m_format.Write(*built, gateway));
    writer.Flush();
    return PlanChecker::CheckPlan(&gateway, *built->m_list) == 0 ? kExitSuccess : kExitNo;
  } catch (const RewriteRefusal& refusal) {
    streams.m_err << "rq: " << refusal.what() << '\n';
  } catch (const SqlWriteError& error) {
    streams.m_err << "rq: " << error.what() << '\n';
  }
  return kExitNo;
}

// ---------------------------------------------------------------------------------------------------------------------
// split

void CommandSplit::DefineOwn(CLI::App& app) {
  app.add_option("--grain", m_grain, "The columns that the inner block groups by, too")
      ->required()
      ->type_name("COLUMNS");
  app.footer(kSplitFooter);
}

QueryObserver* CommandSplit::GetObserver() {
  m_reader.emplace(m_grain);
  return &*m_reader;
}

void CommandSplit::Rewrite(RqList& block, MemoryGateway& gateway) {
  SplitBlock(block, m_reader->Take("--grain"), NextTableNumber(block), &gateway);
}

// ---------------------------------------------------------------------------------------------------------------------
// answer

void CommandAnswer::DefineOwn(CLI::App& app) {
  app.add_option("--from", m_from, "The summary table")->required()->type_name("TABLE");
  app.footer(kAnswerFooter);
}

void CommandAnswer::Rewrite(RqList& block, MemoryGateway& gateway) {
  const RepositoryNames names(gateway);
  const KXStringVector path = SplitQualifiedName(BaseStringUtil::StdStringToString(m_from));
  if (path.empty()) {
    throw std::runtime_error("--from: '" + ForMessage(m_from, kMaxQuotedCharacters) + "' is no name of a table");
  }
  const NameLookup table = names.FindPhysicalTable(path);
  if (!table) throw std::runtime_error("--from: " + table.m_cause.ToUTF8());
  SummaryAnswer(gateway, table.m_id).Answer(block, NextTableNumber(block));
}
