#include "Query/Optimizer/Request/Blocks/SQORNestedJoinGraph.h"

#include <map>
#include <set>
#include <unordered_map>
#include <utility>

#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"

namespace {

using RqJoinNodePtrSet = std::set<RqJoinNode*>;
using RqJoinNodeToNewTableMap = std::map<RqJoinNode*, RqAbstractTable*>;

/// A tree while it grows. It owns the tree, until that is released, and nothing else.
struct JoinTreeRecord {
  Heap<RqTableReference> m_pJoinTree;
  RqJoinNodePtrSet m_consumedJoinNodes;   ///< The nodes of the source that belong to the tree.
  RqJoinNodeToNewTableMap m_newTableMap;  ///< What stands for each of them in the tree.

  RqTableReference* ReleaseJoinTree() { return m_pJoinTree.Release(); }
};

/// Takes the one table out of a reference and deletes the reference. The caller owns the table. Wanted: a search
/// condition of the reference goes with it, so a link whose condition was attached there is not to be folded again.
RqAbstractTable* ConsumeTableRef(RqTableReference* pTableRef) {
  const Heap<RqNode> consumed(pTableRef->ReleaseFromParent());
  return static_cast<RqAbstractTable*>(pTableRef->ReleaseIthChild(RqTableReference::kLeftTable));
}

/// What stands for the node, without a reference around a single table; null for no node and for one that never had a
/// reference. bInJoinTree tells whether it is a part of the tree by now: the first table of a tree is none, as long as
/// it stands alone.
RqAbstractTable* ExtractTable(JoinTreeRecord& newJoinTree, RqJoinNode* pNode, bool& bInJoinTree) {
  bInJoinTree = false;
  if (!pNode) return nullptr;
  if (RqTableReference* const pTableRef = pNode->GetTableReference()) {
    RqAbstractTable* const pTable = pTableRef->IsDeclarativeTableReference() ? ConsumeTableRef(pTableRef)
                                                                             : static_cast<RqAbstractTable*>(pTableRef);
    return newJoinTree.m_newTableMap[pNode] = pTable;
  }
  const auto newTableEntryPos = newJoinTree.m_newTableMap.find(pNode);
  KX_ASSERT(newTableEntryPos != newJoinTree.m_newTableMap.end());
  bInJoinTree = true;
  RqAbstractTable*& pEntry = newTableEntryPos->second;
  if (!pEntry || !pEntry->IsTableReference() || pEntry->GetParent()) return pEntry;
  auto* const pRoot = static_cast<RqTableReference*>(pEntry);
  if (!pRoot->IsDeclarativeTableReference()) return pEntry;
  if (pRoot == newJoinTree.m_pJoinTree.Get()) {
    newJoinTree.ReleaseJoinTree();
    bInJoinTree = false;
  }
  return pEntry = ConsumeTableRef(pRoot);
}

constexpr bool IsFullOuterJoin(SqlTableRef::JoinType joinType) {
  return joinType == SqlTableRef::kFullOuterJoin || joinType == SqlTableRef::kFullOuterStitchJoin;
}

/// The type of a join of type `present` under one more link of type `added` between its two sides: a full join keeps
/// everything and so gives way to any other, and one-sided joins that oppose each other leave an inner join.
constexpr SqlTableRef::JoinType CombineJoinTypes(SqlTableRef::JoinType present, SqlTableRef::JoinType added) {
  if (added == present || IsFullOuterJoin(added)) return present;
  return IsFullOuterJoin(present) ? added : SqlTableRef::kInnerJoin;
}

void CombineWithReference(RqTableReference& tableRef, SqlTableRef::JoinType joinType, RqExprCond& cond) {
  auto* const pReleased = static_cast<RqExprCond*>(tableRef.ReleaseIthChild(RqTableReference::kSearchCond));
  tableRef.SetSearchCond(RqExprCondAnd::ConcatenateCopy(pReleased, cond));
  // Wanted: a full join may so become a right outer join, which the reference does not turn round.
  tableRef.SetJoinType(CombineJoinTypes(tableRef.GetJoinType(), joinType));
}

RqAbstractTable* GetParentTable(RqAbstractTable& table) {
  RqNode* const pParent = table.GetParent();
  return pParent && pParent->IsAbstractTable() ? static_cast<RqAbstractTable*>(pParent) : nullptr;
}

/// Law: the condition of a link that closes a cycle holds where both its tables have come together: at the lowest
///      reference that has one of them in its left input and the other in its right one.
///
/// Requires: both tables stand in one tree, neither in the other.
/// Cost:     the depth of the tree.
void CloseCycle(RqAbstractTable& left, RqAbstractTable& right, SqlTableRef::JoinType joinType, RqExprCond& cond) {
  std::set<const RqNode*> fromLeftUp;
  for (const RqNode* pNode = &left; pNode; pNode = pNode->GetParent()) fromLeftUp.insert(pNode);
  for (RqAbstractTable* pCandidate = &right; pCandidate; pCandidate = GetParentTable(*pCandidate)) {
    if (!pCandidate->IsTableReference()) continue;
    if (pCandidate == &left) KX_LOGIC_ERROR(L"");
    auto& tableRef = static_cast<RqTableReference&>(*pCandidate);
    if (fromLeftUp.contains(tableRef.GetLeftTable())) return CombineWithReference(tableRef, joinType, cond);
    if (fromLeftUp.contains(tableRef.GetRightTable())) {
      return CombineWithReference(tableRef, SqlTableRef::FlipJoinType(joinType), cond);
    }
    if (fromLeftUp.contains(pCandidate)) KX_LOGIC_ERROR(L"");
  }
  KX_LOGIC_ERROR(L"");
}

/// Adds a join of two nodes, at least one of which belongs to the tree, on a copy of the condition, which may be null.
void AddToJoinTree(JoinTreeRecord& newJoinTree, RqJoinNode* pLeft, RqJoinNode* pRight, SqlTableRef::JoinType joinType,
                   RqExprCond* pCond, DrivingTableHint hint) {
  bool bLeftInTree = false;
  bool bRightInTree = false;
  RqAbstractTable* pLeftTable = ExtractTable(newJoinTree, pLeft, bLeftInTree);
  KX_ASSERT(pLeftTable);
  RqAbstractTable* pRightTable = ExtractTable(newJoinTree, pRight, bRightInTree);
  KX_ASSERT(pRightTable);
  KX_ASSERT(pLeftTable != pRightTable);
  if (bLeftInTree && bRightInTree) {
    // Wanted: without a condition the link has no effect, whatever its type.
    if (pCond) CloseCycle(*pLeftTable, *pRightTable, joinType, *pCond);
    return;
  }
  if (bLeftInTree != bRightInTree) {
    if (newJoinTree.m_pJoinTree) {
      (bLeftInTree ? pLeftTable : pRightTable) = newJoinTree.ReleaseJoinTree();
    } else if (joinType == SqlTableRef::kRightOuterJoin) {
      // Wanted: the reference changes the sides of a right outer join once more, so that the left table stays on the
      // left, as a left outer join.
      std::swap(pLeftTable, pRightTable);
    }
  }
  RqExprCond* const pCondCopy = pCond ? static_cast<RqExprCond*>(pCond->DeepCopy(false)) : nullptr;
  newJoinTree.m_pJoinTree = new RqTableReference(joinType, pLeftTable, pCondCopy, pRightTable, hint);
}

DrivingTableHint GetDrivingTableHint(const RqJoinLink& link) {
  const RqJoinNode* const pDriving = link.GetDrivingJoinNode();
  if (!pDriving) return kDriving_UnknownTable;
  if (pDriving == link.GetInNode()) return kDriving_LeftTable;
  return pDriving == link.GetOutNode() ? kDriving_RightTable : kDriving_UnknownTable;
}

/// Folds the links of a node into its tree and deletes them, and appends the nodes that so come into the tree.
void ConsumeLinks(RqJoinNode* pCurrNode, bool bOuterJoinsOnly, JoinTreeRecord& newJoinTree,
                  std::vector<RqJoinNode*>& next) {
  const RqJoinLinkPtrList links = pCurrNode->GetIncidentLinks();
  for (RqJoinLink* const pLink : links) {
    if (bOuterJoinsOnly && pLink->GetJoinType() == SqlTableRef::kInnerJoin) continue;
    const Heap<RqJoinLink> consumed(pLink);
    RqJoinNode* const pIn = pLink->GetInNode();
    RqJoinNode* const pOut = pLink->GetOutNode();
    KX_ASSERT_TEXT(pIn == pCurrNode || pOut == pCurrNode, L"(*linkIter)->GetOutNode() == pCurrNode");
    AddToJoinTree(newJoinTree, pIn, pOut, pLink->GetJoinType(), pLink->GetJoinCond(), GetDrivingTableHint(*pLink));
    RqJoinNode* const pNeighbour = pIn == pCurrNode ? pOut : pIn;
    if (newJoinTree.m_consumedJoinNodes.insert(pNeighbour).second) next.push_back(pNeighbour);
  }
}

/// Folds all that can be reached from the root: all links of a node first, then what lies behind its neighbours, one
/// neighbour after the other.
void TraverseConsumableLinks(RqJoinNode* pRoot, bool bOuterJoinsOnly, JoinTreeRecord& newJoinTree) {
  std::vector<RqJoinNode*> pending{pRoot};  // the next one last
  std::vector<RqJoinNode*> next;
  while (!pending.empty()) {
    RqJoinNode* const pCurrNode = pending.back();
    pending.pop_back();
    next.clear();
    ConsumeLinks(pCurrNode, bOuterJoinsOnly, newJoinTree, next);
    pending.insert(pending.end(), next.rbegin(), next.rend());
  }
}

/// Grows a tree from each node, in order, that no earlier tree has taken.
std::vector<JoinTreeRecord> GrowTrees(const std::vector<RqJoinNode*>& joinNodes, bool bOuterJoinsOnly) {
  std::vector<JoinTreeRecord> records;
  for (RqJoinNode* const pCurrNode : joinNodes) {
    KX_ASSERT(pCurrNode);
    // A node without a reference has been taken; the first one cannot have been.
    if (!records.empty() && !pCurrNode->GetTableReference()) continue;
    JoinTreeRecord& record = records.emplace_back();
    record.m_pJoinTree = static_cast<RqTableReference*>(pCurrNode->ReleaseIthChild(RqJoinNode::kTableRef));
    record.m_newTableMap[pCurrNode] = record.m_pJoinTree.Get();
    record.m_consumedJoinNodes.insert(pCurrNode);
    TraverseConsumableLinks(pCurrNode, bOuterJoinsOnly, record);
  }
  return records;
}

/// The place of the tree, and of its new node, that each node of the source belongs to.
class TreeIndex {
 public:
  explicit TreeIndex(const std::vector<JoinTreeRecord>& records) {
    for (std::size_t i = 0; i < records.size(); ++i) {
      for (const RqJoinNode* const pNode : records[i].m_consumedJoinNodes) m_index.emplace(pNode, i);
    }
  }

