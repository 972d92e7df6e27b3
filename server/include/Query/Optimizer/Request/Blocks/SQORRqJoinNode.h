#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeImpl.h"

class RqTableReference;

using RqJoinLinkPtrList = std::list<RqJoinLink*, KXNodeStdAlloc<RqJoinLink*>>;

/// A vertex of a block's join graph: one table reference, in a slot that may be empty, and the links that touch it, in
/// the order in which they were attached. The node owns its links together with the nodes at their other ends.
class RqJoinNode final : public RqNodeImpl<RqJoinNode, RqNode, kRqJoinNode>, public SmartRqNodeContainer {
 public:
  enum { kTableRef, kNumChildren };
  /// The most links that bytes nobody vouches for may give a node: attaching a link costs a walk along the list.
  static constexpr std::uint32_t kMaxReadLinks = 2'000;

  RqJoinNode() { MakeSlots(kNumChildren); }
  /// Takes the reference. bAgoJoinNode marks a node that was made to join values of a shifted time.
  RqJoinNode(RqTableReference* pNewTableRef, bool bAgoJoinNode);
  /// The copy has no links: those are copied with the whole graph, by RqJoinSpec.
  RqJoinNode(const RqJoinNode& rhs, bool bNewIDs, bool bDeepCopy)
      : RqNodeImpl(rhs, bNewIDs, bDeepCopy), SmartRqNodeContainer(), m_bAgoJoinNode(rhs.m_bAgoJoinNode) {}
  /// Deletes the links.
  ~RqJoinNode() override;

  /// Whether both have links as many and left tables of one kind that are equivalent. Wanted: what is joined to them
  /// and on what conditions is not looked at. Two nodes without a left table are equivalent as far as that goes.
  virtual bool IsEquivalent(const RqJoinNode& rhs) const;

  /// Lends the reference; null when there is none.
  RqTableReference* GetTableReference();
  const RqTableReference* GetTableReference() const { return const_cast<RqJoinNode*>(this)->GetTableReference(); }
  /// Deletes the reference that stands and takes pTableRef.
  void SetTableReference(RqTableReference* pTableRef);
  bool IsAgoJoinNode() const { return m_bAgoJoinNode; }
  /// Does nothing without a table reference.
  void SetRemoveCandidacy(bool bRemoveCandidate);
  /// True without a table reference.
  bool GetRemoveCandidacy() const;

  /// Whether at most one link touches the node; whether none does.
  bool IsLeaf() const { return m_joinLinks.size() <= 1; }
  bool IsStandAlone() const { return m_joinLinks.empty(); }
  void GetIncidentLinks(RqJoinLinkPtrList& links) const { links = m_joinLinks; }
  const RqJoinLinkPtrList& GetIncidentLinks() const { return m_joinLinks; }

  /// Joins this node to pOut, which may be null for a condition on this table alone. Takes the condition. A link that
  /// MergeIntoExistingLink finds takes the condition up, and keeps its own driving node; else this node is the in-node
  /// of a new link.
  void AddLink(RqJoinNode* pOut, RqExprCond* pCond, SqlTableRef::JoinType joinType, JoinCardinality cardinality,
               RqJoinNode* pDriving, bool bAttached);
  /// Looks for a link between the two nodes, in either direction, that has the condition among its conjuncts or else
  /// agrees in type, cardinality and bAttached: on this node's list first, then on that of pOut. The first one takes
  /// the condition up, in front of its own, or the condition is deleted because it is there already. False, and pCond
  /// stays the caller's, if there is none. Wanted: with pOut this very node, any link that leads to it will do.
  bool MergeIntoExistingLink(RqJoinNode* pOut, RqExprCond* pCond, SqlTableRef::JoinType joinType,
                             JoinCardinality cardinality, bool bAttached);
  /// RqJoinLink::AttachLinkCond on each link. Wanted: forced over a whole graph it meets each link from both its ends.
  void AttachLinkConditions(bool bForce);

  /// For RqJoinLink: puts a link on the list, a logic error if it stands there; takes its first occurrence off.
  void AttachLink(RqJoinLink* pLink);
  void DetachLink(RqJoinLink* pLink);

  /// Replaces dest by copies of the nodes, with the links between them, which the caller owns. The nodes of source are
  /// lent, and must stand in no tree: they would be taken out of it. Their links must lead to nodes of source.
  static void CopyRqJoinNodeVector(const std::vector<RqJoinNode*>& source, std::vector<RqJoinNode*>& dest);

  /// Aims every pointer at this node, those of its links among them, at the replacement, if that is a join node.
  /// Wanted: the tree stays as it is, nothing goes to the release container, and the links stay on the list of this
  /// node, with which they die: it has to go before any node at their other ends does.
  void Replace(RqNode* pReplacement, RqNode& releaseContainer) override;
  /// Each link is written by its in-node. Wanted: a node all of whose links are attached writes none of them, since
  /// their conditions stand in table references.
  void ToByteVector(ByteVector& bv) override;
  /// The links that are read have no out-nodes yet.
  const_iterator FromByteVector(const_iterator start) override;

 private:
  RqJoinLinkPtrList m_joinLinks;
  bool m_bAgoJoinNode = false;
};
