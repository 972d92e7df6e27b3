#include <algorithm>
#include <array>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprMember.h"
#include "rq/sql/SqlWriter.h"
#include "rq/sql/SqlWriterScopes.h"

// Aggregates.
//
//   without a control break   one value of the rows of a group
//   with one                  a value beside each row of the block, at the grain of the break. Over an aggregate, or
//                             where the block is not grouped, it is a window over the rows of the block. Over anything
//                             else it is over the rows of the tables, whatever the block is grouped by

namespace {

using F = SUFeaturesTable;

/// An aggregate function and the one that combines its values over parts; null where none does.
struct AggregateKind {
  RqNodeType_e m_kind;
  const char* m_function;
  const char* m_combining;
  SqlTarget::FeatureId m_feature;
};

constexpr auto kAggregates = std::to_array<AggregateKind>({
    {kRqExprAggrSum, "sum", "sum", F::kFeature_Sum},
    {kRqExprAggrCount, "count", "sum", F::kFeature_Count},
    {kRqExprAggrCountStar, "count", "sum", F::kFeature_CountStar},
    {kRqExprAggrAvg, "avg", nullptr, F::kFeature_Avg},
    {kRqExprAggrMin, "min", "min", F::kFeature_Min},
    {kRqExprAggrMax, "max", "max", F::kFeature_Max},
    {kRqExprAggrStddev, "stddev", nullptr, F::kFeature_StdDevSamp},
    {kRqExprAggrMedian, "median", nullptr, F::kFeature_Median},
    {kRqExprAggrFirst, "first", nullptr, F::kFeature_First},
    {kRqExprAggrLast, "last", nullptr, F::kFeature_Last},
    {kRqExprAggrListAgg, "group_concat", nullptr, F::kFeature_Invalid},
});

/// An aggregate that each row has over some rows of its own.
struct WindowKind {
  RqNodeType_e m_kind;
  const char* m_function;
  SqlTarget::FeatureId m_feature;
};

constexpr auto kWindows = std::to_array<WindowKind>({
    {kRqExprAggrRank, "rank", F::kFeature_Rank},
    {kRqExprAggrPercentile, "percent_rank", F::kFeature_Percentile},
    {kRqExprAggrNtile, "ntile", F::kFeature_NTile},
    {kRqExprAggrRowNum, "row_number", F::kFeature_RowNum},
    {kRqExprAggrMovingAvg, "avg", F::kFeature_MovingAvg},
    {kRqExprAggrMovingSum, "sum", F::kFeature_MovingSum},
    {kRqExprAggrRunningSum, "sum", F::kFeature_RunningSum},
    {kRqExprAggrRunningCount, "count", F::kFeature_RunningCount},
    {kRqExprAggrRunningMax, "max", F::kFeature_RunningMax},
    {kRqExprAggrRunningMin, "min", F::kFeature_RunningMin},
    {kRqExprAggrReportSum, "sum", F::kFeature_Sum},
    {kRqExprAggrReportMin, "min", F::kFeature_Min},
    {kRqExprAggrReportMax, "max", F::kFeature_Max},
    {kRqExprAggrReportCount, "count", F::kFeature_Count},
    {kRqExprAggrReportAvg, "avg", F::kFeature_Avg},
    {kRqExprAggrTopN, "top_n", F::kFeature_TopN},
    {kRqExprAggrBottomN, "bottom_n", F::kFeature_BottomN},
});

bool HasColumns(const RqExprColumnList* pBreak) { return pBreak && pBreak->GetNumColumns() > 0; }

bool IsDistinct(const RqExprAggr& aggr) { return aggr.IsDistinctAggregation() || aggr.HasDistinctComputeBreak(); }

/// Whether a tree, other than in subqueries, has a node that satisfies the predicate.
template <class Predicate>
bool Has(const RqNode* pNode, const Predicate& predicate) {
  if (!pNode) return false;
  if (predicate(*pNode)) return true;
  for (int i = 0; i < pNode->GetNumChildren(); ++i) {
    if (Has(pNode->GetIthChild(i), predicate)) return true;
  }
  return false;
}

bool IsOfGroup(const RqNode& node) {
  const auto* const pAggr = dynamic_cast<const RqExprAggr*>(&node);
  return pAggr && std::ranges::find(kAggregates, pAggr->GetObjectType(), &AggregateKind::m_kind) != kAggregates.end() &&
         !HasColumns(pAggr->GetControlBreak());
}

/// Whether the block groups by the columns of a break, so that its groups are those of the break.
bool IsGroupingOf(const RqExprColumnList& columns, const RqList& block) {
  const RqGroupBy* const pGroupBy = block.GetGroupBy();
  if (!pGroupBy || pGroupBy->IsGroupingSet() || pGroupBy->GetNumColumns() != columns.GetNumColumns()) return false;
  for (int i = 0; i < columns.GetNumColumns(); ++i) {
    if (!pGroupBy->HasEquivalentMember(*columns.GetIthColumn(i))) return false;
  }
  return true;
}

/// Whether no two rows of the block have equal values of the columns: those are what its only table is grouped by.
bool AreRowsAt(const RqExprColumnList& columns, const RqList& block) {
  const RqJoinSpec* const pJoinSpec = block.GetJoinSpec();
  if (!pJoinSpec || pJoinSpec->GetNumTableReferences() != 1) return false;
  const RqTableReference* const pReference = pJoinSpec->GetIthTableReference(0);
  if (!pReference || !pReference->IsDerivedTableReference()) return false;
  const RqAbstractList& table = *pReference->GetDerivedTable()->GetInnerList();
  if (!table.IsRqList()) return false;
  const RqGroupBy* const pGroupBy = static_cast<const RqList&>(table).GetGroupBy();
  if (!pGroupBy || pGroupBy->IsGroupingSet()) return false;
  for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
    const RqDerivedColumn* const pColumn = table.GetProjection()->GetMatchingColumn(pGroupBy->GetIthColumn(i));
    const RqDerivedColumnReference reference(const_cast<RqDerivedColumn*>(pColumn));
    if (!pColumn || !columns.HasEquivalentMember(reference)) return false;
  }
  return true;
}

