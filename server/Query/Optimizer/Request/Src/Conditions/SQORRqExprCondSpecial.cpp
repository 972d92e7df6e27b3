#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqExprEvaluatePredicate

RqExprEvaluatePredicate::RqExprEvaluatePredicate(RqExprVector& exprs, bool bNegated) : m_bNegated(bNegated) {
  TakeOperands(exprs);
}

RqExprEvaluatePredicate::RqExprEvaluatePredicate(const RqExprEvaluatePredicate& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_bNegated(rhs.m_bNegated),
      m_functionDef(rhs.m_functionDef),
      m_userDefinedFuncName(rhs.m_userDefinedFuncName) {}

bool RqExprEvaluatePredicate::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return rhs.GetObjectType() == kRqExprEvaluatePredicate &&
         BaseStringUtil::IsCaseInsensitiveMatch(m_functionDef,
                                                static_cast<const RqExprEvaluatePredicate&>(rhs).m_functionDef) &&
         RqExpr::IsEquivalent(rhs, pred);
}

bool RqExprEvaluatePredicate::IsShallowLessThan(const RqExpr& rhs) const {
  if (rhs.GetObjectType() != kRqExprEvaluatePredicate) return RqNodeImpl::IsShallowLessThan(rhs);
  return BaseStringUtil::IsCaseInsensitiveLessThan(m_functionDef,
                                                   static_cast<const RqExprEvaluatePredicate&>(rhs).m_functionDef);
}

void RqExprEvaluatePredicate::ToByteVector(ByteVector& bv) {
  DataBlobUtil::ToByteVector(bv, m_functionDef);
  DataBlobUtil::ToByteVector(bv, m_bNegated);
  RqNodeImpl::ToByteVector(bv);
}

const_iterator RqExprEvaluatePredicate::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, m_functionDef);
  start = DataBlobUtil::FromByteVector(start, m_bNegated);
  return RqNodeImpl::FromByteVector(start);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprCondAtomicWrapper

RqExprCond* RqExprCondAtomicWrapper::ReplaceWithInnerCond() {
  RqExprCond* const pInnerCond = GetInnerCond();
  ReleaseIthChild(kOperand);
  RqHandleNode removed;
  Replace(pInnerCond, removed);
  return pInnerCond;
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprCondOuterJoinFilter

RqExprCondOuterJoinFilter::RqExprCondOuterJoinFilter(RqExpr* pExpr, SqlTableRef::JoinType joinType)
    : RqExprCondWrapper(pExpr), m_JoinType(joinType) {}

RqExprCondOuterJoinFilter::RqExprCondOuterJoinFilter(const RqExprCondOuterJoinFilter& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExprCondWrapper(rhs, bNewIDs, bDeepCopy), m_JoinType(rhs.m_JoinType) {}

bool RqExprCondOuterJoinFilter::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqExprCondWrapper::IsEquivalent(rhs, pred) &&
         m_JoinType == static_cast<const RqExprCondOuterJoinFilter&>(rhs).m_JoinType;
}

bool RqExprCondOuterJoinFilter::IsShallowLessThan(const RqExpr& rhs) const {
  return (rhs.GetObjectType() == kRqExprCondOuterJoinFilter &&
          m_JoinType < static_cast<const RqExprCondOuterJoinFilter&>(rhs).m_JoinType) ||
         RqExprCondWrapper::IsShallowLessThan(rhs);
}

void RqExprCondOuterJoinFilter::ToByteVector(ByteVector& bv) {
  RqExprCondWrapper::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, static_cast<std::int16_t>(m_JoinType));
}

const_iterator RqExprCondOuterJoinFilter::FromByteVector(const_iterator start) {
  start = RqExprCondWrapper::FromByteVector(start);
  return DataBlobUtil::FromByteVector<std::int16_t>(start, m_JoinType, SqlTableRef::kNaturalJoin);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprCondGroupByContent

RqExprCondGroupByContent::RqExprCondGroupByContent(RqExprVector& groupByExprs) { TakeOperands(groupByExprs); }

void RqExprCondGroupByContent::GetGroupByExprs(RqExprVector& groupByExprs) {
  groupByExprs.resize(static_cast<std::size_t>(GetNumOperands()));
  for (int i = 0; i < GetNumOperands(); ++i) groupByExprs[static_cast<std::size_t>(i)] = GetIthOperand(i);
}
