#include "rq/rewrite/SplitBlock.h"

#include <algorithm>
#include <list>
#include <set>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/rewrite/AggregateExprs.h"
#include "rq/rewrite/RequestNodes.h"
#include "rq/rewrite/RewriteRefusal.h"

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Looking

std::set<int> TableNumbersOf(RqJoinSpec& joinSpec) {
  std::list<RqIdentifiedTable*> tables;
  joinSpec.CollectIdentifiedTables(tables);
  std::set<int> numbers;
  for (const RqIdentifiedTable* const pTable : tables) numbers.insert(pTable->GetTableNumber());
  return numbers;
}

/// Whether the reference is a column of a list that reads another one, wherever that stands.
bool IsOfSharedList(const RqNode& reference) {
  const RqNode* const pColumn = reference.GetParent();
  if (!pColumn || pColumn->GetObjectType() != kRqDerivedColumn) return false;
  const RqAbstractList* const pList = static_cast<const RqDerivedColumn*>(pColumn)->GetRqAbstractListContainer();
  return pList && pList->IsRqSharedList();
}

/// Whether a subquery in the tree has a column of one of the tables.
bool HasCorrelatedSubquery(RqNode& tree, const std::set<int>& tables) {
  std::list<RqNode*> subqueries;
  FindNodes(&tree, RqNode::IsObjectType(kRqExprPhysicalSubquery), subqueries, false);
  bool bFound = false;
  for (RqNode* const pNode : subqueries) {
    RqAbstractList* const pBlock = static_cast<RqExprPhysicalSubquery*>(pNode)->GetSubqueryRqAbstractList();
    if (!pBlock) continue;
    ForEachRequestNode(*pBlock, [&](RqNode& node) {
      if (node.GetObjectType() == kRqTargetColumn) {
        bFound |= tables.contains(static_cast<RqTargetColumn&>(node).GetSourceTableNumber());
      } else if (node.GetObjectType() == kRqDerivedColumnReference && !IsOfSharedList(node)) {
        bFound |= tables.contains(static_cast<RqDerivedColumnReference&>(node).GetSourceTableNumber());
      }
    });
  }
  return bFound;
}

/// The clauses of a block that are evaluated behind its grouping.
std::vector<RqNode*> ClausesBehindGrouping(RqList& block) {
  std::vector<RqNode*> clauses{block.GetProjection()};
  if (block.GetHaving()) clauses.push_back(block.GetHaving());
  return clauses;
}

// ---------------------------------------------------------------------------------------------------------------------
// Refusing

/// Why the aggregate cannot be split; null if it can.
const char* ReasonAgainst(const RqExprAggr& aggr) {
  if (aggr.IsAggrWrapper()) {
    if (aggr.GetObjectType() != kRqExprAggrIf) return "what stands around the aggregate cannot be taken inside it";
    return ReasonAgainst(*static_cast<const RqExprAggrIf&>(aggr).GetKernelExpr());
  }
  if (aggr.IsFunctionalAggregate() || aggr.GetObjectType() == kRqExprAggrRowNum) {
    return "its value depends on rows outside of the group";
  }
  if (aggr.GetControlBreak() && aggr.GetControlBreak()->GetNumColumns() > 0) return "it breaks at columns of its own";
  // A standard deviation says no, as it needs three partial values, and renders all the same.
  if (aggr.SupportsAggrSplitting()) return nullptr;
  if (aggr.IsDistinctAggregation()) return "values that are distinct in the parts may be the same in the whole";
  return aggr.GetObjectType() == kRqExprAggrStddev ? nullptr : "no partial values combine to it";
}

/// A column of the grain that another rewriting has put out of the block's reach.
bool IsOutOfReach(const RqNode& node, const std::set<int>& tables) {
  if (node.GetObjectType() == kRqTargetColumn) {
    return !tables.contains(static_cast<const RqTargetColumn&>(node).GetSourceTableNumber());
  }
  if (node.GetObjectType() != kRqDerivedColumnReference) return false;
  const auto& reference = static_cast<const RqDerivedColumnReference&>(node);
  return !reference.IsValidDerivedColumnReference() || !tables.contains(reference.GetSourceTableNumber());
}