bool IsGrouped(const RqList& list) {
  return list.GetGroupBy() || list.GetHaving() || Has(list.GetProjection(), IsOfGroup);
}

}  // namespace

SqlExprText SqlWriter::Aggregate(const RqExprAggr& expr) {
  const RqExprAggr* pAggr = &expr;
  const RqExprCond* pFilter = nullptr;
  if (expr.GetObjectType() == kRqExprAggrIf) {
    const auto& filtered = static_cast<const RqExprAggrIf&>(expr);
    if (!filtered.IsAggr()) {
      return {"CASE WHEN " + Condition(*filtered.GetFilterExpr(), true).m_text + " THEN " +
              Argument(*filtered.GetFirstArg()) + " END"};
    }
    pAggr = dynamic_cast<const RqExprAggr*>(filtered.GetFirstArg());
    pFilter = filtered.GetFilterExpr();
    if (!pAggr || pAggr->GetObjectType() == kRqExprAggrIf) Refuse("a filter around anything but an aggregate", &expr);
  }
  if (!m_pBlock) Refuse("an aggregate outside of a block", &expr);
  if (HasColumns(pAggr->GetControlBreak()) && !m_nulls.empty()) Refuse("a window over grouping sets", &expr);
  const RqNodeType_e kind = pAggr->GetObjectType();
  if (std::ranges::find(kWindows, kind, &WindowKind::m_kind) != kWindows.end()) {
    if (HasGroupingSetsToExpand()) Refuse("a window over grouping sets", &expr);
    return {WindowFunction(*pAggr, pFilter)};
  }
  if (std::ranges::find(kAggregates, kind, &AggregateKind::m_kind) == kAggregates.end()) {
    Refuse("an aggregate of this kind", &expr);
  }
  if (pAggr->GetComputeBreak() && !IsDistinct(*pAggr) && !AreRowsAt(*pAggr->GetComputeBreak(), *m_pBlock)) {
    Refuse("an aggregate that is computed at a finer grain", &expr);
  }
  const RqExprColumnList* const pBreak = pAggr->GetControlBreak();
  const bool bOverAggregate = HasAggregates(pAggr->GetAggrExpr());
  if (!HasColumns(pBreak) || (!bOverAggregate && IsGroupingOf(*pBreak, *m_pBlock))) {
    // What is aggregated are the rows, in which a column has its value whatever the grouping set.
    const ValueScope nulls(m_nulls, {});
    return AggregateOfGroup(*pAggr, pFilter);
  }
  return AggregateWithBreak(*pAggr, pFilter);
}

