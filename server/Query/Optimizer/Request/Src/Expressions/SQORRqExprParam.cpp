#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"

#include <functional>

#include "Host/DataBlobUtil.h"

RqExprParam::RqExprParam(const RqExprParam& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_paramNumber(rhs.m_paramNumber),
      m_typeInfo(rhs.m_typeInfo),
      m_paramControlBlock(rhs.m_paramControlBlock) {}

bool RqExprParam::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqNodeImpl::IsEquivalent(rhs, pred) && m_paramNumber == static_cast<const RqExprParam&>(rhs).m_paramNumber;
}

bool RqExprParam::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, std::mem_fn(&RqExprParam::GetParamNumber));
}

void RqExprParam::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_paramNumber);
}

const_iterator RqExprParam::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_paramNumber);
}
