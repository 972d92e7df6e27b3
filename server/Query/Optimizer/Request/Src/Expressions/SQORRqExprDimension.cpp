#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"

#include <compare>
#include <tuple>

#include "Host/DataBlobUtil.h"

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
  m_objID.ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_repositoryUniqueID);
  m_presentationHierarchyID.ToByteVector(bv);
}

const_iterator RqExprDimension::FromByteVector(const_iterator start) {
  start = m_objID.FromByteVector(RqNodeImpl::FromByteVector(start));
  start = DataBlobUtil::FromByteVector(start, m_repositoryUniqueID);
  return m_presentationHierarchyID.FromByteVector(start);
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
  m_objID.ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_repositoryUniqueID);
  DataBlobUtil::ToByteVector(bv, static_cast<std::int32_t>(m_levelType));
}

const_iterator RqExprLevel::FromByteVector(const_iterator start) {
  start = m_objID.FromByteVector(RqNodeImpl::FromByteVector(start));
  start = DataBlobUtil::FromByteVector(start, m_repositoryUniqueID);
  std::int32_t levelType = kUnknown;
  start = DataBlobUtil::FromByteVector(start, levelType);
  m_levelType = static_cast<LevelType>(levelType);
  return start;
}

// Member

RqExprMemberReference::RqExprMemberReference(RqExprLevel* pLevel, RqExprLiteral* pMemberValue) {
  SetNumOperands(kNumOperands);
  SetIthOperand(kLevelOperand, pLevel);
  SetIthOperand(kValueOperand, pMemberValue);
}

void RqExprMemberReference::SetLogicalKeyCols(RqExprVector& columns) {
  OwnedRqExprVector donated;
  donated.swap(columns);
  RemoveLogicalKeyCols();
  for (RqExpr*& pColumn : donated) {
    AddChild(pColumn);
    pColumn = nullptr;
  }
}

void RqExprMemberReference::GetLogicalKeyCols(ConstRqExprVector& columns) const {
  for (int i = kNumOperands; i < GetNumOperands(); ++i) columns.push_back(GetIthOperand(i));
}