bool SqlWriter::HasGroupingSetsToExpand() const { return !m_nulls.empty() || !m_kept.empty(); }

/// A database whose standard has windows has a feature of some function over one.
void SqlWriter::RequireWindow(const RqExprAggr& aggr) const {
  for (const FeatureId id : {F::kFeature_Rank, F::kFeature_DenseRank, F::kFeature_RowNum, F::kFeature_Percentile,
                             F::kFeature_NTile, F::kFeature_MovingAvg, F::kFeature_MovingSum, F::kFeature_RunningSum,
                             F::kFeature_RunningCount, F::kFeature_RunningMax, F::kFeature_RunningMin}) {
    if (m_target.Can(id)) return;
  }
  Refuse("a window, for none of whose functions it has a feature,", &aggr);
}

/// The call over the rows of a group, with what stands behind a call.
SqlExprText SqlWriter::AggregateOfGroup(const RqExprAggr& aggr, const RqExprCond* pFilter) {
  const AggregateKind& kind = *std::ranges::find(kAggregates, aggr.GetObjectType(), &AggregateKind::m_kind);
  const RqExpr* const pArgument = aggr.GetAggrExpr();
  const bool bDistinct = IsDistinct(aggr);
  const bool bCase = pFilter && m_target.GetDialect() == SqlTarget::kStandard;
  if (kind.m_kind == kRqExprAggrStddev) return Deviation(aggr, pFilter);
  if (bDistinct && kind.m_kind == kRqExprAggrCount) {
    Require(F::kFeature_CountDistinct, &aggr);
  } else if (kind.m_feature != F::kFeature_Invalid) {
    Require(kind.m_feature, &aggr);
  }
  std::string argument = kind.m_kind == kRqExprAggrCountStar ? "*" : Argument(*pArgument);
  if (bCase)
    argument = "CASE WHEN " + Condition(*pFilter, true).m_text + " THEN " + (argument == "*" ? "1" : argument) + " END";
  if (bDistinct) argument.insert(0, "DISTINCT ");
  const std::string filter = pFilter && !bCase ? FilterText(*pFilter) : std::string();
  const bool bPostgresql = m_target.GetDialect() == SqlTarget::kPostgresql;
  if (kind.m_kind == kRqExprAggrMedian && bPostgresql) {
    if (bDistinct) Refuse("the median of distinct values", &aggr);
    return {"percentile_cont(0.5) WITHIN GROUP (ORDER BY " + argument + ')' + filter};
  }
  if (kind.m_kind == kRqExprAggrListAgg && m_target.GetDialect() == SqlTarget::kStandard) Refuse("GROUP_CONCAT", &aggr);
  if (kind.m_kind == kRqExprAggrListAgg && !m_target.IsSqlite()) return {"string_agg(" + argument + ", ',')" + filter};
  return {std::string(kind.m_function) + '(' + argument + ')' + filter};
}

std::string SqlWriter::FilterText(const RqExprCond& filter) {
  return " FILTER (WHERE " + Condition(filter, true).m_text + ')';
}

