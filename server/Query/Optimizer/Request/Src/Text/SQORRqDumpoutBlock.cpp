#include <algorithm>

#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"
#include "Host/ServerStatistics.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOpaqueTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTELMNativeTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "Query/Optimizer/Request/Text/SQORToString.h"

// ---------------------------------------------------------------------------------------------------------------------
// Pieces

void RqDumpout::AppendNodeID(const RqNode& node) {
  if (m_bDisplayNodeIDs) Append(node.GetNodeID().ToString());
}

void RqDumpout::PrintDeeper(RqNode* pNode) {
  if (!pNode) return;
  ++m_nestingLevel;
  pNode->Tour(*this);
  --m_nestingLevel;
}

void RqDumpout::ShowRownumOffsetLimit(const RqAbstractList& list) {
  if (list.GetRowNumOffset() != 0) {
    Append(L" /* OFFSET ");
    Append(list.GetRowNumOffset());
    Append(L" ROWS */ ");
  }
  if (list.GetRowNumLimit() != 0) {
    Append(L" /* FETCH FIRST ");
    Append(list.GetRowNumLimit());
    Append(L" ROWS ONLY */ ");
  }
}

void RqDumpout::ShowOperatorStatistics(const RqNode& node) {
  if (!m_bExecutionPlanStats || !m_serverStatistics) return;
  KXStringVector lines;
  m_serverStatistics->GetLogicalRequestStats().GetOperatorStatistics(node.GetNodeID().ToString(), lines);
  // The engine puts the latest line last.
  for (auto it = lines.rbegin(); it != lines.rend(); ++it) {
    NewLine();
    Append(*it);
  }
}

/// "[1,2]"
template <class Numbers>
void RqDumpout::AppendNumbers(const Numbers& numbers) {
  Append(L"[");
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0) Append(L",");
    Append(numbers[i]);
  }
  Append(L"]");
}

void RqDumpout::AppendTableNumber(const KXString& prefix, const RqIdentifiedTable& table) {
  Append(prefix);
  Append(table.GetTableNumber());
}

// ---------------------------------------------------------------------------------------------------------------------
// Clauses

bool RqDumpout::Visit(RqList& list) {
  NewLine();
  Append(L"RqList ");
  AppendNodeID(list);
  if (list.IsShared()) Append(L" shared");
  UInt16Vector breakColumns;
  list.GetBreakColumns(breakColumns);
  if (!breakColumns.empty()) AppendNumbers(breakColumns);
  ShowTargetMarks(list);
  if (list.IsDistinct()) Append(L" distinct ");
  ShowRownumOffsetLimit(list);
  ShowChildIDs(list);
  if (list.IsHdsEvaluateBreakFilter()) Append(L"[HdsEvaluateBreakFilter]");
  if (list.IsMarkedForRemoteRPD()) Append(L"[RemoteRPD]");
  ShowOperatorStatistics(list);
  return false;
}

bool RqDumpout::Visit(RqProjection& projection) {
  if (m_bDisplayChildIDs) {
    NewLine();
    Append(L"RqProjection ");
    Append(projection.GetNodeID().ToString());
    ShowChildIDs(projection);
  }
  const int numColumns = projection.GetNumColumns();
  for (int i = 0; i < numColumns; ++i) {
    NewLine();
    Indent();
    if (RqDerivedColumn* const pColumn = projection.GetIthColumn(i)) pColumn->Tour(*this);
    if (i + 1 < numColumns) Append(L",");
  }
  return true;
}

KXString RqDumpout::GetDerivedColumnName(const RqDerivedColumn& column) const {
  return RqDerivedColumn::kColumnPrefix + BaseStringUtil::StringFrom(column.GetColumnNum());
}

