#include <string_view>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

// The text of aggregates. Each Visit prints the operands, too, and so ends the descent.

void RqDumpout::PrintBreak(RqExprAggr& expr, int slot, std::wstring_view word) {
  RqExpr* const pBreak = expr.FindOperand(slot);
  if (!pBreak || pBreak->GetNumOperands() == 0) return;
  Append(word);
  PrintOperands(*pBreak);
}

void RqDumpout::PrintBreaks(RqExprAggr& expr) {
  PrintBreak(expr, RqExprAggr::kControlBreak, L" by ");
  PrintBreak(expr, RqExprAggr::kComputeBreak, L" at_distinct ");
}

void RqDumpout::VisitAggr(RqExprAggr& expr) {
  Append(L"(");
  if (expr.IsDistinctAggregation()) Append(L"distinct ");
  PrintOperand(expr, RqExprAggr::kAggrExpr);
  PrintBreak(expr, RqExprAggr::kControlBreak, L" by ");
  for (bool bFirst = true; const VoidID& id : expr.GetShareBase()) {
    Append(bFirst ? L" SB " : L",");
    bFirst = false;
    AppendObject(m_pRp_ForPrettyColumnNames ? m_pRp_ForPrettyColumnNames->GetRepositoryUniqueID32()
                                            : ARpGateway::INVALID_UNIQUE_ID_32,
                 id);
  }
  PrintBreak(expr, RqExprAggr::kComputeBreak, L" at_distinct ");
  Append(L")");
}

bool RqDumpout::PrintAggr(RqExprAggr& expr, std::wstring_view name) {
  Append(name);
  if (expr.IsSQL99Aggregation()) Append(L"_SQL99");
  VisitAggr(expr);
  return true;
}

bool RqDumpout::Visit(RqExprAggrSum& expr) { return PrintAggr(expr, L"sum"); }
bool RqDumpout::Visit(RqExprAggrCount& expr) { return PrintAggr(expr, L"count"); }
bool RqDumpout::Visit(RqExprAggrAvg& expr) { return PrintAggr(expr, L"avg"); }
bool RqDumpout::Visit(RqExprAggrMedian& expr) { return PrintAggr(expr, L"Median"); }
bool RqDumpout::Visit(RqExprAggrMin& expr) { return PrintAggr(expr, L"min"); }
bool RqDumpout::Visit(RqExprAggrMax& expr) { return PrintAggr(expr, L"max"); }
bool RqDumpout::Visit(RqExprAggrFirst& expr) { return PrintAggr(expr, L"first"); }
bool RqDumpout::Visit(RqExprAggrLast& expr) { return PrintAggr(expr, L"last"); }
bool RqDumpout::Visit(RqExprAggrListAgg& expr) { return PrintAggr(expr, L"ListAgg"); }
bool RqDumpout::Visit(RqExprAggrNullAgg& expr) { return PrintAggr(expr, L"NullAgg"); }
bool RqDumpout::Visit(RqExprAggrNullIfNotUnique& expr) { return PrintAggr(expr, L"nullifnotunique"); }
bool RqDumpout::Visit(RqExprAggrPercentile& expr) { return PrintAggr(expr, L"percentile"); }
bool RqDumpout::Visit(RqExprAggrRowNum& expr) { return PrintAggr(expr, L"rownum"); }
bool RqDumpout::Visit(RqExprAggrSubtotal& expr) { return PrintAggr(expr, L"subtotal"); }
bool RqDumpout::Visit(RqExprAggrReport& expr) { return PrintAggr(expr, L"REPORT_AGGREGATE"); }
bool RqDumpout::Visit(RqExprAggrReportSum& expr) { return PrintAggr(expr, L"Report_Sum"); }
bool RqDumpout::Visit(RqExprAggrReportMin& expr) { return PrintAggr(expr, L"Report_Min"); }
bool RqDumpout::Visit(RqExprAggrReportMax& expr) { return PrintAggr(expr, L"Report_Max"); }
bool RqDumpout::Visit(RqExprAggrReportCount& expr) { return PrintAggr(expr, L"Report_Count"); }
bool RqDumpout::Visit(RqExprAggrReportAvg& expr) { return PrintAggr(expr, L"Report_Avg"); }

bool RqDumpout::Visit(RqExprAggrStddev& expr) {
  return PrintAggr(expr, expr.IsSample() ? L"Stddev SAMP" : L"Stddev POP");
}