/// Where there is no such function, from sums: the deviation of a sample is sqrt((sum(x * x) - sum(x) * sum(x) / n) /
/// (n - 1)). Wanted: for large values that are close to each other that has fewer digits than a function would give.
SqlExprText SqlWriter::Deviation(const RqExprAggr& aggr, const RqExprCond* pFilter) {
  const bool bSample = static_cast<const RqExprAggrStddev&>(aggr).IsSample();
  const bool bDistinct = IsDistinct(aggr);
  const FeatureId feature = bDistinct ? (bSample ? F::kFeature_StdDevSampDistinct : F::kFeature_StdDevPopDistinct)
                                      : (bSample ? F::kFeature_StdDevSamp : F::kFeature_StdDevPop);
  const RqExpr& argument = *aggr.GetAggrExpr();
  const std::string filter = pFilter ? FilterText(*pFilter) : std::string();
  if (m_target.Can(feature)) {
    return {std::string(bSample ? "stddev_samp(" : "stddev_pop(") + (bDistinct ? "DISTINCT " : "") +
            Argument(argument) + ')' + filter};
  }
  if (bDistinct || !m_target.IsSqlite()) Refuse(SqlTarget::NameOf(feature), &aggr);
  const std::string x = Operand(argument, SqlPrecedence::kUnary);
  const std::string sum = "sum(1.0 * " + x + ')' + filter;
  const std::string squares = "sum(1.0 * " + x + " * " + x + ')' + filter;
  const std::string count = "count(" + Argument(argument) + ')' + filter;
  return {"sqrt(max((" + squares + " - " + sum + " * " + sum + " / " + count + ") / " +
          (bSample ? '(' + count + " - 1)" : count) + ", 0.0))"};
}

std::string SqlWriter::PartitionText(const RqExprColumnList* pBreak) {
  std::string text;
  for (int i = 0; pBreak && i < pBreak->GetNumColumns(); ++i) {
    if (!pBreak->GetIthColumn(i)->IsConstant()) text += (text.empty() ? "" : ", ") + Argument(*pBreak->GetIthColumn(i));
  }
  return text.empty() ? text : "PARTITION BY " + text;
}

/// An aggregate beside each row of the block.
/// Law: the sum over the rows of a coarser group is the sum of the sums over the groups in it; and so for counts, least
/// and greatest values. Of all other aggregates, and where HAVING drops groups, the value is a query of its own.
SqlExprText SqlWriter::AggregateWithBreak(const RqExprAggr& aggr, const RqExprCond* pFilter) {
  const AggregateKind& kind = *std::ranges::find(kAggregates, aggr.GetObjectType(), &AggregateKind::m_kind);
  const std::string over = " OVER (" + PartitionText(aggr.GetControlBreak()) + ')';
  const bool bOverAggregate = HasAggregates(aggr.GetAggrExpr());
  const bool bGrouped = IsGrouped(*m_pBlock);
  const bool bNeedsGroup = kind.m_kind == kRqExprAggrMedian || kind.m_kind == kRqExprAggrListAgg ||
                           (kind.m_kind == kRqExprAggrStddev && m_target.IsSqlite());
  if (bOverAggregate || !bGrouped) {
    if (!IsDistinct(aggr) && !bNeedsGroup) {
      RequireWindow(aggr);
      return {AggregateOfGroup(aggr, pFilter).m_text + over};
    }
    if (bOverAggregate) Refuse("a window over distinct or sorted values of groups", &aggr);
  } else if (kind.m_combining && !IsDistinct(aggr) && !m_pBlock->GetHaving()) {
    RequireWindow(aggr);
    return {std::string(kind.m_combining) + '(' + AggregateOfGroup(aggr, pFilter).m_text + ')' + over};
  }
  return AggregateOfTables(aggr, pFilter);
}

/// The aggregate as a query over the same rows of the tables, under other aliases.
SqlExprText SqlWriter::AggregateOfTables(const RqExprAggr& aggr, const RqExprCond* pFilter) {
  Require(F::kFeature_ValueSubquery, &aggr);
  Require(F::kFeature_CorrelatedSubquery, &aggr);
  std::vector<std::string> outer;
  const RqExprColumnList& columns = *aggr.GetControlBreak();
  for (int i = 0; i < columns.GetNumColumns(); ++i) {
    outer.push_back(Operand(*columns.GetIthColumn(i), SqlPrecedence::kConcat));
  }
  std::string text;
  {
    const ValueScope indent(m_indent, m_indent + 4);
    std::set<int> again = m_tablesAgain;
    if (const RqJoinSpec* const pJoinSpec = m_pBlock->GetJoinSpec()) {
      std::list<RqIdentifiedTable*> tables;
      const_cast<RqJoinSpec*>(pJoinSpec)->CollectIdentifiedTables(tables);
      for (const RqIdentifiedTable* const pTable : tables) {
        if (!again.insert(pTable->GetTableNumber()).second) Refuse("aggregates of tables in each other", &aggr);
      }
    }
    const ValueScope tablesAgain(m_tablesAgain, std::move(again));
    std::vector<std::string> conjuncts;
    const std::string from = FromLines(*m_pBlock, conjuncts);
    if (const RqDetailFilter* const pDetail = m_pBlock->GetDetailFilter(); pDetail && pDetail->GetCond()) {
      for (std::string& conjunct : Conjuncts(*pDetail->GetCond(), false)) {
        conjuncts.push_back(std::move(conjunct));
      }
    }
    const char* const pSame = m_target.IsSqlite() ? " IS " : " IS NOT DISTINCT FROM ";
    for (int i = 0; i < columns.GetNumColumns(); ++i) {
      const RqExpr& column = *columns.GetIthColumn(i);
      if (column.IsConstant()) continue;
      conjuncts.push_back(Operand(column, SqlPrecedence::kConcat) + pSame + outer[static_cast<std::size_t>(i)]);
    }
    text = "SELECT " + AggregateOfGroup(aggr, pFilter).m_text + from + FilterLines("WHERE", conjuncts);
  }
  return {EnclosedText(text)};
}

