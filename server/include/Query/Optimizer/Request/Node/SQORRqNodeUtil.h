#pragma once

#include <list>
#include <vector>

#include "Query/Optimizer/Request/Node/SQORRqNode.h"

// Searches by child slots. Trees that a node holds aside (Heap members) are not searched.
// The recursive ones go as deep as the tree and have no stack check of their own.

/// Appends the nodes that satisfy the predicate, in pre-order, or post-order if asked. A match does not end the
/// descent, so matches may nest. A null root yields nothing.
template <class Predicate>
void FindNodes(RqNode* pRoot, const Predicate& predicate, std::list<RqNode*>& nodes, bool bPostOrder) {
  if (!pRoot) return;
  if (!bPostOrder && predicate(*pRoot)) nodes.push_back(pRoot);
  const int numChildren = pRoot->GetNumChildren();
  for (int i = 0; i < numChildren; ++i) FindNodes(pRoot->GetIthChild(i), predicate, nodes, bPostOrder);
  if (bPostOrder && predicate(*pRoot)) nodes.push_back(pRoot);
}

/// Whether any node satisfies the predicate. A null root gives false.
template <class Predicate>
bool FoundNodes(const RqNode* pRoot, const Predicate& predicate) {
  if (!pRoot) return false;
  if (predicate(*pRoot)) return true;
  const int numChildren = pRoot->GetNumChildren();
  for (int i = 0; i < numChildren; ++i) {
    if (FoundNodes(pRoot->GetIthChild(i), predicate)) return true;
  }
  return false;
}

/// Appends the topmost nodes that satisfy the predicate: the subtree below a match is skipped. The order asked for
/// makes no difference to what is found, and pRp is carried through.
template <class Predicate>
void FindTopmostNodes(ARpGateway* pRp, RqNode* pRoot, const Predicate& predicate, std::list<RqNode*>& nodes,
                      bool bPostOrder) {
  if (!pRoot) return;
  if (predicate(*pRoot)) {
    nodes.push_back(pRoot);
    return;
  }
  const int numChildren = pRoot->GetNumChildren();
  for (int i = 0; i < numChildren; ++i) FindTopmostNodes(pRp, pRoot->GetIthChild(i), predicate, nodes, bPostOrder);
}

/// The FROM clause of a query block; null for a node that is none, and for a block without one.
RqNode* GetFromClause(RqNode& node);

/// FindNodes among the tables of blocks: of a query block only the FROM clause is searched. With bFindTopMostOnly the
/// subtree below a match is skipped, unless matches come in post-order.
template <class Predicate>
void FindTableNodes(RqNode* pRoot, const Predicate& predicate, std::list<RqNode*>& nodes, bool bPostOrder,
                    bool bFindTopMostOnly) {
  if (!pRoot) return;
  if (!bPostOrder && predicate(*pRoot)) {
    nodes.push_back(pRoot);
    if (bFindTopMostOnly) return;
  }
  if (pRoot->GetObjectType() == kRqList) {
    FindTableNodes(GetFromClause(*pRoot), predicate, nodes, bPostOrder, bFindTopMostOnly);
  } else {
    const int numChildren = pRoot->GetNumChildren();
    for (int i = 0; i < numChildren; ++i) {
      FindTableNodes(pRoot->GetIthChild(i), predicate, nodes, bPostOrder, bFindTopMostOnly);
    }
  }
  if (bPostOrder && predicate(*pRoot)) nodes.push_back(pRoot);
}

/// Finds the nodes that satisfy the predicate without entering a subtree whose root satisfies skippedPredicate.
/// Iterative. Matches are stored from nodes[index] on, and index, the caller's running count, goes up with each; a
/// vector that is full grows by 100 slots, so that index and not its size tells how many there are.
/// Children are taken from the last to the first.
template <class Predicate, class SkippedPredicate>
void FindNodesWithSkippedPredicate(RqNode* pRoot, const Predicate& predicate, const SkippedPredicate& skippedPredicate,
                                   std::vector<RqNode*>& nodes, [[maybe_unused]] bool bPostOrder, int& index) {
  constexpr std::size_t kMoreSlots = 100;
  if (!pRoot || skippedPredicate(*pRoot)) return;
  std::size_t capacity = nodes.size();
  std::vector<RqNode*> stack{pRoot};
  while (!stack.empty()) {
    RqNode* const pNode = stack.back();
    stack.pop_back();
    if (predicate(*pNode)) {
      if (static_cast<std::size_t>(index) >= capacity) nodes.resize(capacity += kMoreSlots);
      nodes[static_cast<std::size_t>(index++)] = pNode;
    }
    const int numChildren = pNode->GetNumChildren();
    for (int i = 0; i < numChildren; ++i) {
      RqNode* const pChild = pNode->GetIthChild(i);
      if (pChild && !skippedPredicate(*pChild)) stack.push_back(pChild);
    }
  }
}
