#include "rq/rewrite/RequestNodes.h"

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"

void ForEachRequestNode(RqNode& root, const std::function<void(RqNode&)>& visit) {
  KXThread::LowStackCheck(0);
  for (int i = 0; i < root.GetNumChildren(); ++i) {
    if (RqNode* const pChild = root.GetIthChild(i)) ForEachRequestNode(*pChild, visit);
  }
  if (root.GetObjectType() == kRqExprPhysicalSubquery) {
    RqAbstractList* const pBlock = static_cast<RqExprPhysicalSubquery&>(root).GetSubqueryRqAbstractList();
    if (pBlock) ForEachRequestNode(*pBlock, visit);
  }
  if (root.GetObjectType() == kRqJoinNode) {
    for (RqJoinLink* const pLink : static_cast<RqJoinNode&>(root).GetIncidentLinks()) {
      // A link stands on two nodes.
      if (pLink->GetInNode() == &root && pLink->GetJoinCond()) ForEachRequestNode(*pLink->GetJoinCond(), visit);
    }
  }
  visit(root);
}