void RequireSplittable(RqList& block, const std::vector<OwnedRqExprPtr>& grain, ARpGateway* pRp) {
  std::vector<RqExprAggr*> aggregates;
  for (RqNode* const pClause : ClausesBehindGrouping(block)) {
    const std::vector<RqExprAggr*> more = AggregatesOverRows(*pClause);
    aggregates.insert(aggregates.end(), more.begin(), more.end());
  }
  if (!block.GetJoinSpec() || (!block.GetGroupBy() && aggregates.empty())) {
    throw RewriteRefusal("the query does not group");
  }
  if (block.GetGroupBy() && block.GetGroupBy()->IsGroupingSet()) {
    throw RewriteRefusal("a query with grouping sets groups more than once and cannot be split");
  }
  for (const RqExprAggr* const pAggr : aggregates) {
    if (const char* const pReason = ReasonAgainst(*pAggr)) {
      throw RewriteRefusal(RqDumpout::StringFrom(pAggr, false, false, pRp).ToUTF8() + " cannot be split: " + pReason);
    }
  }
  const auto isConstant = [](const OwnedRqExprPtr& column) { return column->IsConstant(); };
  if (!block.GetGroupBy() && std::ranges::all_of(grain, isConstant)) throw RewriteRefusal("the grain has no column");
  const std::set<int> tables = TableNumbersOf(*block.GetJoinSpec());
  for (const OwnedRqExprPtr& column : grain) {
    if (column->IsAggr() || HoldsAggregate(*column)) throw RewriteRefusal("a column of the grain holds an aggregate");
    if (FoundNodes(column.Get(), [&tables](const RqNode& node) { return IsOutOfReach(node, tables); })) {
      throw RewriteRefusal("a column of the grain is of no table of the block that is split");
    }
  }
  for (RqNode* const pClause : ClausesBehindGrouping(block)) {
    if (HasCorrelatedSubquery(*pClause, tables)) {
      throw RewriteRefusal("a subquery in the select list or in HAVING refers to columns of the query");
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Splitting

/// filter(kernel(x)) becomes kernel(filter(x)), and of rows are counted those for which the filter has a value.
void TurnInsideOut(RqExprAggrIf& filter) {
  RqExprAggr* const pKernel = filter.GetKernelExpr();
  if (pKernel->GetObjectType() != kRqExprAggrCountStar) {
    filter.Unnest();
    filter.PullupAggr(true);
    return;
  }
  auto* const pCond = static_cast<RqExpr*>(filter.GetFilterExpr()->DeepCopy(true));
  auto* const pOne = new RqExprAggrIf(new RqExprIntegerLiteral(1), pCond, filter.IsForSecurityFilter());
  RqHandleNode replaced;
  filter.Replace(new RqExprAggrCount(pOne, nullptr, nullptr, false), replaced);
}

/// Rewrites expressions that are evaluated behind the grouping of a block, when inner has become its only table.
class OuterExprs {
 public:
  OuterExprs(RqList& inner, bool bGrandTotal) : m_inner(inner), m_bGrandTotal(bGrandTotal) {}

  /// What stands for an expression behind the grouping; both are owned by the caller.
  OwnedRqExprPtr Rewrite(OwnedRqExprPtr expr) const {
    KXThread::LowStackCheck(0);
    if (const RqExpr* const pColumn = GetGroupingColumn(*expr)) return ReferenceTo(*pColumn);
    if (expr->IsAggr() && !HoldsAggregate(*expr)) return Render(static_cast<const RqExprAggr&>(*expr));
    for (int i = 0; i < expr->GetNumOperands(); ++i) {
      if (!expr->GetIthOperand(i)) continue;
      OwnedRqExprPtr operand(static_cast<RqExpr*>(expr->ReleaseIthChild(i)));
      expr->SetIthOperand(i, Rewrite(std::move(operand)).Release());
    }
    return expr;
  }

  OwnedRqExprPtr ReferenceTo(const RqExpr& column) const {
    return OwnedRqExprPtr(new RqDerivedColumnReference(m_inner.GetProjection()->InsertColumnExpr(&column)));
  }

 private:
  const RqExpr* GetGroupingColumn(const RqExpr& expr) const {
    const RqEquivalence equivalence;
    const RqGroupBy& groupBy = *m_inner.GetGroupBy();
    for (int i = 0; i < groupBy.GetNumColumns(); ++i) {
      if (equivalence(expr, *groupBy.GetIthColumn(i))) return groupBy.GetIthColumn(i);
    }
    return nullptr;
  }

  OwnedRqExprPtr Render(const RqExprAggr& aggr) const {
    OwnedRqExprPtr rendered(aggr.RenderOnSummaryList(m_inner));
    KX_ASSERT(rendered.Get());
    std::list<RqNode*> aggregates;
    FindNodes(rendered.Get(), RqNode::IsAggrNode(), aggregates, false);
    // The inner block has a row for each value of the compute break.
    for (RqNode* const pAggr : aggregates) static_cast<RqExprAggr*>(pAggr)->MarkComputeBreakRedundant();
    const bool bCount = aggr.GetObjectType() == kRqExprAggrCount || aggr.GetObjectType() == kRqExprAggrCountStar;
    if (!bCount || !m_bGrandTotal) return rendered;
    // Of no rows the inner block has no group, and the sum of no counts is null.
    std::vector<RqExpr*> values{rendered.Release(), new RqExprIntegerLiteral(0)};
    return OwnedRqExprPtr(new RqExprCoalesce(values));
  }

  RqList& m_inner;
  bool m_bGrandTotal;
};

/// The inner block: tables and filters of the block, grouped at both grains.
Heap<RqList> TakeInnerBlock(RqList& block, const std::vector<OwnedRqExprPtr>& grain) {
  RqExprVector columns;
  if (const RqGroupBy* const pGroupBy = block.GetGroupBy()) {
    for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
      columns.push_back(pGroupBy->GetIthColumn(i)->DeepExprCopy(true));
    }
  }
  for (const OwnedRqExprPtr& column : grain) columns.push_back(column->DeepExprCopy(true));
  Heap<RqList> inner(new RqList(0));
  for (const int slot : {RqList::kJoinSpec, RqList::kDetailFilter, RqList::kSummaryFilter}) {
    if (block.GetIthChild(slot)) inner->SetIthChild(slot, block.ReleaseIthChild(slot));
  }
  Heap<RqGroupBy> groupBy(new RqGroupBy(columns, false));
  for (int i = 0; i < groupBy->GetNumColumns(); ++i) inner->GetProjection()->InsertColumnExpr(groupBy->GetIthColumn(i));
  inner->SetGroupBy(groupBy.Release());
  return inner;
}

RqJoinSpec* FromTable(Heap<RqAbstractTable> table) {
  Heap<RqTableReference> reference(
      new RqTableReference(SqlTableRef::kInnerJoin, table.Release(), nullptr, nullptr, kDriving_UnknownTable));
  std::vector<RqJoinNode*> nodes{new RqJoinNode(reference.Release(), false)};
  return new RqJoinSpec(nodes);
}

}  // namespace

void SplitBlock(RqList& block, const std::vector<OwnedRqExprPtr>& grain, int tableNumber, ARpGateway* pRp) {
  RequireSplittable(block, grain, pRp);
  for (RqNode* const pClause : ClausesBehindGrouping(block)) {
    for (RqExprAggr* const pAggr : AggregatesOverRows(*pClause)) {
      if (pAggr->IsAggrWrapper()) TurnInsideOut(static_cast<RqExprAggrIf&>(*pAggr));
    }
  }

  Heap<RqList> owned = TakeInnerBlock(block, grain);
  RqList& inner = *owned;
  block.SetJoinSpec(FromTable(Heap<RqAbstractTable>(new RqDerivedTable(owned.Release(), tableNumber))));
  const OuterExprs exprs(inner, !block.GetGroupBy());
  if (const RqGroupBy* const pGroupBy = block.GetGroupBy()) {
    RqExprVector columns;
    for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
      columns.push_back(exprs.ReferenceTo(*pGroupBy->GetIthColumn(i)).Release());
    }
    block.SetGroupBy(new RqGroupBy(columns, false));
  }
  for (int i = 0; i < block.GetProjection()->GetNumColumns(); ++i) {
    RqDerivedColumn& column = *block.GetProjection()->GetIthColumn(i);
    OwnedRqExprPtr expr(static_cast<RqExpr*>(column.ReleaseIthChild(RqDerivedColumn::kExpr)));
    column.SetExpr(exprs.Rewrite(std::move(expr)).Release());
  }
  if (RqHaving* const pHaving = block.GetHaving()) {
    OwnedRqExprPtr cond(pHaving->ReleaseCond());
    pHaving->SetCond(static_cast<RqExprCond*>(exprs.Rewrite(std::move(cond)).Release()));
  }
}

int NextTableNumber(RqNode& request) {
  int last = 0;
  ForEachRequestNode(request, [&last](RqNode& node) {
    if (!node.IsAbstractTable() || !static_cast<RqAbstractTable&>(node).IsIdentifiedTable()) return;
    last = std::max(last, static_cast<RqIdentifiedTable&>(node).GetTableNumber());
  });
  return last + 1;
}
