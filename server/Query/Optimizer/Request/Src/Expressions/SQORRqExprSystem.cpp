#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"

#include "Host/BaseStringUtil.h"

RqExprEvaluate::RqExprEvaluate(const RqExprEvaluate& rhs, bool bNewIDs, bool bDeepCopy)
    : RqScalarFunction(rhs, bNewIDs, bDeepCopy),
      m_microExpr(rhs.m_microExpr ? rhs.m_microExpr->DeepExprCopy(bNewIDs) : nullptr),
      m_stickyType(rhs.m_stickyType),
      m_functionDef(rhs.m_functionDef),
      m_userDefinedFuncName(rhs.m_userDefinedFuncName),
      m_typingParams(rhs.m_typingParams) {}

bool RqExprEvaluate::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return rhs.GetObjectType() == kRqExprEvaluate &&
         BaseStringUtil::IsCaseInsensitiveMatch(m_functionDef, static_cast<const RqExprEvaluate&>(rhs).m_functionDef) &&
         RqScalarFunction::IsEquivalent(rhs, pred);
}

bool RqExprEvaluate::IsShallowLessThan(const RqExpr& rhs) const {
  if (rhs.GetObjectType() != kRqExprEvaluate) return RqScalarFunction::IsShallowLessThan(rhs);
  return BaseStringUtil::IsCaseInsensitiveLessThan(m_functionDef,
                                                   static_cast<const RqExprEvaluate&>(rhs).m_functionDef);
}

void RqExprEvaluate::ToByteVector(ByteVector& bv) {
  DataBlobUtil::ToByteVector(bv, m_functionDef);
  RqScalarFunction::ToByteVector(bv);
}

const_iterator RqExprEvaluate::FromByteVector(const_iterator start) {
  return RqScalarFunction::FromByteVector(DataBlobUtil::FromByteVector(start, m_functionDef));
}