  /// A logic error for a node that belongs to none.
  std::size_t Find(const RqJoinNode* pNode) const {
    const auto entry = m_index.find(pNode);
    if (entry == m_index.end()) KX_LOGIC_ERROR(L"");
    return entry->second;
  }

 private:
  std::unordered_map<const RqJoinNode*, std::size_t> m_index;
};

/// A link of the source that was not folded moves to the new nodes; within one tree, its condition to residualCond.
void MoveLink(RqJoinLink& link, const TreeIndex& treeIndex, const std::vector<RqJoinNode*>& joinTrees,
              OwnedRqExprCondPtr& residualCond) {
  const std::size_t inIndex = treeIndex.Find(link.GetInNode());
  const std::size_t outIndex = treeIndex.Find(link.GetOutNode());
  if (inIndex == outIndex) {
    if (!link.GetJoinCond()) return;
    residualCond = RqExprCondAnd::ConcatenateCopy(residualCond.Release(), *link.GetJoinCond());
    KX_ASSERT_TEXT(link.GetJoinType() == SqlTableRef::kInnerJoin,
                   L"(*linkIter)->GetJoinType() == SqlTableRef::kInnerJoin");
    return;
  }
  RqJoinNode* const pNewIn = joinTrees[inIndex];
  RqJoinNode* const pNewOut = joinTrees[outIndex];
  const DrivingTableHint hint = GetDrivingTableHint(link);
  RqJoinNode* const pNewDriving =
      hint == kDriving_LeftTable ? pNewIn : (hint == kDriving_RightTable ? pNewOut : nullptr);
  new RqJoinLink(pNewIn, pNewOut, link.GetJoinCondCopy(), link.GetJoinType(), link.GetCardinality(), pNewDriving,
                 link.AlreadyAttachedCond());  // its nodes own it
}

}  // namespace

void NestedJoinGraph::CollapseJoinTree(std::vector<RqJoinNode*>& joinNodes, bool bOuterJoinsOnly,
                                       std::vector<RqJoinNode*>& joinTrees, OwnedRqExprCondPtr& residualCond,
                                       [[maybe_unused]] ARpGateway* pRp) {
  std::vector<JoinTreeRecord> records = GrowTrees(joinNodes, bOuterJoinsOnly);

  KX_ASSERT(joinTrees.empty());
  joinTrees.reserve(records.size());
  for (JoinTreeRecord& record : records) {
    KX_ASSERT_TEXT(record.m_pJoinTree, L"joinTreeIter->m_pJoinTree");
    joinTrees.push_back(new RqJoinNode(record.ReleaseJoinTree(), false));
  }

  const TreeIndex treeIndex(records);
  for (const RqJoinNode* const pNode : joinNodes) {
    const RqJoinLinkPtrList links = pNode->GetIncidentLinks();
    for (RqJoinLink* const pLink : links) {
      const Heap<RqJoinLink> replaced(pLink);
      MoveLink(*pLink, treeIndex, joinTrees, residualCond);
    }
  }
  DeletePtrCollection(joinNodes);
}
