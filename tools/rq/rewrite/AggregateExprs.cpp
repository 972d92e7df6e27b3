#include "rq/rewrite/AggregateExprs.h"

#include <list>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "rq/rewrite/RewriteRefusal.h"

bool HoldsAggregate(const RqExpr& expr) {
  for (int i = 0; i < expr.GetNumOperands(); ++i) {
    if (FoundNodes(expr.GetIthOperand(i), RqNode::IsAggrNode())) return true;
  }
  return false;
}

bool IsOverRows(const RqExprAggr& aggr) { return aggr.IsAggrWrapper() || !HoldsAggregate(aggr); }

std::vector<RqExprAggr*> AggregatesOverRows(RqNode& tree) {
  std::list<RqNode*> nodes;
  FindNodes(&tree, RqNode::IsAggrNode(), nodes, false);
  std::vector<RqExprAggr*> aggregates;
  for (RqNode* const pNode : nodes) {
    auto* const pAggr = static_cast<RqExprAggr*>(pNode);
    const RqNode* const pParent = pAggr->GetParent();
    const bool bInWrapper = pParent && pParent->IsExpr() && static_cast<const RqExpr*>(pParent)->IsAggrWrapper();
    if (!bInWrapper && IsOverRows(*pAggr)) aggregates.push_back(pAggr);
  }
  return aggregates;
}

std::vector<RqNode*> ClausesBehindGrouping(RqList& block) {
  std::vector<RqNode*> clauses{block.GetProjection()};
  if (block.GetHaving()) clauses.push_back(block.GetHaving());
  return clauses;
}

const RqExpr* FindGroupingColumn(const RqGroupBy* pGroupBy, const RqExpr& expr) {
  const RqEquivalence equivalence;
  for (int i = 0; pGroupBy && i < pGroupBy->GetNumColumns(); ++i) {
    if (equivalence(expr, *pGroupBy->GetIthColumn(i))) return pGroupBy->GetIthColumn(i);
  }
  return nullptr;
}

namespace {

/// Null if there is none.
const RqNode* FindUngroupedAttribute(const RqNode& tree, const RqGroupBy* pGroupBy) {
  KXThread::LowStackCheck(0);
  if (tree.IsExpr() && FindGroupingColumn(pGroupBy, static_cast<const RqExpr&>(tree))) return nullptr;
  if (tree.IsAttribute()) return &tree;
  if (tree.IsAggr() && IsOverRows(static_cast<const RqExprAggr&>(tree))) return nullptr;
  for (int i = 0; i < tree.GetNumChildren(); ++i) {
    const RqNode* const pChild = tree.GetIthChild(i);
    const RqNode* const pFound = pChild ? FindUngroupedAttribute(*pChild, pGroupBy) : nullptr;
    if (pFound) return pFound;
  }
  return nullptr;
}

}  // namespace

void RequireGroupedAttributes(RqList& block, ARpGateway* pRp) {
  for (const RqNode* const pClause : ClausesBehindGrouping(block)) {
    if (const RqNode* const pAttribute = FindUngroupedAttribute(*pClause, block.GetGroupBy())) {
      throw RewriteRefusal(TextOf(*pAttribute, pRp) + " is not grouped by and stands outside of an aggregate");
    }
  }
}

OwnedRqExprPtr CountedOfNoRows(const RqExprAggr& aggr, OwnedRqExprPtr rendered) {
  const bool bCount = aggr.GetObjectType() == kRqExprAggrCount || aggr.GetObjectType() == kRqExprAggrCountStar;
  if (!bCount) return rendered;
  std::vector<RqExpr*> values{rendered.Release(), new RqExprIntegerLiteral(0)};
  return OwnedRqExprPtr(new RqExprCoalesce(values));
}
