#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"

#include <algorithm>

#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"

RqJoinNode::RqJoinNode(RqTableReference* pNewTableRef, bool bAgoJoinNode) : RqJoinNode() {
  KX_ASSERT(pNewTableRef);
  SetTableReference(pNewTableRef);
  m_bAgoJoinNode = bAgoJoinNode;
}

RqJoinNode::~RqJoinNode() {
  // Each link takes itself off the list.
  const RqJoinLinkPtrList links = m_joinLinks;
  for (const RqJoinLink* const pLink : links) delete pLink;
}

namespace {

const RqAbstractTable* GetLeftTable(const RqJoinNode& node) {
  const RqTableReference* const pTableRef = node.GetTableReference();
  return pTableRef ? pTableRef->GetLeftTable() : nullptr;
}

}  // namespace

bool RqJoinNode::IsEquivalent(const RqJoinNode& rhs) const {
  if (GetObjectType() != rhs.GetObjectType() || GetNumChildren() != rhs.GetNumChildren() ||
      m_joinLinks.size() != rhs.m_joinLinks.size()) {
    return false;
  }
  const RqAbstractTable* const pTable = GetLeftTable(*this);
  const RqAbstractTable* const pRhsTable = GetLeftTable(rhs);
  if (!pTable || !pRhsTable) return pTable == pRhsTable;
  return pTable->GetObjectType() == pRhsTable->GetObjectType() && pTable->IsEquivalent(*pRhsTable);
}

RqTableReference* RqJoinNode::GetTableReference() { return static_cast<RqTableReference*>(GetIthChild(kTableRef)); }

void RqJoinNode::SetTableReference(RqTableReference* pTableRef) { SetIthChild(kTableRef, pTableRef); }

void RqJoinNode::SetRemoveCandidacy(bool bRemoveCandidate) {
  if (RqTableReference* const pTableRef = GetTableReference()) pTableRef->SetRemoveCandidacy(bRemoveCandidate);
}

bool RqJoinNode::GetRemoveCandidacy() const {
  const RqTableReference* const pTableRef = GetTableReference();
  return !pTableRef || pTableRef->GetRemoveCandidacy();
}

void RqJoinNode::AttachLink(RqJoinLink* pLink) {
  if (std::ranges::find(m_joinLinks, pLink) != m_joinLinks.end()) KX_LOGIC_ERROR(L"");
  m_joinLinks.push_back(pLink);
}

void RqJoinNode::DetachLink(RqJoinLink* pLink) {
  if (const auto link = std::ranges::find(m_joinLinks, pLink); link != m_joinLinks.end()) m_joinLinks.erase(link);
}

void RqJoinNode::AddLink(RqJoinNode* pOut, RqExprCond* pCond, SqlTableRef::JoinType joinType,
                         JoinCardinality cardinality, RqJoinNode* pDriving, bool bAttached) {
  if (MergeIntoExistingLink(pOut, pCond, joinType, cardinality, bAttached)) return;
  new RqJoinLink(this, pOut, pCond, joinType, cardinality, pDriving, bAttached);  // its nodes own it
}

namespace {

bool Joins(const RqJoinLink& link, const RqJoinNode* pNode1, const RqJoinNode* pNode2) {
  const RqJoinNode* const pIn = link.GetInNode();
  const RqJoinNode* const pOut = link.GetOutNode();
  if (pIn == pNode1 && pOut == pNode2) return true;
  if (pIn == pNode2 && pOut == pNode1) return true;
  // Wanted: for one node alone, any link that leads to it counts.
  return pNode1 == pNode2 && pOut == pNode1;
}

/// The first link between the nodes that has pCond among its conjuncts, which bCondContained then tells, or that agrees
/// in everything else; null if there is none.
RqJoinLink* FindExistingLink(const RqJoinLinkPtrList& links, const RqJoinNode* pNode1, const RqJoinNode* pNode2,
                             SqlTableRef::JoinType joinType, JoinCardinality cardinality, bool bAttached,
                             const RqExprCond* pCond, bool& bCondContained) {
  bCondContained = false;
  for (RqJoinLink* const pLink : links) {
    if (!Joins(*pLink, pNode1, pNode2)) continue;
    const RqExprCond* const pLinkCond = pLink->GetJoinCond();
    if (pCond && pLinkCond && pCond->IsContainedInConjunctTree(*pLinkCond)) {
      bCondContained = true;
      return pLink;
    }
    if (pLink->GetJoinType() == joinType && pLink->GetCardinality() == cardinality &&
        pLink->AlreadyAttachedCond() == bAttached) {
      return pLink;
    }
  }
  return nullptr;
}

}  // namespace

bool RqJoinNode::MergeIntoExistingLink(RqJoinNode* pOut, RqExprCond* pCond, SqlTableRef::JoinType joinType,
                                       JoinCardinality cardinality, bool bAttached) {
  for (const RqJoinNode* const pNode : {this, pOut}) {
    if (!pNode) continue;
    bool bCondContained = false;
    RqJoinLink* const pLink =
        FindExistingLink(pNode->m_joinLinks, this, pOut, joinType, cardinality, bAttached, pCond, bCondContained);
    if (!pLink) continue;
    if (bCondContained) {
      delete pCond;
    } else {
      pLink->ConcatenateCond(pCond);
    }
    return true;
  }
  return false;
}

