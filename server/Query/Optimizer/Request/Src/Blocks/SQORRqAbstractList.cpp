#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"

#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"

RqAbstractList::RqAbstractList(const RqAbstractList& rhs, bool bNewIDs, bool bDeepCopy)
    : RqAbstractTable(rhs, bNewIDs, bDeepCopy),
      m_bShared(rhs.m_bShared),
      m_rowNumLimit(rhs.m_rowNumLimit),
      m_rowNumOffset(rhs.m_rowNumOffset),
      m_pSharedVirtualTableListStream(rhs.m_pSharedVirtualTableListStream),
      m_bWithSupported(rhs.m_bWithSupported) {}

RqDerivedTable* RqAbstractList::GetRqDerivedTableContainer() const {
  for (const RqNode* pNode = GetParent(); pNode; pNode = pNode->GetParent()) {
    if (pNode->GetObjectType() == kRqDerivedTable) {
      return const_cast<RqDerivedTable*>(static_cast<const RqDerivedTable*>(pNode));
    }
  }
  return nullptr;
}

bool RqAbstractList::IsEquivalent(const RqAbstractTable&) const { return false; }

void RqAbstractList::ToByteVector(ByteVector& bv) {
  RqAbstractTable::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqAbstractList::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqAbstractTable::FromByteVector(start), *this, kWrittenFields);
}
