#include "Query/Optimizer/Request/Expressions/SQORRqExprUtility.h"

#include <list>

#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

// ---------------------------------------------------------------------------------------------------------------------
// Content maps

namespace {

/// Keeps the second operand of an aggregate out of its place, and puts it back when all went well.
class WithoutSecondOperand {
 public:
  explicit WithoutSecondOperand(const RqExpr& expr)
      // The expression is as it was in the end, and nobody else looks meanwhile.
      : m_expr(const_cast<RqExpr&>(expr)), m_operand(expr.IsAggr() ? m_expr.ReleaseIthChild(kOperand) : nullptr) {}
  WithoutSecondOperand(const WithoutSecondOperand&) = delete;
  WithoutSecondOperand& operator=(const WithoutSecondOperand&) = delete;

  void PutBack() {
    if (m_operand) m_expr.SetIthChild(kOperand, m_operand.Release());
  }

 private:
  static constexpr int kOperand = 1;

  RqExpr& m_expr;
  Heap<RqNode> m_operand;
};

}  // namespace

bool SourceContentMap::FindMapping(const RqExpr* pExpr, int& index) const {
  KX_ASSERT(m_pExprMap);
  KX_ASSERT(pExpr);
  WithoutSecondOperand withoutSecondOperand(*pExpr);
  const auto found = m_pExprMap->find(pExpr);
  withoutSecondOperand.PutBack();
  if (found == m_pExprMap->end()) return false;
  index = found->second;
  return true;
}