// ---------------------------------------------------------------------------------------------------------------------
// Windows

std::string SqlWriter::WindowFunction(const RqExprAggr& aggr, const RqExprCond* pFilter) {
  const WindowKind& kind = *std::ranges::find(kWindows, aggr.GetObjectType(), &WindowKind::m_kind);
  const auto* const pRank = dynamic_cast<const RqExprAggrRank*>(&aggr);
  const bool bDense = pRank && pRank->IsDenseRank();
  Require(bDense ? F::kFeature_DenseRank : kind.m_feature, &aggr);
  RequireWindow(aggr);
  if (kind.m_kind == kRqExprAggrTopN || kind.m_kind == kRqExprAggrBottomN) Refuse("a list of the first rows", &aggr);
  if (IsDistinct(aggr)) Refuse("a window over distinct values", &aggr);
  const RqExpr& expr = *aggr.GetAggrExpr();
  std::vector<std::string> order;
  std::string call;
  std::string frame;
  const auto directed = [&](const RqExpr& key, RqSortSpec::SortDirection direction, const char* nulls) {
    order.push_back(Argument(key) + (direction == RqSortSpec::kDesc ? " DESC" : "") + nulls);
  };
  if (pRank) {
    const SortDirectonVector& directions = pRank->GetSortDirections();
    const auto* const pKeys = dynamic_cast<const RqExprColumnListOrdered*>(&expr);
    const int numKeys = pKeys ? pKeys->GetNumOperands() : 1;
    for (int i = 0; i < numKeys; ++i) {
      // Without directions the greatest is the first.
      const auto place = static_cast<std::size_t>(i);
      directed(pKeys ? *pKeys->GetIthOperand(i) : expr,
               place < directions.size() ? directions[place] : RqSortSpec::kDesc, "");
    }
    call = bDense ? "dense_rank()" : "rank()";
  } else if (kind.m_kind == kRqExprAggrPercentile || kind.m_kind == kRqExprAggrNtile) {
    directed(expr, RqSortSpec::kAsc, "");
    const auto* const pNtile = dynamic_cast<const RqExprAggrNtile*>(&aggr);
    call = std::string(kind.m_function) + '(' + (pNtile ? Argument(*pNtile->GetNtileExpr()) : "") + ')';
  } else if (const auto* const pNumber = dynamic_cast<const RqExprAggrRowNum*>(&aggr)) {
    const RqExprColumnList* const pKeys = pNumber->GetComputeBreak();
    const SortDirectonVector& directions = pNumber->GetSortDirections();
    const RqExprAggrRowNum::NullsSortOrder nulls = pNumber->GetNullsSortOrder();
    if (nulls != RqExprAggrRowNum::kBackendDB) Require(F::kFeature_NullsSortDirectionInOrderBy, &aggr);
    for (int i = 0; pKeys && i < pKeys->GetNumColumns(); ++i) {
      // What the rows are parted by orders none of them.
      const RqExpr& key = *pKeys->GetIthColumn(i);
      const RqExprColumnList* const pParts = pNumber->GetControlBreak();
      const auto isKey = [&](int part) { return RqEquivalence()(*pParts->GetIthColumn(part), key); };
      bool bPart = false;
      for (int part = 0; pParts && part < pParts->GetNumColumns(); ++part) bPart |= isKey(part);
      const auto place = static_cast<std::size_t>(i);
      if (bPart) continue;
      directed(key, place < directions.size() ? directions[place] : RqSortSpec::kDesc,
               nulls == RqExprAggrRowNum::kNullsFirst  ? " NULLS FIRST"
               : nulls == RqExprAggrRowNum::kNullsLast ? " NULLS LAST"
                                                       : "");
    }
    call = "row_number()";
  } else {
    const bool bRows = dynamic_cast<const RqExprStringLiteral*>(&expr) && std::string_view(kind.m_function) == "count";
    call = std::string(kind.m_function) + '(' + (bRows ? "*" : Argument(expr)) + ')';
    if (const auto* const pSorted = dynamic_cast<const RqExprSortDependentAggr*>(&aggr)) {
      SortDirectonVector directions;
      Int32Vector numbers;
      pSorted->GetSortSpec(directions, numbers);
      for (std::size_t i = 0; i < numbers.size(); ++i) {
        const int index = m_pBlock->GetProjection()->FindColumnIndex(numbers[i]);
        if (index < 0 || index >= m_pBlock->GetProjection()->GetNumColumns()) {
          Refuse("an order by a column that is not there", &aggr);
        }
        const RqExpr& key = *m_pBlock->GetProjection()->GetIthColumn(index)->GetExpr();
        if (!key.IsConstant()) directed(key, directions[i], "");
      }
      frame = FrameText(*pSorted);
    }
  }
  if (pFilter) call += FilterText(*pFilter);
  std::string window = PartitionText(aggr.GetControlBreak());
  for (std::size_t i = 0; i < order.size(); ++i) {
    window += (i > 0 ? ", " : window.empty() ? "ORDER BY " : " ORDER BY ") + order[i];
  }
  if (!frame.empty()) window += (window.empty() ? "" : " ") + frame;
  return call + " OVER (" + window + ')';
}

