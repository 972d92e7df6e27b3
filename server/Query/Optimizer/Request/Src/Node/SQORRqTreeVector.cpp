#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXAssert.h"
#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Node/SQORHeap.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"
#include "SQORRqNodeFactory.h"

void RqTreeVectorHdr::ToByteVector(ByteVector& bv) const {
  KXThread::LowStackCheck(0);
  KXThreadJobMgr::ServiceJobCancellation();
  DataBlobUtil::ToByteVector(bv, numChildren_);
  DataBlobUtil::ToByteVector(bv, objType_);
}

const_iterator RqTreeVectorHdr::FromByteVector(const_iterator start, RqTreeVectorHdr& header) {
  start = DataBlobUtil::FromByteVector(start, header.numChildren_);
  return DataBlobUtil::FromByteVector(start, header.objType_);
}

void RqTreeVector::ToByteVector(RqNode* pNode, ByteVector& bv) {
  RqTreeVectorHdr header;
  if (!pNode) {
    header.ToByteVector(bv);
    return;
  }
  header.numChildren_ = static_cast<std::uint16_t>(pNode->GetNumChildren());
  header.objType_ = pNode->GetObjectType();
  header.ToByteVector(bv);
  pNode->ToByteVector(bv);
  for (int i = 0; i < header.numChildren_; ++i) ToByteVector(pNode->GetIthChild(i), bv);
}

namespace {

constexpr std::uint64_t kHeaderSize = sizeof(std::uint16_t) + sizeof(std::int32_t);

/// Bytes of a trusted writer hold no such kind.
[[noreturn]] void FailKind(std::int32_t type, const_iterator start) {
  const BoundedRead* const pScope = BoundedRead::Current();
  if (!pScope) KX_LOGIC_ERROR(L"");
  const std::string_view name = GetRqNodeTypeName(static_cast<RqNodeType_e>(type));
  if (name.empty()) KX_RAISE(kMsgNodeKindUnknown, BaseStringUtil::StringFrom(type), pScope->GetOffset(start));
  KX_RAISE(kMsgNodeKindDoesNotTravel, KXString::FromUTF8(name), pScope->GetOffset(start));
}

}  // namespace

const_iterator RqTreeVector::FromByteVector(const_iterator start, RqNode** ppNode) {
  KXThread::LowStackCheck(0);
  KXThreadJobMgr::ServiceJobCancellation();
  RqTreeVectorHdr header;
  const_iterator cursor = RqTreeVectorHdr::FromByteVector(start, header);
  if (header.IsNull()) {
    *ppNode = nullptr;
    return cursor;
  }
  const BoundedRead::Object object(start);
  Heap<RqNode> node(MakeEmptyRqNode(static_cast<RqNodeType_e>(header.objType_)));
  if (!node) FailKind(header.objType_, start);
  cursor = node->FromByteVector(cursor);
  DataBlobUtil::RequireReadable(cursor, header.numChildren_ * kHeaderSize);
  node->SetNumChildren(header.numChildren_);
  for (int i = 0; i < header.numChildren_; ++i) {
    RqNode* pChild = nullptr;
    cursor = FromByteVector(cursor, &pChild);
    node->SetIthChild(i, pChild);
  }
  if (BoundedRead::Current()) RequireRqNodeShape(*node, start);
  *ppNode = node.Release();
  return cursor;
}
