#pragma once

#include <list>
#include <vector>

#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Node/SQORHeap.h"

class ARpGateway;

using SmartRqJoinNodePtrVector = KXNodeVector<SmartRqNodePtr>;

/// FROM: the tables of a block and all joins between them, as a graph. Its children are the nodes, which it owns; the
/// links between them belong to the nodes that they touch and lead to nodes of this graph only. CompileLinkGraph makes
/// nested table references of it.
class RqJoinSpec final : public RqNodeImpl<RqJoinSpec, RqNode, kRqJoinSpec> {
 public:
  RqJoinSpec() = default;
  /// SetJoinNodes on a new graph.
  explicit RqJoinSpec(std::vector<RqJoinNode*>& nodes) { SetJoinNodes(nodes); }
  /// Copies the links too. They lead to nodes of the copy, and so do the facts of a star; references in join conditions
  /// to columns of derived tables below are aimed at the columns' copies. Wanted: a link whose condition refers to a
  /// column that is gone is left out.
  RqJoinSpec(const RqJoinSpec& rhs, bool bNewIDs, bool bDeepCopy);

  /// Whether both have equivalent nodes in the same places; null equals null.
  virtual bool IsEquivalent(const RqJoinSpec& rhs) const;

  /// Makes the nodes the children, in order. Takes them; the nodes that stood there are deleted.
  void SetJoinNodes(const std::vector<RqJoinNode*>& nodes);
  int GetNumTableReferences() const { return GetNumChildren(); }
  void SetNumTableReferences(int numTableReferences) { SetNumChildren(numTableReferences); }
  /// Null for an empty slot.
  RqJoinNode* GetIthJoinNode(int i) { return static_cast<RqJoinNode*>(GetIthChild(i)); }
  const RqJoinNode* GetIthJoinNode(int i) const { return static_cast<const RqJoinNode*>(GetIthChild(i)); }
  void SetIthJoinNode(int i, RqJoinNode* pNode) { SetIthChild(i, pNode); }
  /// Null for an empty slot, and for a node without a reference.
  RqTableReference* GetIthTableReference(int i);
  const RqTableReference* GetIthTableReference(int i) const;
  /// Appends the tables that columns are resolved against, in order. A slot without a table reference is a logic error.
  void CollectIdentifiedTables(std::list<RqIdentifiedTable*>& tables);

  /// Whether the links mean anything.
  bool HasGraphInfo() const { return m_bHasGraphInfo; }
  void SetGraphInfoStatus(bool bHasGraphInfo) { m_bHasGraphInfo = bHasGraphInfo; }
  /// The nodes of the facts, if the graph is a star join; they must be nodes of it when it is copied.
  bool IsStarJoinGraph() const { return !m_starFact.empty(); }
  void GetStarFact(SmartRqJoinNodePtrVector& starFact) const { starFact = m_starFact; }
  void SetStarFact(const SmartRqJoinNodePtrVector& starFact) { m_starFact = starFact; }

  /// Folds the graph of the nodes into nested table references and gives what is left as a graph that the caller owns,
  /// with the conditions of its inner joins in table references. Takes the nodes and leaves the vector empty. All joins
  /// are folded, or the outer ones alone. Conditions that find no place are added to residualCond, for the filter of
  /// the block.
  static RqJoinSpec* CompileLinkGraph(std::vector<RqJoinNode*>& nodes, Heap<RqExprCond>& residualCond, ARpGateway* pRp,
                                      bool bOuterJoinsOnly);
  /// RqJoinNode::AttachLinkConditions on each node.
  void AttachInnerJoinLinkConditions(bool bForce);

  /// Gives the links their out-nodes. To be called once, after the whole tree has been read. The places that the links
  /// name must be those of nodes.
  void ReattachLinksAfterMarshal();
  /// For readers of bytes that nobody vouches for: raises ErrorMessage, with `start` as the place of the graph, unless
  /// ReattachLinksAfterMarshal can complete every link. To be called under a BoundedRead, when the nodes stand.
  void RequireReattachableLinks(const_iterator start) const;

  /// The facts of a star are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  void CopyGraph(const RqJoinSpec& rhs);

  bool m_bHasGraphInfo = true;
  SmartRqJoinNodePtrVector m_starFact;
};