void SourceContentMapWrapper::InstallContentMap(const SourceContentMap& contentMap) {
  m_contentMap = contentMap;
  m_contentMap.SetExprMap(&m_exprMap);
  m_exprMap.clear();
  for (int row = 0; const LogicalToPhysical& mapping : m_contentMap) m_exprMap[mapping.first] = row++;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conjuncts

namespace {

template <class Comparison, class... Arguments>
RqExprCond* MakeWithOperandsOf(RqExprCond& cond, Arguments... arguments) {
  RqNode* const pLeft = cond.GetIthOperand(RqExprCondLess::kLeftOperand)->ReleaseFromParent();
  RqNode* const pRight = cond.GetIthOperand(RqExprCondLess::kRightOperand)->ReleaseFromParent();
  return new Comparison(static_cast<RqExpr*>(pLeft), static_cast<RqExpr*>(pRight), arguments...);
}

/// Whether the condition is one test of the top or bottom values.
bool IsRankTest(const RqExprCond& cond) {
  return FoundNodes(&cond, RqNode::IsObjectType({kRqExprAggrTopN, kRqExprAggrBottomN})) &&
         !FoundNodes(&cond, RqNode::IsObjectType({kRqExprCondAnd, kRqExprCondOr}));
}

/// not c  =>  c, in place.
void TakeNotOut(RqExprCondNot& notCond, OwnedRqExprCondPtr& conjunct, RqHandleNode& releaseContainer) {
  auto* const pInner = static_cast<RqExprCond*>(notCond.ReleaseIthChild(RqExprCondNot::kOperand));
  if (conjunct == &notCond) {
    conjunct = pInner;
  } else {
    notCond.Replace(pInner, releaseContainer);
  }
}

}  // namespace

RqExprCond* ConjunctUtility::InvertComparisonPredicate(RqExprCond* pCond) {
  if (!pCond->IsComparisonPredicate()) return nullptr;
  switch (pCond->GetObjectType()) {
    case kRqExprCondEquality:
      return MakeWithOperandsOf<RqExprCondNotEqual>(*pCond);
    case kRqExprCondNotEqual:
      return MakeWithOperandsOf<RqExprCondEquality>(*pCond, false);
    case kRqExprCondLess:
      return MakeWithOperandsOf<RqExprCondGreaterEqual>(*pCond);
    case kRqExprCondLessEqual:
      return MakeWithOperandsOf<RqExprCondGreater>(*pCond);
    case kRqExprCondGreater:
      return MakeWithOperandsOf<RqExprCondLessEqual>(*pCond);
    case kRqExprCondGreaterEqual:
      return MakeWithOperandsOf<RqExprCondLess>(*pCond);
    default:
      return nullptr;
  }
}

void ConjunctUtility::UnNegateTopNBottomNConjunct(OwnedRqExprCondPtr& conjunct, RqHandleNode& releaseContainer) {
  std::list<RqNode*> nots;
  FindNodes(conjunct.Get(), RqNode::IsObjectType(kRqExprCondNot), nots, false);
  for (RqNode* const pNode : nots) {
    auto& notCond = static_cast<RqExprCondNot&>(*pNode);
    RqExprCond* const innerCond = notCond.GetInnerOperand();
    KX_ASSERT(innerCond != NULL);
    if (!IsRankTest(*innerCond)) continue;
    if (RqExprCond* const pInverted = InvertComparisonPredicate(innerCond)) {
      innerCond->Replace(pInverted, releaseContainer);
    }
    TakeNotOut(notCond, conjunct, releaseContainer);
  }
}

void ConjunctUtility::UnNegateTopNBottomNConjuncts(OwnedRqExprCondVector& conjuncts, RqHandleNode& releaseContainer) {
  for (OwnedRqExprCondPtr& conjunct : conjuncts) UnNegateTopNBottomNConjunct(conjunct, releaseContainer);
}

// ---------------------------------------------------------------------------------------------------------------------
// Sweeps

void RqExprUtility::GetAllDerivedColumnReferences(const RqNode* pNode,
                                                  std::vector<RqDerivedColumnReference*>& references) {
  references.clear();
  std::list<RqNode*> nodes;
  FindNodes(const_cast<RqNode*>(pNode), RqNode::IsObjectType(kRqDerivedColumnReference), nodes, false);
  for (RqNode* const pReference : nodes) references.push_back(static_cast<RqDerivedColumnReference*>(pReference));
}

void RqExprUtility::RemoveExternalJoiningIndexes(RqExpr* pExpr) {
  std::list<RqNode*> externalData;
  FindNodes(pExpr, RqNode::IsObjectType(kRqExprExternalData), externalData, false);
  for (RqNode* const pNode : externalData) static_cast<RqExprExternalData*>(pNode)->RemoveExternalJoiningIndexVector();
}

// ---------------------------------------------------------------------------------------------------------------------
// Text

namespace {

/// "[a, b]"
template <class Elements, class TextOf>
KXString BracketedTexts(const Elements& elements, TextOf textOf) {
  KXString text = L"[";
  for (bool bFirst = true; const auto& element : elements) {
    if (!bFirst) text.append(L", ");
    bFirst = false;
    text.append(textOf(element));
  }
  return text.append(L"]");
}

KXString TextOfExpr(const RqExpr* pExpr, ARpGateway* pRp) {
  return RqDumpout::StringFrom(pExpr, false, true, pRp, false);
}

}  // namespace

KXString ToString(const LogicalToPhysical& mapping, ARpGateway* pRp) {
  KXString text = TextOfExpr(mapping.first, pRp) + L" -> " + TextOfExpr(mapping.second, pRp);
  if (mapping.m_pOverrideAggrRuleExpr) text += L" by " + TextOfExpr(mapping.m_pOverrideAggrRuleExpr, pRp);
  return text;
}

KXString ToString(const std::vector<LogicalToPhysical>& mappings, ARpGateway* pRp) {
  return BracketedTexts(mappings, [pRp](const LogicalToPhysical& mapping) { return ToString(mapping, pRp); });
}

KXString ToStringOfExprs(const ConstRqExprVector& exprs, ARpGateway* pRp) {
  return BracketedTexts(exprs, [pRp](const RqExpr* pExpr) { return TextOfExpr(pExpr, pRp); });
}

KXString ToString(const std::set<RqExpr*, LessEquivalentRqExpr>& exprs, ARpGateway* pRp) {
  return ToStringOfExprs(ConstRqExprVector(exprs.begin(), exprs.end()), pRp);
}
