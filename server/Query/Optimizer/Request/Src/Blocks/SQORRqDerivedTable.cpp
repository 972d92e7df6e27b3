#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"

#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"

const KXString RqDerivedTable::kTablePrefix = L"D";

RqDerivedTable::RqDerivedTable(RqAbstractList* pInner, int tableNumber) : RqNodeImpl(tableNumber) {
  SetNumChildren(kNumChildren);
  SetInnerList(pInner);
}

RqDerivedTable::RqDerivedTable(const RqDerivedTable& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_commonExprName(rhs.m_commonExprName),
      m_bInternalExec(rhs.m_bInternalExec) {}

RqAbstractList* RqDerivedTable::GetInnerList() {
  KX_ASSERT(GetIthChild(kInnerList));
  return static_cast<RqAbstractList*>(GetIthChild(kInnerList));
}

void RqDerivedTable::SetInnerList(RqAbstractList* pInner) { SetIthChild(kInnerList, pInner); }

bool RqDerivedTable::IsLeafTable() const { return GetInnerList()->IsLeafTable(); }

bool RqDerivedTable::IsEquivalent(const RqAbstractTable& rhs) const {
  if (rhs.GetObjectType() != kRqDerivedTable) return false;
  const auto& right = static_cast<const RqDerivedTable&>(rhs);
  return GetIthChild(kInnerList) && right.GetIthChild(kInnerList) &&
         GetInnerList()->IsEquivalent(*right.GetInnerList());
}

void RqDerivedTable::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_commonExprName);
}

const_iterator RqDerivedTable::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_commonExprName);
}