bool RqDumpout::Visit(RqDerivedColumn& column) {
  if (RqExpr* const pExpr = column.GetExpr()) pExpr->Tour(*this);
  Append(L" as ");
  Append(GetDerivedColumnName(column));
  if (column.GetBreakStatus() == RqDerivedColumn::kNoDuplicates) Append(L" GB");
  ShowTargetMarks(column);
  ShowChildIDs(column);
  return true;
}

bool RqDumpout::Visit(RqDetailFilter& filter) {
  NewLine();
  if (RqExprCond* const pCond = filter.GetCond()) {
    Append(L"DetailFilter: ");
    pCond->Tour(*this);
    ShowTargetMarks(filter);
    ShowChildIDs(filter);
  } else {
    Append(L"*********** ERROR: RqDetailFilter node with no condition");
  }
  return true;
}

bool RqDumpout::Visit(RqSummaryFilter& filter) {
  NewLine();
  if (RqExprCond* const pCond = filter.GetCond()) {
    Append(L"SummaryFilter: ");
    pCond->Tour(*this);
    ShowChildIDs(filter);
  } else {
    Append(L"*********** ERROR: RqSummaryFilter node with no condition");
  }
  return true;
}

bool RqDumpout::Visit(RqHaving& having) {
  NewLine();
  Append(L"Having: ");
  if (RqExprCond* const pCond = having.GetCond()) pCond->Tour(*this);
  ShowChildIDs(having);
  return true;
}

bool RqDumpout::Visit(RqGroupBy& groupBy) {
  if (groupBy.GetNumColumns() > 0) {
    NewLine();
    if (groupBy.IsGroupingSet()) {
      PrintGroupingSets(groupBy);
    } else {
      Append(L"GroupBy: ");
      Visit(static_cast<RqExprColumnListOrdered&>(groupBy));
    }
    ShowChildIDs(groupBy);
  }
  ShowTargetMarks(groupBy);
  if (ServerInfo::IsRemoteTargetType(groupBy.GetTargetType())) return true;
  if (groupBy.GetInternalExecutionMode() == RqGroupBy::kHash) Append(L" hash ");
  if (groupBy.GetInternalExecutionMode() == RqGroupBy::kSort) Append(L" sort ");
  return true;
}

void RqDumpout::PrintGroupingSets(RqGroupBy& groupBy) {
  constexpr int kBits = 32;
  Append(L"GroupBy GroupingSets: (");
  const Int32Vector& groupingSets = groupBy.GetGroupingSet();
  const int numColumns = groupBy.GetNumColumns();
  for (std::size_t set = 0; set < groupingSets.size(); ++set) {
    if (set > 0) Append(L", ");
    NewLine();
    Indent();
    Append(L"(gid:");
    Append(groupingSets[set]);
    Append(L" ");
    bool bFirst = true;
    for (int bit = 0; bit < numColumns; ++bit) {
      if (bit < kBits && (static_cast<std::uint32_t>(groupingSets[set]) >> bit & 1) != 0) continue;
      if (!std::exchange(bFirst, false)) Append(L", ");
      if (RqExpr* const pColumn = groupBy.GetIthColumn(numColumns - 1 - bit)) pColumn->TourExpr(*this);
    }
    Append(L")");
    if (!groupBy.IsGroupingSetFiltersAvailable()) continue;
    Append(L"[filter:");
    const OwnedRqExprCondVector& filters = groupBy.GetGroupingSetFilters();
    if (set < filters.size() && filters[set]) filters[set]->TourExpr(*this);
    Append(L"]");
  }
  Append(L")");
}

bool RqDumpout::Visit(RqOrderBy& orderBy) {
  NewLine();
  Append(L"OrderBy: ");
  ShowChildIDs(orderBy);
  const auto printChildren = [&](int begin, int end) {
    for (int i = begin; i < end; ++i) {
      if (i > begin) Append(L", ");
      if (RqNode* const pChild = orderBy.GetIthChild(i)) pChild->Tour(*this);
    }
  };
  printChildren(0, orderBy.GetNumSortSpecs());
  if (orderBy.HasPushDownAggr()) {
    Append(L", Aggs:[ ");
    printChildren(orderBy.GetNumSortSpecs(), orderBy.GetNumChildren());
    Append(L" ]");
  }
  ShowTargetMarks(orderBy);
  return true;
}

