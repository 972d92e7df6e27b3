#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

namespace {

/// Makes the expressions the operands of a new node, in order.
void TakeOperands(RqExpr& node, RqExprVector& exprs) {
  for (RqExpr* const pExpr : exprs) node.AddChild(pExpr);
  exprs.clear();
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// RqExprEvaluatePredicate

RqExprEvaluatePredicate::RqExprEvaluatePredicate(RqExprVector& exprs, bool bNegated) : m_bNegated(bNegated) {
  TakeOperands(*this, exprs);
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
  const RqNodeType_e rhsType = rhs.GetObjectType();
  if (rhsType != kRqExprEvaluatePredicate) return kRqExprEvaluatePredicate < rhsType;
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

RqExprCondAtomicWrapper::RqExprCondAtomicWrapper(RqExpr* pExpr) {
  KX_ASSERT(pExpr);
  KX_ASSERT(pExpr->IsCond());
  AddChild(pExpr);
}

RqExprCond* RqExprCondAtomicWrapper::GetInnerCond() {
  KX_ASSERT(GetIthOperand(kOperand) && GetIthOperand(kOperand)->IsCond());
  return static_cast<RqExprCond*>(GetIthOperand(kOperand));
}

RqExprCond* RqExprCondAtomicWrapper::ReplaceWithInnerCond() {
  RqExprCond* const pInnerCond = GetInnerCond();
  ReleaseIthChild(kOperand);
  RqHandleNode removed;
  Replace(pInnerCond, removed);
  return pInnerCond;
}

bool RqExprCondAtomicWrapper::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return rhs.GetObjectType() == kRqExprCondAtomicWrapper &&
         pred(*GetInnerCond(), *static_cast<const RqExprCondAtomicWrapper&>(rhs).GetInnerCond());
}

bool RqExprCondAtomicWrapper::IsShallowLessThan(const RqExpr& rhs) const {
  const RqNodeType_e rhsType = rhs.GetObjectType();
  if (rhsType != kRqExprCondAtomicWrapper) return kRqExprCondAtomicWrapper < rhsType;
  return GetInnerCond()->IsShallowLessThan(*static_cast<const RqExprCondAtomicWrapper&>(rhs).GetInnerCond());
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprCondOuterJoinFilter

RqExprCondOuterJoinFilter::RqExprCondOuterJoinFilter(RqExpr* pExpr, SqlTableRef::JoinType joinType)
    : m_JoinType(joinType) {
  KX_ASSERT(pExpr);
  KX_ASSERT(pExpr->IsCond());
  AddChild(pExpr);
}

RqExprCondOuterJoinFilter::RqExprCondOuterJoinFilter(const RqExprCondOuterJoinFilter& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_JoinType(rhs.m_JoinType) {}

RqExprCond* RqExprCondOuterJoinFilter::GetInnerCond() {
  KX_ASSERT(GetIthOperand(kOperand) && GetIthOperand(kOperand)->IsCond());
  return static_cast<RqExprCond*>(GetIthOperand(kOperand));
}

bool RqExprCondOuterJoinFilter::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (rhs.GetObjectType() != kRqExprCondOuterJoinFilter) return false;
  const auto& rhsFilter = static_cast<const RqExprCondOuterJoinFilter&>(rhs);
  return m_JoinType == rhsFilter.m_JoinType && pred(*GetInnerCond(), *rhsFilter.GetInnerCond());
}

bool RqExprCondOuterJoinFilter::IsShallowLessThan(const RqExpr& rhs) const {
  const RqNodeType_e rhsType = rhs.GetObjectType();
  if (rhsType != kRqExprCondOuterJoinFilter) return kRqExprCondOuterJoinFilter < rhsType;
  const auto& rhsFilter = static_cast<const RqExprCondOuterJoinFilter&>(rhs);
  return m_JoinType < rhsFilter.m_JoinType || GetInnerCond()->IsShallowLessThan(*rhsFilter.GetInnerCond());
}

void RqExprCondOuterJoinFilter::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, static_cast<std::int16_t>(m_JoinType));
}

const_iterator RqExprCondOuterJoinFilter::FromByteVector(const_iterator start) {
  start = RqNodeImpl::FromByteVector(start);
  return DataBlobUtil::FromByteVector<std::int16_t>(start, m_JoinType, SqlTableRef::kNaturalJoin);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprCondGroupByContent

RqExprCondGroupByContent::RqExprCondGroupByContent(RqExprVector& groupByExprs) { TakeOperands(*this, groupByExprs); }

void RqExprCondGroupByContent::GetGroupByExprs(RqExprVector& groupByExprs) {
  groupByExprs.resize(static_cast<std::size_t>(GetNumOperands()));
  for (int i = 0; i < GetNumOperands(); ++i) groupByExprs[static_cast<std::size_t>(i)] = GetIthOperand(i);
}
