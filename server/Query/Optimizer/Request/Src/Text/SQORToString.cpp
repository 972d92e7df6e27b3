#include "Query/Optimizer/Request/Text/SQORToString.h"

#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

KXString IdentityOf(const RqJoinNode* pNode) { return pNode ? pNode->GetNodeID().ToString() : KXString(); }

}  // namespace

KXString ToString(const std::list<RqJoinLink*>& links, ARpGateway* pRp, bool bShowConditions) {
  KXString text(L"[");
  for (const RqJoinLink* const pLink : links) {
    if (pLink != links.front()) text.append(L", ");
    text.append(L"(InNode:").append(IdentityOf(pLink->GetInNode()));
    text.append(L") (OutNode:").append(IdentityOf(pLink->GetOutNode())).append(L") ");
    if (!bShowConditions) continue;
    text.append(RqDumpout::StringFrom(pLink->GetJoinCond(), false, true, pRp));
    text.append(pLink->AlreadyAttachedCond() ? L" attached" : L" not_attached");
  }
  return text.append(L"]");
}
