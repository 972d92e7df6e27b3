#include "rq/rewrite/AggregateExprs.h"

#include <list>

#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

bool HoldsAggregate(const RqExpr& expr) {
  for (int i = 0; i < expr.GetNumOperands(); ++i) {
    if (FoundNodes(expr.GetIthOperand(i), RqNode::IsAggrNode())) return true;
  }
  return false;
}

std::vector<RqExprAggr*> AggregatesOverRows(RqNode& tree) {
  std::list<RqNode*> nodes;
  FindNodes(&tree, RqNode::IsAggrNode(), nodes, false);
  std::vector<RqExprAggr*> aggregates;
  for (RqNode* const pNode : nodes) {
    auto* const pAggr = static_cast<RqExprAggr*>(pNode);
    const RqNode* const pParent = pAggr->GetParent();
    const bool bInWrapper = pParent && pParent->IsExpr() && static_cast<const RqExpr*>(pParent)->IsAggrWrapper();
    if (!bInWrapper && (pAggr->IsAggrWrapper() || !HoldsAggregate(*pAggr))) aggregates.push_back(pAggr);
  }
  return aggregates;
}
