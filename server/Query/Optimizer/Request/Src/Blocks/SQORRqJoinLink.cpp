#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"

#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"

namespace {

RqJoinNode* AsJoinNode(const SmartRqNodePtr& ptr) { return static_cast<RqJoinNode*>(ptr.Get()); }

}  // namespace

RqJoinLink::RqJoinLink(RqJoinNode* pInNode, RqJoinNode* pOutNode, RqExprCond* pJoinCond, SqlTableRef::JoinType joinType,
                       JoinCardinality cardinality, RqJoinNode* pDrivingNode, bool bAttached)
    : m_inNodePtr(pInNode),
      m_outNodePtr(pOutNode),
      m_joinCond(pJoinCond),
      m_joinType(joinType),
      m_cardinality(cardinality),
      m_drivingNodePtr(pDrivingNode),
      m_bAttachedToTableReference(bAttached) {
  AttachToNodes();
}

RqJoinNode* RqJoinLink::GetInNode() const { return AsJoinNode(m_inNodePtr); }

RqJoinNode* RqJoinLink::GetOutNode() const { return AsJoinNode(m_outNodePtr); }

RqJoinNode* RqJoinLink::GetDrivingJoinNode() const { return AsJoinNode(m_drivingNodePtr); }

void RqJoinLink::AttachToNodes() {
  for (const SmartRqNodePtr* pNodePtr : {&m_inNodePtr, &m_outNodePtr}) {
    if (RqJoinNode* const pNode = AsJoinNode(*pNodePtr)) pNode->AttachLink(this);
  }
}

void RqJoinLink::DetachFromNodes() {
  for (const SmartRqNodePtr* pNodePtr : {&m_inNodePtr, &m_outNodePtr}) {
    if (RqJoinNode* const pNode = AsJoinNode(*pNodePtr)) pNode->DetachLink(this);
  }
}

void RqJoinLink::SetNode(SmartRqNodePtr& nodePtr, RqJoinNode* pNode) {
  RqJoinNode* const pOldNode = AsJoinNode(nodePtr);
  if (pNode == pOldNode) return;
  if (pOldNode) {
    pOldNode->DetachLink(this);
    m_bAttachedToTableReference = false;
  }
  nodePtr = pNode;
  if (pNode) pNode->AttachLink(this);
}

void RqJoinLink::InitLink(RqJoinNode* pInNode, RqJoinNode* pOutNode, RqExprCond* pJoinCond,
                          SqlTableRef::JoinType joinType, JoinCardinality cardinality, RqJoinNode* pDrivingNode,
                          bool bAttached) {
  DetachFromNodes();
  m_inNodePtr = pInNode;
  m_outNodePtr = pOutNode;
  AttachToNodes();
  m_joinCond = pJoinCond;
  m_joinType = joinType;
  m_cardinality = cardinality;
  m_drivingNodePtr = pDrivingNode;
  m_bAttachedToTableReference = bAttached;
}

void RqJoinLink::ConcatenateCond(RqExprCond* pJoinCond) {
  m_joinCond = RqExprCondAnd::Concatenate(pJoinCond, m_joinCond.Release());
}

void RqJoinLink::SetNewJoinCond(RqExprCond* pNewJoinCond) {
  KX_ASSERT(pNewJoinCond);
  m_joinCond = pNewJoinCond;
}

RqExprCond* RqJoinLink::GetJoinCondCopy() const {
  return m_joinCond ? static_cast<RqExprCond*>(m_joinCond->DeepCopy(false)) : nullptr;
}

namespace {

/// A reference that is one table takes a copy of the condition, unless its own is equivalent. False for any other, and
/// for none.
bool AddToSingleTable(RqTableReference* pTableRef, RqExprCond& joinCond) {
  if (!pTableRef || !pTableRef->IsDeclarativeTableReference()) return false;
  const RqExprCond* const pSearchCond = pTableRef->GetSearchCond();
  if (pSearchCond && RqEquivalence()(*pSearchCond, joinCond)) return true;
  auto* const pReleased = static_cast<RqExprCond*>(pTableRef->ReleaseIthChild(RqTableReference::kSearchCond));
  pTableRef->SetSearchCond(RqExprCondAnd::ConcatenateCopy(pReleased, joinCond));
  return true;
}

/// The node's reference becomes the left table of a new one, which carries a copy of the condition.
void WrapTableReference(RqJoinNode& node, const RqJoinLink& link) {
  node.SetTableReference(new RqTableReference(SqlTableRef::kInnerJoin, node.GetTableReference(), link.GetJoinCondCopy(),
                                              nullptr, kDriving_UnknownTable));
}

}  // namespace

void RqJoinLink::AttachLinkCond(bool bForce) {
  if (m_bAttachedToTableReference && !bForce) return;
  KX_ASSERT(m_joinType == SqlTableRef::kInnerJoin);
  if (m_joinCond) {
    RqJoinNode* const pInNode = GetInNode();
    RqJoinNode* const pOutNode = GetOutNode();
    KX_ASSERT(pInNode);
    if (!AddToSingleTable(pInNode->GetTableReference(), *m_joinCond) &&
        !AddToSingleTable(pOutNode ? pOutNode->GetTableReference() : nullptr, *m_joinCond)) {
      WrapTableReference(*pInNode, *this);
    }
  }
  m_bAttachedToTableReference = true;
}

void RqJoinLink::ToByteVector(ByteVector& bv) {
  DataBlobUtil::ToByteVector(bv, m_bAttachedToTableReference);
  if (m_bAttachedToTableReference) return;
  DataBlobUtil::ToByteVector(bv, static_cast<bool>(m_joinCond));
  if (m_joinCond) RqTreeVector::ToByteVector(m_joinCond.Get(), bv);
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_joinType));
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_cardinality));
}

namespace {

const_iterator ReadCond(const_iterator start, OwnedRqExprCondPtr& cond) {
  RqNode* pNode = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(start, &pNode);
  Heap<RqNode> node(pNode);
  if (!node || !node->IsExpr() || !static_cast<const RqExpr&>(*node).IsCond()) {
    DataBlobUtil::RaiseMalformedIfBounded(start, L"condition");
  }
  cond = static_cast<RqExprCond*>(node.Release());
  return end;
}

}  // namespace

const_iterator RqJoinLink::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, m_bAttachedToTableReference);
  if (m_bAttachedToTableReference) return start;
  bool bHasCond = false;
  start = DataBlobUtil::FromByteVector(start, bHasCond);
  if (bHasCond) start = ReadCond(start, m_joinCond);
  // Wanted: the type is read and dropped, so that the link is an inner join.
  SqlTableRef::JoinType droppedType;
  start = DataBlobUtil::FromByteVector(start, droppedType, SqlTableRef::kNaturalJoin);
  return DataBlobUtil::FromByteVector(start, m_cardinality, kUnknownCardinality);
}

bool RqJoinLink::operator==(const RqJoinLink&) const { KX_LOGIC_ERROR(L""); }

bool RqJoinLink::operator<(const RqJoinLink&) const { KX_LOGIC_ERROR(L""); }

void RqJoinLinkPersist::ToByteVector(RqJoinLink& link, std::int32_t inNodeIndex, std::int32_t outNodeIndex,
                                     ByteVector& bv) {
  link.RqJoinLink::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, inNodeIndex);
  DataBlobUtil::ToByteVector(bv, outNodeIndex);
}

const_iterator RqJoinLinkPersist::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(RqJoinLink::FromByteVector(start), m_inNodeIndex);
  return DataBlobUtil::FromByteVector(start, m_outNodeIndex);
}