void RqJoinNode::AttachLinkConditions(bool bForce) {
  for (RqJoinLink* const pLink : m_joinLinks) pLink->AttachLinkCond(bForce);
}

namespace {

/// A graph of nodes that it gives back when it goes.
class BorrowedJoinSpec {
 public:
  explicit BorrowedJoinSpec(const std::vector<RqJoinNode*>& nodes) { m_joinSpec.SetJoinNodes(nodes); }
  BorrowedJoinSpec(const BorrowedJoinSpec&) = delete;
  BorrowedJoinSpec& operator=(const BorrowedJoinSpec&) = delete;
  ~BorrowedJoinSpec() {
    for (int i = 0; i < m_joinSpec.GetNumTableReferences(); ++i) m_joinSpec.ReleaseIthChild(i);
  }

  const RqJoinSpec& Get() const { return m_joinSpec; }

 private:
  RqJoinSpec m_joinSpec;
};

}  // namespace

void RqJoinNode::CopyRqJoinNodeVector(const std::vector<RqJoinNode*>& source, std::vector<RqJoinNode*>& dest) {
  const BorrowedJoinSpec borrowed(source);
  RqJoinSpec copy(borrowed.Get(), false, true);
  dest.resize(source.size());
  for (int i = 0; RqJoinNode * &pNode : dest) pNode = static_cast<RqJoinNode*>(copy.ReleaseIthChild(i++));
}

void RqJoinNode::Replace(RqNode* pReplacement, RqNode&) {
  if (pReplacement && pReplacement->GetObjectType() == kRqJoinNode) {
    ReplaceSmartPtrReferences(static_cast<RqJoinNode*>(pReplacement));
  }
}

namespace {

/// The markers in front of the links in the byte form of a node.
enum : std::int16_t { kLinkFollows = 0, kWrittenByOtherNode = 1 };

/// The place of the out-node among the children of its parent; CompositeNode::kChildNotFound for one that is missing or
/// in no tree. A link that was read and has no out-node yet still knows it.
std::int32_t GetOutNodeIndex(const RqJoinLink& link) {
  if (const RqJoinNode* const pOut = link.GetOutNode()) {
    return pOut->GetParent() ? pOut->GetParent()->FindChildIndex(pOut) : CompositeNode::kChildNotFound;
  }
  const auto* const pUnfinished = dynamic_cast<const RqJoinLinkPersist*>(&link);
  return pUnfinished ? pUnfinished->GetOutNodeIndex() : CompositeNode::kChildNotFound;
}

}  // namespace

void RqJoinNode::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_joinLinks.size()));
  const bool bLinksFollow =
      std::ranges::any_of(m_joinLinks, [](const RqJoinLink* pLink) { return !pLink->AlreadyAttachedCond(); });
  DataBlobUtil::ToByteVector(bv, bLinksFollow);
  if (!bLinksFollow) return;
  const std::int32_t ownIndex = GetParent() ? GetParent()->FindChildIndex(this) : kChildNotFound;
  for (RqJoinLink* const pLink : m_joinLinks) {
    const bool bOwn = pLink->GetInNode() == this;
    DataBlobUtil::ToByteVector(bv, static_cast<std::int16_t>(bOwn ? kLinkFollows : kWrittenByOtherNode));
    if (bOwn) RqJoinLinkPersist::ToByteVector(*pLink, ownIndex, ::GetOutNodeIndex(*pLink), bv);
  }
}

const_iterator RqJoinNode::FromByteVector(const_iterator start) {
  std::uint32_t numLinks = 0;
  bool bLinksFollow = false;
  const_iterator cursor = DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), numLinks);
  cursor = DataBlobUtil::FromByteVector(cursor, bLinksFollow);
  if (!bLinksFollow) return cursor;
  if (numLinks > kMaxReadLinks) DataBlobUtil::RaiseMalformedIfBounded(cursor, L"credible number of join links");
  DataBlobUtil::RequireReadable(cursor, std::uint64_t{numLinks} * sizeof(std::int16_t));
  for (std::uint32_t i = 0; i < numLinks; ++i) {
    const const_iterator marked = cursor;
    std::int16_t marker = kLinkFollows;
    cursor = DataBlobUtil::FromByteVector(cursor, marker);
    if (marker != kLinkFollows) {
      if (marker != kWrittenByOtherNode) DataBlobUtil::RaiseMalformedIfBounded(marked, L"marker of a join link");
      continue;
    }
    const BoundedRead::Object object(cursor);
    Heap<RqJoinLinkPersist> link(new RqJoinLinkPersist);
    cursor = link->FromByteVector(cursor);
    link->SetInNode(this);
    link.Release();  // its nodes own it
  }
  return cursor;
}
