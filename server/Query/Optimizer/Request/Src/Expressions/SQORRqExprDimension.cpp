#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"

#include <compare>
#include <tuple>

// Dimension

RqExprDimension::RqExprDimension(ARpGateway* pRp, const VoidID& objID, const VoidID& presentationHierarchyID)
    : m_objID(objID),
      m_repositoryUniqueID(pRp->GetRepositoryUniqueID32()),
      m_presentationHierarchyID(presentationHierarchyID) {}

RqExprDimension::RqExprDimension(const RqExprDimension& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_objID(rhs.m_objID),
      m_repositoryUniqueID(rhs.m_repositoryUniqueID),
      m_presentationHierarchyID(rhs.m_presentationHierarchyID) {}

int RqExprDimension::Compare(const RqExprDimension& rhs) const {
  const auto key = [](const RqExprDimension& e) {
    return std::tie(e.m_objID, e.m_repositoryUniqueID, e.m_presentationHierarchyID);
  };
  const std::strong_ordering order = key(*this) <=> key(rhs);
  return order < 0 ? -1 : order > 0;
}

bool RqExprDimension::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqNodeImpl::IsEquivalent(rhs, pred) && Compare(static_cast<const RqExprDimension&>(rhs)) == 0;
}

bool RqExprDimension::IsShallowLessThan(const RqExpr& rhs) const {
  if (GetObjectType() != rhs.GetObjectType()) return RqNodeImpl::IsShallowLessThan(rhs);
  return Compare(static_cast<const RqExprDimension&>(rhs)) < 0;
}

void RqExprDimension::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqExprDimension::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

// Level

RqExprLevel::RqExprLevel(ARpGateway* pRp, const VoidID& objID, LevelType levelType)
    : m_objID(objID), m_repositoryUniqueID(pRp->GetRepositoryUniqueID32()), m_levelType(levelType) {}

RqExprLevel::RqExprLevel(const RqExprLevel& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_objID(rhs.m_objID),
      m_repositoryUniqueID(rhs.m_repositoryUniqueID),
      m_levelType(rhs.m_levelType) {}

bool RqExprLevel::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqNodeImpl::IsEquivalent(rhs, pred)) return false;
  const auto& right = static_cast<const RqExprLevel&>(rhs);
  return m_repositoryUniqueID == right.m_repositoryUniqueID && m_objID == right.m_objID;
}

bool RqExprLevel::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs,
                                [](const RqExprLevel& e) { return std::tie(e.m_objID, e.m_repositoryUniqueID); });
}

void RqExprLevel::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqExprLevel::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

// Member

RqExprMemberReference::RqExprMemberReference(RqExprLevel* pLevel, RqExprLiteral* pMemberValue) {
  SetNumOperands(kNumOperands);
  SetIthOperand(kLevelOperand, pLevel);
  SetIthOperand(kValueOperand, pMemberValue);
}

void RqExprMemberReference::SetLogicalKeyCols(RqExprVector& columns) {
  RemoveLogicalKeyCols();
  TakeOperands(columns);
}

void RqExprMemberReference::GetLogicalKeyCols(ConstRqExprVector& columns) const {
  for (int i = kNumOperands; i < GetNumOperands(); ++i) columns.push_back(GetIthOperand(i));
}