bool RqDumpout::Visit(RqExprAggrCountStar& expr) {
  Append(L"count(* : ");
  PrintOperand(expr, RqExprAggr::kAggrExpr);
  PrintBreaks(expr);
  Append(L")");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Ranks, moving and running aggregates

namespace {

std::wstring_view DirectionWord(const SortDirectonVector& directions, std::size_t i) {
  if (i >= directions.size()) return L"";
  switch (directions[i]) {
    case RqSortSpec::kAsc:
      return L" asc";
    case RqSortSpec::kDesc:
      return L" desc";
    case RqSortSpec::kEitherDirection:
      return L"";
  }
  KX_LOGIC_ERROR(L"");
}

}  // namespace

bool RqDumpout::Visit(RqExprAggrRank& expr) {
  Append(expr.IsDenseRank() ? L"DENSE_RANK" : L"Rank");
  Append(L"([");
  if (RqExpr* const pColumns = expr.GetNumOperands() > 0 ? expr.GetAggrExpr() : nullptr) {
    for (int i = 0; i < pColumns->GetNumOperands(); ++i) {
      if (i > 0) Append(L", ");
      PrintOperand(*pColumns, i);
      Append(DirectionWord(expr.GetSortDirections(), static_cast<std::size_t>(i)));
    }
  }
  Append(L"]");
  PrintBreaks(expr);
  Append(L")");
  return true;
}

bool RqDumpout::PrintAggrWithArgument(RqExprAggr& expr, std::wstring_view name) {
  Append(name);
  Append(L"(");
  PrintOperand(expr, RqExprAggr::kAggrExpr);
  Append(L", ");
  PrintOperand(expr, RqExprAggr::kNumOperands);
  PrintBreaks(expr);
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprAggrNtile& expr) { return PrintAggrWithArgument(expr, L"ntile"); }
bool RqDumpout::Visit(RqExprAggrTopN& expr) { return PrintAggrWithArgument(expr, L"topN"); }
bool RqDumpout::Visit(RqExprAggrBottomN& expr) { return PrintAggrWithArgument(expr, L"bottomN"); }
bool RqDumpout::Visit(RqExprAggrMovingAvg& expr) { return PrintAggrWithArgument(expr, L"mavg"); }
bool RqDumpout::Visit(RqExprAggrMovingSum& expr) { return PrintAggrWithArgument(expr, L"msum"); }

bool RqDumpout::PrintRunningAggr(RqExprSortDependentAggr& expr, std::wstring_view name) {
  SortDirectonVector directions;
  Int32Vector order;
  expr.GetSortSpec(directions, order);
  Append(name);
  Append(L"(");
  PrintOperand(expr, RqExprAggr::kAggrExpr);
  PrintBreaks(expr);
  if (!order.empty()) {
    Append(L" order by [");
    for (std::size_t i = 0; i < order.size(); ++i) {
      if (i > 0) Append(L", ");
      Append(order[i]);
      Append(DirectionWord(directions, i));
    }
    Append(L" ]");
  }
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprAggrRunningSum& expr) { return PrintRunningAggr(expr, L"rsum"); }
bool RqDumpout::Visit(RqExprAggrRunningCount& expr) { return PrintRunningAggr(expr, L"rcount"); }
bool RqDumpout::Visit(RqExprAggrRunningMax& expr) { return PrintRunningAggr(expr, L"rmax"); }
bool RqDumpout::Visit(RqExprAggrRunningMin& expr) { return PrintRunningAggr(expr, L"rmin"); }

// ---------------------------------------------------------------------------------------------------------------------
// Wrappers

bool RqDumpout::Visit(RqExprAggrIf& expr) {
  Append(L"FILTER(");
  PrintOperand(expr, RqExprAggrIf::kAggrExpr);
  Append(L" USING ");
  PrintOperand(expr, RqExprAggrIf::kFilterExpr);
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprNoAggregate& expr) {
  PrintOperand(expr, RqExprNoAggregate::kAggrExpr);
  return true;
}

bool RqDumpout::Visit(RqExprMashupsNoAggregate& expr) { return PrintFirstArg(expr, L"MASHUPS_NOAGGREGATE(", L")"); }
bool RqDumpout::Visit(RqExprVariableReplace& expr) { return PrintFirstArg(expr, L"variable_replace( ", L") "); }
bool RqDumpout::Visit(RqExprQualify& expr) { return PrintFirstArg(expr, L"Qualify(", L")"); }

bool RqDumpout::PrintFirstArg(RqExprAggr& expr, std::wstring_view opening, std::wstring_view closing) {
  Append(opening);
  PrintOperand(expr, RqExprAggr::kAggrExpr);
  for (int slot = RqExprAggr::kNumOperands; slot < expr.GetNumOperands(); ++slot) {
    Append(L", ");
    PrintOperand(expr, slot);
  }
  Append(closing);
  return true;
}