bool RqDumpout::Visit(RqSortSpec& sortSpec) {
  Append(RqDerivedColumn::kColumnPrefix);
  Append(sortSpec.GetColumnNumber());
  switch (sortSpec.GetSortDirection()) {
    case RqSortSpec::kAsc:
      Append(L" asc");
      break;
    case RqSortSpec::kDesc:
      Append(L" desc");
      break;
    case RqSortSpec::kEitherDirection:
      break;
    default:
      KX_LOGIC_ERROR(L"");
  }
  if (sortSpec.GetNullSortDirection() == RqSortSpec::kFirst) Append(L" NULLS FIRST");
  if (sortSpec.GetNullSortDirection() == RqSortSpec::kLast) Append(L" NULLS LAST");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Joins

bool RqDumpout::Visit(RqJoinSpec& joinSpec) {
  NewLine();
  Append(L"Child Nodes (RqJoinSpec): ");
  AppendNodeID(joinSpec);
  ShowTargetMarks(joinSpec);
  ShowChildIDs(joinSpec);
  return false;
}

bool RqDumpout::Visit(RqJoinNode& node) {
  ++m_nestingLevel;
  if (m_bDisplayChildIDs || m_bDisplayNodeIDs) {
    NewLine();
    Append(L"RqJoinNode ");
    Append(node.GetNodeID().ToString());
  }
  if (m_bDisplayChildIDs) {
    ShowChildIDs(node);
  } else if (m_bDisplayNodeIDs) {
    Append(L" ");
    Append(ToString(node.GetIncidentLinks(), m_pRp_ForPrettyColumnNames, true));
  }
  if (RqTableReference* const pReference = node.GetTableReference()) pReference->Tour(*this);
  --m_nestingLevel;
  return true;
}

void RqDumpout::PrintJoinWord(RqTableReference& reference) {
  if (reference.GetJoinType() == SqlTableRef::kInnerJoin) {
    if (!reference.GetRightTable()) return;
    NewLine();
    const RqExprCond* const pCond = reference.GetSearchCond();
    if (pCond && pCond->GetObjectType() != kRqExprCondOuterJoinFilter) {
      Append(L"InnerJoin ");
    } else if (reference.IsReallyNaturalJoin()) {
      Append(L"NaturalJoin ");
    } else {
      Append(L"CrossProductJoin ");
      ShowTargetMarks(reference);
    }
    return;
  }
  if (m_bDisplayChildIDs) NewLine();
  switch (reference.GetJoinType()) {
    case SqlTableRef::kLeftOuterJoin:
      Append(L" LeftOuterJoin ");
      return;
    case SqlTableRef::kRightOuterJoin:
      Append(L" RightOuterJoin ");
      return;
    case SqlTableRef::kFullOuterJoin:
      Append(L" FullOuterJoin ");
      return;
    case SqlTableRef::kFullOuterStitchJoin:
      Append(L" FullOuterStitchJoin ");
      return;
    case SqlTableRef::kNaturalJoin:
      Append(L" NaturalJoin ");
      return;
    default:
      KX_LOGIC_ERROR(L"");
  }
}

bool RqDumpout::Visit(RqTableReference& reference) {
  ++m_nestingLevel;
  NewLine();
  if (RqAbstractTable* const pLeft = reference.GetLeftTable()) pLeft->Tour(*this);
  PrintJoinWord(reference);
  if (reference.IsEagerJoin()) Append(L"(Eager) ");
  if (reference.GetDrivingTableHint() == kDriving_LeftTable) Append(L" (left drive) ");
  if (reference.GetDrivingTableHint() == kDriving_RightTable) Append(L" (right drive) ");
  RqAbstractTable* const pRight = reference.GetRightTable();
  if (pRight) AppendNodeID(reference);
  if (RqExprCond* const pCond = reference.GetSearchCond()) {
    Append(L" On ");
    pCond->Tour(*this);
  }
  if (!reference.GetLeftJoinColumnIndexes().empty()) {
    Append(L"; actual join vectors: ");
    AppendNumbers(reference.GetLeftJoinColumnIndexes());
    Append(L" = ");
    AppendNumbers(reference.GetRightJoinColumnIndexes());
  }
  ShowOperatorStatistics(reference);
  if (reference.IsIndexJoin()) Append(L"; Is Index Join");
  ShowChildIDs(reference);
  if (pRight) {
    NewLine();
    pRight->Tour(*this);
  }
  --m_nestingLevel;
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Tables

bool RqDumpout::Visit(RqAtomicTable& table) {
  ARpGateway* const pRp = m_pRp_ForPrettyColumnNames;
  Append(table.GetTableName(pRp, false, false));
  Append(L" ");
  if (table.GetObjectType() == kRqAtomicTable && table.ValidCacheTable()) {
    Append(RqAtomicTable::kTablePrefix);
    Append(table.GetCacheTableID().ToString());
  } else if (table.IsAliasedTable(pRp)) {
    Append(L"AS ");
    Append(table.GetAliasName(pRp));
  } else {
    AppendTableNumber(RqAtomicTable::kTablePrefix, table);
    if (table.IsSystemGenerated(pRp)) Append(L" [SystemGenerated]");
  }
  ShowChildIDs(table);
  return true;
}

bool RqDumpout::Visit(RqOpaqueTable& table) {
  Append(L"[");
  Append(table.GetQueryString(m_pRp_ForPrettyColumnNames));
  if (m_bForPlanCache && table.IsDataTypeProvidingTransientTable()) {
    Append(static_cast<const RqTransientOpaqueTable&>(table).GetCacheSharedKey());
  }
  Append(L"] as ");
  AppendTableNumber(RqAtomicTable::kTablePrefix, table);
  ShowChildIDs(table);
  return true;
}

bool RqDumpout::Visit(RqTransientOpaqueTable& table) { return Visit(static_cast<RqOpaqueTable&>(table)); }

bool RqDumpout::Visit(RqTELMNativeTable& table) {
  Append(table.GetTableIdentifier().ToString());
  if (table.IsDictionary()) {
    Append(L" (Dictionary for ");
    Append(table.GetDictionaryName());
    Append(L")");
  }
  Append(L" ");
  AppendTableNumber(RqTELMNativeTable::kTablePrefix, table);
  ShowChildIDs(table);
  return true;
}

bool RqDumpout::Visit(RqExternalTable& table) {
  Append(L"External Table: ");
  Append(table.GetTableName());
  ShowChildIDs(table);
  return true;
}

bool RqDumpout::Visit(RqDerivedTable& table) {
  Append(L"(");
  PrintDeeper(table.GetInnerList());
  NewLine();
  Append(L") as ");
  AppendTableNumber(RqDerivedTable::kTablePrefix, table);
  if (!table.GetCommonExprName().empty()) {
    Append(L" aka ");
    Append(table.GetCommonExprName());
  }
  ShowChildIDs(table);
  return true;
}

bool RqDumpout::Visit(RqDerivedColumnReference& expr) {
  Append(expr.GetSourceTableName());
  Append(L".");
  Append(expr.GetColumnName());
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Set operators and wrappers

template <class SetOperator>
bool RqDumpout::PrintSetOperator(SetOperator& list, std::wstring_view word, bool bAll) {
  Append(L"(");
  const int numLists = list.GetNumLists();
  for (int i = 0; i < numLists; ++i) {
    if (RqAbstractList* const pBranch = list.GetIthList(i)) pBranch->Tour(*this);
    if (i + 1 == numLists) break;
    NewLine();
    Append(word);
    if (bAll) Append(L"All ");
    AppendNodeID(list);
    ShowTargetMarks(list);
    ShowChildIDs(list);
  }
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqUnion& unionNode) {
  KX_ASSERT(unionNode.GetNumLists() >= 2);
  return PrintSetOperator(unionNode, L"RqUnion ", unionNode.IsUnionAll());
}

bool RqDumpout::Visit(RqIntersect& intersectNode) {
  KX_ASSERT(intersectNode.GetNumLists() >= 2);
  return PrintSetOperator(intersectNode, L"RqIntersect ", intersectNode.IsIntersectAll());
}

bool RqDumpout::Visit(RqExcept& exceptNode) {
  KX_ASSERT(exceptNode.GetNumLists() >= 2);
  return PrintSetOperator(exceptNode, L"RqExcept ", exceptNode.IsExceptAll());
}

bool RqDumpout::Visit(RqSharedList& list) {
  NewLine();
  Append(L"RqSharedList sharing ");
  if (m_bDisplayNodeIDs) {
    const RqAbstractList* const pShared = list.GetSharedRqList();
    Append(pShared ? pShared->GetNodeID().ToString() : KXString(L"ERROR: Dangling NULL ptr"));
  }
  ShowChildIDs(list);
  return false;
}

bool RqDumpout::Visit(RqBreakFilter& filter) {
  NewLine();
  Append(L"RqBreakFilter ");
  AppendNodeID(filter);
  if (filter.IsShared()) Append(L" shared ");
  UInt16Vector numbers;
  filter.GetBreakColumnNumbers(numbers);
  AppendNumbers(numbers);
  if (filter.HasNoOrderByBreakColumnNumbers()) {
    Append(L" nob");
    filter.GetNoOrderByBreakColumnNumbers(numbers);
    AppendNumbers(numbers);
  }
  ShowChildIDs(filter);
  ShowTargetMarks(filter);
  ShowRownumOffsetLimit(filter);
  PrintDeeper(filter.GetInnerList());
  return true;
}

void RqDumpout::PrintWrapperHeader(RqAbstractList& list, std::wstring_view word) {
  NewLine();
  Append(word);
  AppendNodeID(list);
  ShowTargetMarks(list);
  ShowChildIDs(list);
}

template <class Entries>
void RqDumpout::PrintMolapJoins(const Entries& entries, std::wstring_view word) {
  for (const auto& [lists, indexes] : entries) {
    NewLine();
    Append(word);
    PrintDeeper(lists.second);
    Append(L"; actual join vectors: ");
    AppendNumbers(indexes.first);
    Append(L" = ");
    AppendNumbers(indexes.second);
  }
}

bool RqDumpout::Visit(RqMolapStarJoin& list) {
  PrintWrapperHeader(list, L"RqMolapStarJoin ");
  PrintDeeper(list.GetInnerList());
  StarJoinQueryAndJoinIndexVector entries;
  list.GetStarJoinQueriesAndJoinIndexes(entries);
  PrintMolapJoins(entries, L"[Star Join With] ");
  return true;
}

bool RqDumpout::Visit(RqMolapFilterJoin& list) {
  PrintWrapperHeader(list, L"RqMolapFilterJoin ");
  PrintDeeper(list.GetInnerList());
  FilterJoinQueryAndJoinIndexVector entries;
  list.GetFilterJoinQueriesAndJoinIndexes(entries);
  PrintMolapJoins(entries, L"[Filter Join With] ");
  return true;
}

bool RqDumpout::Visit(RqStats& list) {
  PrintWrapperHeader(list, L"RqStats ");
  return false;
}

bool RqDumpout::Visit(RqCanonicalMap& list) {
  PrintWrapperHeader(list, L"RqCanonicalMap ");
  return false;
}
