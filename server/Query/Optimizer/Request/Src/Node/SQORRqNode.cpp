#include "Query/Optimizer/Request/Node/SQORRqNode.h"

#include <algorithm>

#include "Host/ARpGateway.h"
#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Host/KXThread.h"
#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqGroupBy.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

static_assert(sizeof(RqNode) == 64, "a plain node is one cache line");

RqNode::RqNode() { MemoryDataCollector::IncrRqNodeCounter(1); }

RqNode::RqNode(const RqNode& rhs, bool bNewIDs, bool bDeepCopy)
    : CompositeNode(rhs, bNewIDs), m_targetType(rhs.m_targetType), m_targetID(rhs.m_targetID) {
  // Most nodes are leaves. The rest stands apart, so that they do not save registers for it.
  if (rhs.GetNumChildren() > 0) CopyChildren(rhs, bNewIDs, bDeepCopy);
  MemoryDataCollector::IncrRqNodeCounter(1);
}

/// Makes as many slots as rhs has, and fills them if bDeepCopy.
void RqNode::CopyChildren(const RqNode& rhs, bool bNewIDs, bool bDeepCopy) {
  const int numChildren = rhs.GetNumChildren();
  MakeSlots(numChildren);
  if (!bDeepCopy) return;
  KXThread::LowStackCheck(0);
  for (int i = 0; i < numChildren; ++i) {
    if (const RqNode* const pChild = rhs.GetIthChild(i)) FillSlot(i, pChild->DeepCopy(bNewIDs));
  }
}

RqNode::~RqNode() { MemoryDataCollector::DecrRqNodeCounter(1); }

namespace {

/// Gives the column referred to the break status of the column that now stands for it, unless it has a stronger one of
/// its own or stands in a branch of a union.
void HandDownBreakStatus(const RqDerivedColumn& column, const RqDerivedColumnReference& reference) {
  RqDerivedColumn* const pReferencedColumn = reference.GetDerivedColumn();
  const RqAbstractList* const pBlock = pReferencedColumn->GetRqAbstractListContainer();
  if (!pBlock || !pBlock->GetParent() || !pBlock->IsRqList() || pBlock->GetParent()->GetObjectType() == kRqUnion) {
    return;
  }
  const RqDerivedColumn::BreakStatus status = pReferencedColumn->GetBreakStatus();
  if (status != RqDerivedColumn::kUnknownBreakStatus && status != RqDerivedColumn::kNoDuplicates) return;
  if (column.GetBreakStatus() == RqDerivedColumn::kUnknownBreakStatus) return;
  pReferencedColumn->SetBreakStatus(column.GetBreakStatus());
}

}  // namespace

void RqNode::Replace(RqNode* pReplacement, RqNode& releaseContainer) {
  RqNode* const pParent = GetParent();
  if (!pParent) {
    releaseContainer.AddChild(this);
    return;
  }
  const int childIndex = pParent->FindChildIndex(this);
  KX_ASSERT(childIndex >= 0 && childIndex < pParent->GetNumChildren());
  releaseContainer.AddChild(pParent->ReleaseIthChild(childIndex));
  pParent->SetIthChild(childIndex, pReplacement);
  if (pParent->GetObjectType() == kRqDerivedColumn && pReplacement &&
      pReplacement->GetObjectType() == kRqDerivedColumnReference) {
    HandDownBreakStatus(static_cast<const RqDerivedColumn&>(*pParent),
                        static_cast<const RqDerivedColumnReference&>(*pReplacement));
  }
}

AVisitorRqNode& RqNode::Tour(AVisitorRqNode& visitor) {
  KXThread::LowStackCheck(0);
  if (visitor.IsPostOrderVisitor() || !Accept(visitor)) {
    for (int i = 0; i < GetNumChildren(); ++i) {
      if (RqNode* const pChild = GetIthChild(i)) pChild->Tour(visitor);
    }
  }
  // Asked anew: a visitor may change its mind on the way.
  if (visitor.IsPostOrderVisitor()) Accept(visitor);
  return visitor;
}

RefADatabase RqNode::GetRpDatabaseObj(ARpGateway* pRp) const {
  if (!pRp || m_targetID.IsNullID()) return {};
  return RefADatabase(pRp, m_targetID);
}

void RqNode::ToByteVector(ByteVector& bv) {
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_targetType));
  m_targetID.ToByteVector(bv);
}

const_iterator RqNode::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, m_targetType, ServerInfo::kHighestTargetType);
  return m_targetID.FromByteVector(start);
}

int RqNode::GetMySize() const {
  int size = sizeof(RqNode);
  for (int i = 0; i < GetNumChildren(); ++i) {
    if (const RqNode* const pChild = GetIthChild(i)) size += pChild->GetMySize();
  }
  return size;
}

void RqNode::GetObjects(std::list<RqNode*>& nodePtrs) const {
  nodePtrs.push_back(const_cast<RqNode*>(this));
  for (int i = 0; i < GetNumChildren(); ++i) {
    if (const RqNode* const pChild = GetIthChild(i)) pChild->GetObjects(nodePtrs);
  }
}

void RqNode::GetPtrMap(const RqNode& rhs, std::map<RqNode*, RqNode*>& childMap) const {
  std::list<RqNode*> rhsNodes;
  std::list<RqNode*> lhsNodes;
  rhs.GetObjects(rhsNodes);
  GetObjects(lhsNodes);
  KX_ASSERT(lhsNodes.size() == rhsNodes.size());
  for (auto pLhs = lhsNodes.begin(); RqNode * pRhs : rhsNodes) childMap.emplace(pRhs, *pLhs++);
}

RqNode* RqNode::NestedDeepCopy(bool bNewIDs) const {
  Heap<RqNode> copy(DeepCopy(bNewIDs));
  std::map<RqNode*, RqNode*> copies;
  copy->GetPtrMap(*this, copies);
  std::list<RqNode*> groupBys;
  FindNodes(copy.Get(), IsObjectType(kRqGroupBy), groupBys, false);
  const IsObjectType isReference(kRqDerivedColumnReference);
  std::list<RqNode*> references;
  FindNodes(copy.Get(), isReference, references, false);
  for (RqNode* const pGroupBy : groupBys) {
    FindNodes(static_cast<RqGroupBy*>(pGroupBy)->GetGranularity(), isReference, references, false);
  }
  for (RqNode* const pNode : references) {
    auto& reference = static_cast<RqDerivedColumnReference&>(*pNode);
    const auto it = copies.find(reference.GetDerivedColumn());
    if (it != copies.end()) reference.SetDerivedColumn(static_cast<RqDerivedColumn*>(it->second));
  }
  return copy.Release();
}

bool RqNode::IsObjectType::operator()(const RqNode& node) const {
  return std::find(m_rqTypeFlags.begin(), m_rqTypeFlags.end(), node.GetObjectType()) != m_rqTypeFlags.end();
}

RqHandleNode::RqHandleNode(RqNode* pDonated) { AddChild(pDonated); }

RqNode* RqHandleNode::GetRqNode() { return GetNumChildren() > kChildNode ? GetIthChild(kChildNode) : nullptr; }

RqNode* RqHandleNode::ReleaseRqNode() { return GetNumChildren() > kChildNode ? ReleaseIthChild(kChildNode) : nullptr; }
