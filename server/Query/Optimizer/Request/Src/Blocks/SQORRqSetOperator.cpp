#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"

#include "Host/DataBlobUtil.h"

template <class Derived, RqNodeType_e kKind>
RqSetOperator<Derived, kKind>::RqSetOperator(std::vector<RqAbstractList*>& lists, bool bAll) : m_bAll(bAll) {
  this->SetNumChildren(static_cast<int>(lists.size()));
  for (int i = 0; i < GetNumLists(); ++i) {
    SetIthList(i, lists[static_cast<std::size_t>(i)]);
    KX_ASSERT(GetIthList(i));
  }
}

template <class Derived, RqNodeType_e kKind>
void RqSetOperator<Derived, kKind>::ToByteVector(ByteVector& bv) {
  RqAbstractList::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bAll);
}

template <class Derived, RqNodeType_e kKind>
const_iterator RqSetOperator<Derived, kKind>::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqAbstractList::FromByteVector(start), m_bAll);
}

template class RqSetOperator<RqUnion, kRqUnion>;
template class RqSetOperator<RqIntersect, kRqIntersect>;
template class RqSetOperator<RqExcept, kRqExcept>;
