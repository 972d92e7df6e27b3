#include "rq/rewrite/RequestNodes.h"

#include <set>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"

void ForEachNodeBelow(RqNode& node, const std::function<void(RqNode&)>& visit) {
  for (int i = 0; i < node.GetNumChildren(); ++i) {
    if (RqNode* const pChild = node.GetIthChild(i)) visit(*pChild);
  }
  if (node.GetObjectType() == kRqExprPhysicalSubquery) {
    RqAbstractList* const pBlock = static_cast<RqExprPhysicalSubquery&>(node).GetSubqueryRqAbstractList();
    if (pBlock) visit(*pBlock);
  }
  if (node.GetObjectType() == kRqJoinNode) {
    for (RqJoinLink* const pLink : static_cast<RqJoinNode&>(node).GetIncidentLinks()) {
      // A link stands on two nodes.
      if (pLink->GetInNode() == &node && pLink->GetJoinCond()) visit(*pLink->GetJoinCond());
    }
  }
}

void ForEachRequestNode(RqNode& root, const std::function<void(RqNode&)>& visit) {
  KXThread::LowStackCheck(0);
  ForEachNodeBelow(root, [&visit](RqNode& node) { ForEachRequestNode(node, visit); });
  visit(root);
}

void RenewCopiedIdentities(RqNode& root) {
  std::set<NodeID> met;
  ForEachRequestNode(root, [&met](RqNode& node) {
    if (met.insert(node.GetNodeID()).second) return;
    node.SetUniqueID();
    met.insert(node.GetNodeID());
  });
}
