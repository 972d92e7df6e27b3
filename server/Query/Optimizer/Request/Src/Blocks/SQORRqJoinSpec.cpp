#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"

#include <set>
#include <unordered_map>
#include <vector>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Query/Optimizer/Request/Blocks/SQORNestedJoinGraph.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

RqJoinSpec::RqJoinSpec(const RqJoinSpec& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_bHasGraphInfo(rhs.m_bHasGraphInfo) {
  if (bDeepCopy) CopyGraph(rhs);
}

namespace {

/// Finds the counterparts of nodes in the copy of a graph: they stand in the same places. A map of all that stands
/// below would have to be made anew for each block within blocks.
class CopyFinder {
 public:
  CopyFinder(const RqJoinSpec& source, RqJoinSpec& copy) {
    for (int i = 0; i < source.GetNumChildren(); ++i)
      m_joinNodes.emplace(source.GetIthJoinNode(i), copy.GetIthJoinNode(i));
  }

  /// Null for a node that does not stand below the source. Cost: for each level up to the join node, the slots.
  RqNode* Find(const RqNode* pNode) const {
    std::vector<int> places;  // from the node up
    for (; pNode; pNode = pNode->GetParent()) {
      if (const auto entry = m_joinNodes.find(pNode); entry != m_joinNodes.end()) {
        RqNode* pCopy = entry->second;
        for (auto place = places.rbegin(); place != places.rend(); ++place) pCopy = pCopy->GetIthChild(*place);
        return pCopy;
      }
      if (const RqNode* const pParent = pNode->GetParent()) places.push_back(pParent->FindChildIndex(pNode));
    }
    return nullptr;
  }

 private:
  std::unordered_map<const RqNode*, RqJoinNode*> m_joinNodes;
};

/// The copy of a join node, which must have one; `text` is the assertion that says so.
RqJoinNode* GetCopy(const CopyFinder& copies, const RqJoinNode* pNode, const wchar_t* text) {
  RqNode* const pCopy = copies.Find(pNode);
  KX_ASSERT_TEXT(pCopy, text);
  return static_cast<RqJoinNode*>(pCopy);
}

/// Aims the references of a copied condition at the copies of the columns that they refer to, as far as these were
/// copied. False if a column is gone.
bool AimAtCopies(RqExprCond& cond, const CopyFinder& copies) {
  std::list<RqNode*> references;
  FindNodes(&cond, RqNode::IsObjectType(kRqDerivedColumnReference), references, false);
  for (RqNode* const pNode : references) {
    auto& reference = static_cast<RqDerivedColumnReference&>(*pNode);
    if (!reference.IsValidDerivedColumnReference()) return false;
    if (RqNode* const pColumn = copies.Find(reference.GetDerivedColumn())) {
      reference.SetDerivedColumn(static_cast<RqDerivedColumn*>(pColumn));
    }
  }
  return true;
}

void CopyLink(const RqJoinLink& link, const CopyFinder& copies) {
  RqJoinNode* const pIn = GetCopy(copies, link.GetInNode(), L"inNodePos != nodeMap.end()");
  RqJoinNode* pOut = link.GetOutNode();
  if (pOut) pOut = GetCopy(copies, pOut, L"outNodePos != nodeMap.end()");
  RqJoinNode* pDriving = link.GetDrivingJoinNode();
  if (pDriving) pDriving = GetCopy(copies, pDriving, L"drivingNodePos != nodeMap.end()");
  OwnedRqExprCondPtr cond(link.GetJoinCondCopy());
  // Wanted: no link without its column, rather than one that would end whoever asks for that.
  if (cond && !AimAtCopies(*cond, copies)) return;
  new RqJoinLink(pIn, pOut, cond.Release(), link.GetJoinType(), link.GetCardinality(), pDriving,
                 link.AlreadyAttachedCond());  // its nodes own it
}

}  // namespace

void RqJoinSpec::CopyGraph(const RqJoinSpec& rhs) {
  const CopyFinder copies(rhs, *this);
  for (const SmartRqNodePtr& fact : rhs.m_starFact) {
    const auto* const pFact = static_cast<const RqJoinNode*>(fact.Get());
    m_starFact.emplace_back(GetCopy(copies, pFact, L"mapElemIter != nodeMap.end()"));
  }
  std::set<const RqJoinLink*> copiedLinks;
  for (int i = 0; i < rhs.GetNumTableReferences(); ++i) {
    const RqJoinNode* const pRhsJoinNode = rhs.GetIthJoinNode(i);
    const RqJoinNode* const pLhsJoinNode = GetIthJoinNode(i);
    KX_ASSERT(pRhsJoinNode);
    KX_ASSERT(pLhsJoinNode);
    for (const RqJoinLink* const pLink : pRhsJoinNode->GetIncidentLinks()) {
      if (copiedLinks.insert(pLink).second) CopyLink(*pLink, copies);
    }
  }
}

bool RqJoinSpec::IsEquivalent(const RqJoinSpec& rhs) const {
  if (GetObjectType() != rhs.GetObjectType() || GetNumTableReferences() != rhs.GetNumTableReferences()) return false;
  for (int i = 0; i < GetNumTableReferences(); ++i) {
    const RqJoinNode* const pNode = GetIthJoinNode(i);
    const RqJoinNode* const pRhsNode = rhs.GetIthJoinNode(i);
    if (!pNode != !pRhsNode) return false;
    if (pNode && !pNode->IsEquivalent(*pRhsNode)) return false;
  }
  return true;
}

void RqJoinSpec::SetJoinNodes(const std::vector<RqJoinNode*>& nodes) {
  SetNumTableReferences(static_cast<int>(nodes.size()));
  for (int i = 0; RqJoinNode* const pNode : nodes) SetIthJoinNode(i++, pNode);
}

RqTableReference* RqJoinSpec::GetIthTableReference(int i) {
  RqJoinNode* const pNode = GetIthJoinNode(i);
  return pNode ? pNode->GetTableReference() : nullptr;
}

const RqTableReference* RqJoinSpec::GetIthTableReference(int i) const {
  return const_cast<RqJoinSpec*>(this)->GetIthTableReference(i);
}

void RqJoinSpec::CollectIdentifiedTables(std::list<RqIdentifiedTable*>& tables) {
  for (int i = 0; i < GetNumTableReferences(); ++i) {
    RqTableReference* const pTableRef = GetIthTableReference(i);
    if (!pTableRef) KX_LOGIC_ERROR(L"");
    RqTableReference::CollectIdentifiedTables(pTableRef, tables);
  }
}

RqJoinSpec* RqJoinSpec::CompileLinkGraph(std::vector<RqJoinNode*>& nodes, Heap<RqExprCond>& residualCond,
                                         ARpGateway* pRp, bool bOuterJoinsOnly) {
  std::vector<RqJoinNode*> joinTrees;
  NestedJoinGraph::CollapseJoinTree(nodes, bOuterJoinsOnly, joinTrees, residualCond, pRp);
  Heap<RqJoinSpec> joinSpec(new RqJoinSpec(joinTrees));
  joinSpec->AttachInnerJoinLinkConditions(false);
  return joinSpec.Release();
}

void RqJoinSpec::AttachInnerJoinLinkConditions(bool bForce) {
  for (int i = 0; i < GetNumTableReferences(); ++i) {
    if (RqJoinNode* const pNode = GetIthJoinNode(i)) pNode->AttachLinkConditions(bForce);
  }
}

void RqJoinSpec::ReattachLinksAfterMarshal() {
  for (int i = 0; i < GetNumTableReferences(); ++i) {
    const RqJoinNode* const pNode = GetIthJoinNode(i);
    if (!pNode) continue;
    const RqJoinLinkPtrList links = pNode->GetIncidentLinks();
    for (RqJoinLink* const pLink : links) {
      const auto* const pRead = dynamic_cast<const RqJoinLinkPersist*>(pLink);
      if (!pRead || (pRead->GetInNode() != pNode && pRead->GetInNodeIndex() != i) || pRead->GetOutNode()) continue;
      const std::int32_t outIndex = pRead->GetOutNodeIndex();
      RqJoinNode* const pOutNode =
          outIndex >= 0 && outIndex < GetNumTableReferences() ? GetIthJoinNode(outIndex) : nullptr;
      KX_ASSERT_TEXT(pOutNode, L"pOutNode != NULL");
      pLink->SetOutNode(pOutNode);
    }
  }
}

void RqJoinSpec::RequireReattachableLinks(const_iterator start) const {
  const auto raise = [start](const KXString& what) {
    KX_RAISE(kMsgNodeMalformed, KXString(L"RqJoinSpec"), BoundedRead::Current()->GetOffset(start), what);
  };
  const int numNodes = GetNumTableReferences();
  std::vector<std::uint32_t> numLinksTo(static_cast<std::size_t>(numNodes));
  for (int i = 0; i < numNodes; ++i) {
    const RqJoinNode* const pNode = GetIthJoinNode(i);
    if (!pNode) continue;
    for (const RqJoinLink* const pLink : pNode->GetIncidentLinks()) {
      const auto* const pRead = dynamic_cast<const RqJoinLinkPersist*>(pLink);
      if (!pRead || pRead->GetOutNode()) continue;
      const std::int32_t outIndex = pRead->GetOutNodeIndex();
      if (pRead->GetInNodeIndex() != i || outIndex < 0 || outIndex >= numNodes || outIndex == i ||
          !GetIthJoinNode(outIndex)) {
        raise(L"node " + BaseStringUtil::StringFrom(i) + L" has a link to node " +
              BaseStringUtil::StringFrom(outIndex) + L", which it cannot be joined to");
      }
      if (++numLinksTo[static_cast<std::size_t>(outIndex)] > RqJoinNode::kMaxReadLinks) {
        raise(L"too many links lead to node " + BaseStringUtil::StringFrom(outIndex));
      }
    }
  }
}

void RqJoinSpec::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bHasGraphInfo);
}

const_iterator RqJoinSpec::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_bHasGraphInfo);
}