std::string SqlWriter::FrameText(const RqExprSortDependentAggr& aggr) {
  if (aggr.GetObjectType() != kRqExprAggrMovingAvg && aggr.GetObjectType() != kRqExprAggrMovingSum) {
    return "ROWS UNBOUNDED PRECEDING";
  }
  const auto* const pSize =
      dynamic_cast<const RqExprIntegerLiteral*>(aggr.GetIthOperand(RqExprAggrMovingSum::kWindowSize));
  if (!pSize || pSize->GetValue() < 1) Refuse("a window whose size is no number", &aggr);
  return "ROWS " + std::to_string(pSize->GetValue() - 1) + " PRECEDING";
}

/// The number whose bits tell, the first column's highest, what a row is not grouped by.
SqlExprText SqlWriter::GroupingId(const RqExpr& expr) {
  const RqExpr& list = *expr.GetIthOperand(0);
  const RqNodeType_e kind = list.GetObjectType();
  std::vector<const RqExpr*> columns;
  if (kind == kRqExprColumnList || kind == kRqExprColumnListOrdered) {
    for (int i = 0; i < list.GetNumOperands(); ++i) columns.push_back(list.GetIthOperand(i));
  } else {
    columns.push_back(&list);
  }
  const bool bSets = m_pBlock && m_pBlock->GetGroupBy() && m_pBlock->GetGroupBy()->IsGroupingSet();
  if (bSets && m_target.Can(F::kFeature_GroupByGroupingSets)) {
    std::string text;
    for (const RqExpr* const pColumn : columns) text += (text.empty() ? "" : ", ") + Argument(*pColumn);
    return {"GROUPING(" + text + ')'};
  }
  std::int64_t id = 0;
  for (const RqExpr* const pColumn : columns) {
    const bool bNull =
        std::ranges::any_of(m_nulls, [&](const RqExpr* pNull) { return RqEquivalence()(*pNull, *pColumn); });
    id = id << 1 | (bNull ? 1 : 0);
  }
  return IntegerText(id);
}
