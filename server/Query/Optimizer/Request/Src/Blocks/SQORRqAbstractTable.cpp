#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"

#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"

bool RqAbstractTable::IsTableReferenceJoinTree() const {
  const RqAbstractTable* pTable = this;
  while (pTable && pTable->IsTableReference()) {
    const auto* const pTableRef = static_cast<const RqTableReference*>(pTable);
    pTable = pTableRef->GetLeftTable();
    if (pTable && pTableRef->GetRightTable()) return true;
  }
  return false;
}

bool RqIdentifiedTable::IsEquivalent(const RqAbstractTable& rhs) const {
  return RqAbstractTable::IsEquivalent(rhs) &&
         GetTableNumber() == static_cast<const RqIdentifiedTable&>(rhs).GetTableNumber();
}

void RqIdentifiedTable::ToByteVector(ByteVector& bv) {
  RqAbstractTable::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_correlationNumber);
}

const_iterator RqIdentifiedTable::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqAbstractTable::FromByteVector(start), m_correlationNumber);
}

RqEntity::RqEntity(ARpGateway* pRp, const VoidID& objID)
    : m_objID(objID), m_repositoryUniqueID(pRp->GetRepositoryUniqueID32()) {}

RqEntity::RqEntity(const RqEntity& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_objID(rhs.m_objID), m_repositoryUniqueID(rhs.m_repositoryUniqueID) {}

void RqEntity::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_repositoryUniqueID);
  m_objID.ToByteVector(bv);
}

const_iterator RqEntity::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_repositoryUniqueID);
  return m_objID.FromByteVector(start);
}
