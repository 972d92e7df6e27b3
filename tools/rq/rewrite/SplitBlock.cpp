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
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "rq/rewrite/AggregateExprs.h"
#include "rq/rewrite/RequestNodes.h"
#include "rq/rewrite/RewriteRefusal.h"

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Looking

using TableIDs = std::set<VoidID>;

/// The tables of a FROM clause, by what columns name them by: logical ones by identifier, all others by number.
struct TablesOf {
  explicit TablesOf(RqJoinSpec& joinSpec) {
    std::list<RqIdentifiedTable*> tables;
    joinSpec.CollectIdentifiedTables(tables);
    for (const RqIdentifiedTable* const pTable : tables) {
      if (pTable->IsEntity()) {
        m_logical.insert(static_cast<const RqEntity*>(pTable)->GetID());
      } else {
        m_numbers.insert(pTable->GetTableNumber());
      }
    }
  }

  std::set<int> m_numbers;
  TableIDs m_logical;
};

/// Whether the reference is a column of a list that reads another one, wherever that stands.
bool IsOfSharedList(const RqNode& reference) {
  const RqNode* const pColumn = reference.GetParent();
  if (!pColumn || pColumn->GetObjectType() != kRqDerivedColumn) return false;
  const RqAbstractList* const pList = static_cast<const RqDerivedColumn*>(pColumn)->GetRqAbstractListContainer();
  return pList && pList->IsRqSharedList();
}

/// Whether the tree has an attribute of one of the logical tables that are seen there. A block hides those that it
/// reads itself, but not from its derived tables, which see what is seen around it.
bool HasAttributeOf(RqNode& tree, const TableIDs& seen, const TableIDs& seenAround) {
  KXThread::LowStackCheck(0);
  if (tree.IsAttribute()) return seen.contains(static_cast<const RqAttribute&>(tree).GetTableID());
  bool bFound = false;
  const auto look = [&](const TableIDs& below, const TableIDs& around) {
    ForEachNodeBelow(tree, [&](RqNode& node) { bFound = bFound || HasAttributeOf(node, below, around); });
  };
  auto* const pList = dynamic_cast<RqList*>(&tree);
  if (pList && pList->GetJoinSpec()) {
    TableIDs left = seen;
    for (const VoidID& tableID : TablesOf(*pList->GetJoinSpec()).m_logical) left.erase(tableID);
    look(left, seen);
  } else if (tree.GetObjectType() == kRqDerivedTable) {
    look(seenAround, seenAround);
  } else {
    look(seen, seenAround);
  }
  return bFound;
}

/// Whether a subquery in the tree has a column of one of the tables.
bool HasCorrelatedSubquery(RqNode& tree, const TablesOf& tables) {
  std::list<RqNode*> subqueries;
  FindNodes(&tree, RqNode::IsObjectType(kRqExprPhysicalSubquery), subqueries, false);
  bool bFound = false;
  for (RqNode* const pNode : subqueries) {
    RqAbstractList* const pBlock = static_cast<RqExprPhysicalSubquery*>(pNode)->GetSubqueryRqAbstractList();
    if (!pBlock) continue;
    bFound = bFound || HasAttributeOf(*pBlock, tables.m_logical, tables.m_logical);
    ForEachRequestNode(*pBlock, [&](RqNode& node) {
      if (node.GetObjectType() == kRqTargetColumn) {
        bFound |= tables.m_numbers.contains(static_cast<RqTargetColumn&>(node).GetSourceTableNumber());
      } else if (node.GetObjectType() == kRqDerivedColumnReference && !IsOfSharedList(node)) {
        bFound |= tables.m_numbers.contains(static_cast<RqDerivedColumnReference&>(node).GetSourceTableNumber());
      }
    });
  }
  return bFound;
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
bool IsOutOfReach(const RqNode& node, const TablesOf& tables) {
  if (node.IsAttribute()) return !tables.m_logical.contains(static_cast<const RqAttribute&>(node).GetTableID());
  if (node.GetObjectType() == kRqTargetColumn) {
    return !tables.m_numbers.contains(static_cast<const RqTargetColumn&>(node).GetSourceTableNumber());
  }
  if (node.GetObjectType() != kRqDerivedColumnReference) return false;
  const auto& reference = static_cast<const RqDerivedColumnReference&>(node);
  return !reference.IsValidDerivedColumnReference() || !tables.m_numbers.contains(reference.GetSourceTableNumber());
}

void RequireGrain(const std::vector<OwnedRqExprPtr>& grain, const TablesOf& tables) {
  const auto isConstant = [](const OwnedRqExprPtr& column) { return column->IsConstant(); };
  if (std::ranges::all_of(grain, isConstant)) throw RewriteRefusal("the grain has no column");
  for (const OwnedRqExprPtr& column : grain) {
    if (column->IsAggr() || HoldsAggregate(*column)) throw RewriteRefusal("a column of the grain holds an aggregate");
    if (FoundNodes(column.Get(), [&tables](const RqNode& node) { return IsOutOfReach(node, tables); })) {
      throw RewriteRefusal("a column of the grain is of no table of the block that is split");
    }
  }
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
      throw RewriteRefusal(TextOf(*pAggr, pRp) + " cannot be split: " + pReason);
    }
  }
  const TablesOf tables(*block.GetJoinSpec());
  RequireGrain(grain, tables);
  RequireGroupedAttributes(block, pRp);
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

