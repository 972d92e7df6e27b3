#include "rq/sql/GroupingSets.h"

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

GroupingSets::Set Union(GroupingSets::Set set, const GroupingSets::Set& other) {
  set.insert(other.begin(), other.end());
  return set;
}

void RequireFewSets(std::size_t count, SqlNode node) {
  if (count > GroupingSets::kMaxSets) {
    throw SqlError(PlaceOfNode(node),
                   "there are more than " + std::to_string(GroupingSets::kMaxSets) + " grouping sets");
  }
}

bool IsGrouped(const RqNode& node, const RqGroupBy* pGroupBy) {
  const RqEquivalence equivalence;
  const auto* const pExpr = dynamic_cast<const RqExpr*>(&node);
  if (!pGroupBy || !pExpr) return false;
  for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
    if (equivalence(*pGroupBy->GetIthColumn(i), *pExpr)) return true;
  }
  return false;
}

/// The number of the table of a column; 0 for all else.
int TableNumberOf(const RqNode& node) {
  if (node.GetObjectType() == kRqTargetColumn) return static_cast<const RqTargetColumn&>(node).GetSourceTableNumber();
  if (node.GetObjectType() != kRqDerivedColumnReference) return 0;
  return static_cast<const RqDerivedColumnReference&>(node).GetSourceTableNumber();
}

/// Looks for columns that have no one value in a group.
class UngroupedColumns {
 public:
  UngroupedColumns(const RqGroupBy* pGroupBy, const std::set<int>& tables, const BlockAggregates& aggregates)
      : m_pGroupBy(pGroupBy), m_tables(tables), m_aggregates(aggregates) {}

  bool AreIn(const RqNode* pNode) {
    KXThread::LowStackCheck(0);
    if (!pNode || IsGrouped(*pNode, m_pGroupBy)) return false;
    // Its columns are those of another reader of the same list, wherever that stands.
    if (pNode->GetObjectType() == kRqSharedList) return false;
    if (m_tables.contains(TableNumberOf(*pNode))) return true;
    if (AreInChildren(*pNode)) return true;
    if (pNode->GetObjectType() != kRqExprPhysicalSubquery) return false;
    ++m_subqueryDepth;
    const bool bFound = AreIn(static_cast<const RqExprPhysicalSubquery*>(pNode)->GetSubqueryRqAbstractList());
    --m_subqueryDepth;
    return bFound;
  }

 private:
  bool AreInChildren(const RqNode& node) {
    int begin = 0;
    int end = node.GetNumChildren();
    const auto* const pAggr = dynamic_cast<const RqExprAggr*>(&node);
    // To an aggregate of a subquery a column of this block is one value.
    if (pAggr && m_subqueryDepth == 0 && !m_aggregates.IsOverBlock(pAggr)) {
      const bool bIsFilter = pAggr->GetObjectType() == kRqExprAggrIf;
      begin = bIsFilter ? RqExprAggr::kAggrExpr : RqExprAggr::kControlBreak;
      if (bIsFilter) end = begin + 1;
    }
    for (int i = begin; i < end; ++i) {
      if (AreIn(node.GetIthChild(i))) return true;
    }
    return false;
  }

  const RqGroupBy* m_pGroupBy;
  const std::set<int>& m_tables;
  const BlockAggregates& m_aggregates;
  int m_subqueryDepth = 0;
};

}  // namespace

GroupingSets::GroupingSets(SqlNode groupClause, const NumberColumn& numberColumn) : m_numberColumn(numberColumn) {
  for (const SqlNode item : groupClause.GetElements()) {
    m_bPlain &= item.GetKind() != "GroupingSet";
    const std::vector<Set> sets = Expand(item);
    RequireFewSets(m_sets.size() * sets.size(), item);
    std::vector<Set> product;
    for (const Set& set : m_sets) {
      for (const Set& other : sets) product.push_back(Union(set, other));
    }
    m_sets = std::move(product);
  }
}

/// The columns of an element: one, or those of a bracket.
GroupingSets::Set GroupingSets::ColumnsOf(SqlNode item) {
  if (item.GetKind() != "RowExpr") return {m_numberColumn(item)};
  Set columns;
  for (const SqlNode column : item.Get("args").GetElements()) columns.insert(m_numberColumn(column));
  return columns;
}

std::vector<GroupingSets::Set> GroupingSets::Expand(SqlNode item) {
  if (item.GetKind() != "GroupingSet") return {ColumnsOf(item)};
  const std::string_view kind = item.Get("kind").GetText();
  const std::vector<SqlNode> content = item.Get("content").GetElements();
  std::vector<Set> sets;
  if (kind == "GROUPING_SET_EMPTY") return {Set()};
  if (kind == "GROUPING_SET_SETS") {
    for (const SqlNode element : content) {
      for (Set& set : Expand(element)) sets.push_back(std::move(set));
    }
  } else if (kind == "GROUPING_SET_ROLLUP") {
    sets.push_back({});
    for (const SqlNode element : content) sets.push_back(Union(sets.back(), ColumnsOf(element)));
    sets = {sets.rbegin(), sets.rend()};
  } else if (kind == "GROUPING_SET_CUBE") {
    sets.push_back({});
    for (const SqlNode element : content) {
      RequireFewSets(2 * sets.size(), element);
      const Set columns = ColumnsOf(element);
      std::vector<Set> doubled;
      for (const Set& set : sets) {
        doubled.push_back(Union(set, columns));
        doubled.push_back(set);
      }
      sets = std::move(doubled);
    }
  } else {
    RaiseUnsupported(item, "this grouping");
  }
  RequireFewSets(sets.size(), item);
  return sets;
}

void RequireGrouped(const RqExpr& expr, const RqGroupBy* pGroupBy, const std::set<int>& tables,
                    const BlockAggregates& aggregates, SqlNode node) {
  if (!UngroupedColumns(pGroupBy, tables, aggregates).AreIn(&expr)) return;
  throw SqlError(PlaceOfNode(node), "this has a column that is not grouped by, and so no one value in a group");
}
