#include "Query/Optimizer/Request/Text/SQORToString.h"

#include <string_view>

#include "Host/BaseStringUtil.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

/// "[a, b]" with ", " as the separator.
template <class Elements, class TextOf>
KXString Joined(const Elements& elements, std::wstring_view separator, TextOf textOf) {
  KXString text(L"[");
  for (bool bFirst = true; const auto& element : elements) {
    if (!bFirst) text.append(separator);
    bFirst = false;
    text.append(textOf(element));
  }
  return text.append(L"]");
}

template <class Numbers>
KXString JoinedNumbers(const Numbers& numbers) {
  return Joined(numbers, L",", [](auto number) { return BaseStringUtil::StringFrom(number); });
}

template <class OwnedExprs>
ConstRqExprVector Lent(const OwnedExprs& exprs) {
  ConstRqExprVector lent;
  lent.reserve(exprs.size());
  for (const auto& expr : exprs) lent.push_back(expr.Get());
  return lent;
}

KXString IdentityOf(const RqJoinNode* pNode) { return pNode ? pNode->GetNodeID().ToString() : KXString(); }

KXString TextOf(const RqJoinLink& link, ARpGateway* pRp, bool bShowCondition) {
  KXString text(L"(InNode:");
  text.append(IdentityOf(link.GetInNode()));
  text.append(L") (OutNode:").append(IdentityOf(link.GetOutNode())).append(L") ");
  if (!bShowCondition) return text;
  text.append(ToString(link.GetJoinCond(), pRp));
  return text.append(link.AlreadyAttachedCond() ? L" attached" : L" not_attached");
}

}  // namespace

KXString ToString(const RqNode& node, ARpGateway* pRp) { return RqDumpout::StringFrom(node, false, true, pRp); }

KXString ToString(const RqNode* pNode, ARpGateway* pRp) { return pNode ? ToString(*pNode, pRp) : KXString(); }

KXString ToString(const std::vector<int>& numbers, ARpGateway*) {
  KXString text(L" [");
  for (const int number : numbers) text.append(L" ").append(BaseStringUtil::StringFrom(number));
  return text.append(L" ]");
}

KXString ToString(const UInt16Vector& numbers, ARpGateway*) { return JoinedNumbers(numbers); }

KXString ToString(const std::vector<unsigned int>& numbers, ARpGateway*) { return JoinedNumbers(numbers); }

KXString ToString(const ConstRqExprVector& exprs, ARpGateway* pRp) { return ToStringOfExprs(exprs, pRp); }

KXString ToString(const RqExprVector& exprs, ARpGateway* pRp) {
  return ToStringOfExprs(ConstRqExprVector(exprs.begin(), exprs.end()), pRp);
}

KXString ToString(const std::vector<Heap<RqExpr>>& exprs, ARpGateway* pRp) { return ToStringOfExprs(Lent(exprs), pRp); }

KXString ToString(const KXNodeVector<Heap<RqExprCond>>& conds, ARpGateway* pRp) {
  return ToStringOfExprs(Lent(conds), pRp);
}

KXString ToString(const std::vector<std::pair<RqExpr*, RqExpr*>>& pairs, ARpGateway* pRp) {
  return Joined(pairs, L", ", [pRp](const std::pair<RqExpr*, RqExpr*>& pair) {
    return ToString(pair.second, pRp) + L" as " + ToString(pair.first, pRp);
  });
}

KXString ToString(const std::list<RqJoinLink*, KXNodeStdAlloc<RqJoinLink*>>& links, ARpGateway* pRp,
                  bool bShowConditions) {
  return Joined(links, L", ", [=](const RqJoinLink* pLink) { return TextOf(*pLink, pRp, bShowConditions); });
}
