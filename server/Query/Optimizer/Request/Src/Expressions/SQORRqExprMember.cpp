#include "Query/Optimizer/Request/Expressions/SQORRqExprMember.h"

#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

bool RqExprIDOf::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!m_bConstant) return RqScalarFunction::IsEquivalent(rhs, pred);
  return rhs.GetObjectType() == kRqExprIntegerLiteral && static_cast<const RqExprIntegerLiteral&>(rhs).GetValue() == 1;
}

bool RqExprTimeDimSeqNum::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprTimeDimSeqNum& expr) { return expr.m_timeLevel.GetID(); });
}