/// CASE WHEN divisor <= 0 THEN NULL WHEN least = greatest OR variance < 0 THEN 0 ELSE the root of the variance: of a
/// single value a sample has no deviation, and of values that hardly differ rounding leaves a variance of either sign.
/// Takes all three.
OwnedRqExprPtr WithinBounds(OwnedRqExprPtr deviation, RqExpr* pLeast, RqExpr* pGreatest) {
  const RqExpr& variance = *deviation->GetIthOperand(0);
  const RqExpr& divisor = *variance.GetIthOperand(RqExprDivide::kRightOperand);
  const auto zero = [] { return new RqExprIntegerLiteral(0); };
  auto* const pNone = new RqExprCondLessEqual(divisor.DeepExprCopy(true), zero());
  auto* const pEqual = new RqExprCondEquality(pLeast, pGreatest, false);
  auto* const pBelow = new RqExprCondLess(variance.DeepExprCopy(true), zero());
  RqExprPairVector cases{{pNone, new RqExprNullLiteral}, {new RqExprCondOr(pEqual, pBelow), new RqExprFloatLiteral(0)}};
  return OwnedRqExprPtr(new RqExprIfCase(deviation.Release(), cases));
}

/// Rewrites expressions that are evaluated behind the grouping of a block, when inner has become its only table.
class OuterExprs {
 public:
  OuterExprs(RqList& inner, bool bGrandTotal) : m_inner(inner), m_bGrandTotal(bGrandTotal) {}

  /// What stands for an expression behind the grouping; both are owned by the caller.
  OwnedRqExprPtr Rewrite(OwnedRqExprPtr expr) const {
    KXThread::LowStackCheck(0);
    if (const RqExpr* const pColumn = FindGroupingColumn(m_inner.GetGroupBy(), *expr)) return ReferenceTo(*pColumn);
    if (expr->IsAggr() && IsOverRows(static_cast<const RqExprAggr&>(*expr))) {
      return Render(static_cast<const RqExprAggr&>(*expr));
    }
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
  /// Another aggregate of what the aggregate is over.
  template <class Aggr>
  RqExpr* RenderOver(const RqExprAggr& aggr) const {
    return Aggr(aggr.GetAggrExpr()->DeepExprCopy(true), nullptr, nullptr, false).RenderOnSummaryList(m_inner);
  }

  OwnedRqExprPtr Render(const RqExprAggr& aggr) const {
    OwnedRqExprPtr rendered(aggr.RenderOnSummaryList(m_inner));
    KX_ASSERT(rendered.Get());
    if (aggr.GetObjectType() == kRqExprAggrStddev) {
      RqExpr* const pLeast = RenderOver<RqExprAggrMin>(aggr);
      rendered = WithinBounds(std::move(rendered), pLeast, RenderOver<RqExprAggrMax>(aggr));
    }
    std::list<RqNode*> aggregates;
    FindNodes(rendered.Get(), RqNode::IsAggrNode(), aggregates, false);
    // The inner block has a row for each value of the compute break.
    for (RqNode* const pAggr : aggregates) static_cast<RqExprAggr*>(pAggr)->MarkComputeBreakRedundant();
    // Of no rows the inner block has no group.
    return m_bGrandTotal ? CountedOfNoRows(aggr, std::move(rendered)) : std::move(rendered);
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
  RenewCopiedIdentities(block);
}

int NextTableNumber(RqNode& request) {
  int last = 0;
  ForEachRequestNode(request, [&last](RqNode& node) {
    if (!node.IsAbstractTable() || !static_cast<RqAbstractTable&>(node).IsIdentifiedTable()) return;
    last = std::max(last, static_cast<RqIdentifiedTable&>(node).GetTableNumber());
  });
  return last + 1;
}
