#include "rq/RowIns.h"

#include <utility>
#include <vector>

#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

namespace {

/// The INs over rows that are not right under a NOT and whose negations satisfy the predicate: whether a NOT reaches
/// it, and the IN itself.
template <class Predicate>
std::vector<RqExprCondMultiColumnIn*> FindRowIns(RqExprCond& root, Predicate predicate) {
  std::vector<RqExprCondMultiColumnIn*> found;
  std::vector<std::pair<RqExprCond*, bool>> work{{&root, false}};
  while (!work.empty()) {
    const auto [pCond, bNegated] = work.back();
    work.pop_back();
    if (pCond->IsAndCond() || pCond->IsOrCond()) {
      for (int i = 0; i < pCond->GetNumOperands(); ++i) {
        work.emplace_back(static_cast<RqExprCond*>(pCond->GetIthOperand(i)), bNegated);
      }
    } else if (pCond->IsNotConnective()) {
      RqExprCond* const pInner = static_cast<RqExprCondNot*>(pCond)->GetInnerOperand();
      if (!pInner->IsCanonicalAtomicPredicate()) work.emplace_back(pInner, !bNegated);
    } else if (pCond->GetObjectType() == kRqExprCondMultiColumnIn) {
      auto* const pRowIn = static_cast<RqExprCondMultiColumnIn*>(pCond);
      if (predicate(bNegated, *pRowIn)) found.push_back(pRowIn);
    }
  }
  return found;
}

/// Puts NOT (r NOT IN q) in the place of r IN q. A NOT that reaches it then meets the one here, which needs no rule.
void NegateTwice(RqExprCondMultiColumnIn& rowIn) {
  RqNode& parent = *rowIn.GetParent();
  const int place = parent.FindChildIndex(&rowIn);
  parent.ReleaseIthChild(place);
  rowIn.Negate();
  parent.SetIthChild(place, new RqExprCondNot(&rowIn));
}

}  // namespace

void ExpandRowInsToNegate(RqExprCond& root) {
  RqHandleNode replaced;
  const auto isToNegate = [](bool bNegated, const RqExprCondMultiColumnIn&) { return bNegated; };
  for (RqExprCondMultiColumnIn* const pRowIn : FindRowIns(root, isToNegate)) {
    if (RqExprCond* const pExpanded = pRowIn->Expand()) {
      pRowIn->Replace(pExpanded, replaced);
    } else {
      NegateTwice(*pRowIn);
    }
  }
}

void ExpandNegatedRowIns(OwnedRqExprCondPtr& root) {
  RqHandleNode replaced;
  const auto isNegated = [](bool bNegated, const RqExprCondMultiColumnIn& rowIn) {
    return bNegated || rowIn.IsNegated();
  };
  for (RqExprCondMultiColumnIn* const pRowIn : FindRowIns(*root, isNegated)) {
    RqExprCond* const pExpanded = pRowIn->Expand();
    if (root == pRowIn) {
      root = pExpanded;
      return;  // it was all there was
    }
    pRowIn->Replace(pExpanded, replaced);
  }
}
