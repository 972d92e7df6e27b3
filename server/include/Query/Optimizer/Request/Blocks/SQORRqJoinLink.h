#pragma once

#include <cstdint>

#include "Host/HostTypes.h"
#include "Host/MemAlloc.h"
#include "Host/SqlTableRef.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Node/SQORSmartRqNodePtr.h"

/// How many rows of the in-node's table a row of the out-node's may meet, and the other way round. The numbers travel
/// in byte forms.
enum JoinCardinality : std::uint32_t {
  k_One_To_One,
  k_ZeroOrOne_To_One,
  k_One_To_ZeroOrOne,
  k_ZeroOrOne_To_ZeroOrOne,
  k_One_To_Many,
  k_ZeroOrOne_To_Many,
  k_Many_To_One,
  k_Many_To_ZeroOrOne,
  k_Many_To_Many,
  kUnknownCardinality
};

/// A join between two tables of a block: an edge of its join graph. It is no node of the tree.
///
/// A link stands on the list of its in-node and on that of its out-node, once each, and both own it: it dies with the
/// node that dies first, or when it is deleted. A link without an out-node is a condition on one table. It owns its
/// condition, which may be null. The driving node is the side that a hint wants to be read first; null without a hint.
class RqJoinLink : public memalloc::MemAllocNewdel {
 public:
  RqJoinLink() = default;  ///< Target of FromByteVector: without nodes.
  /// Takes the condition, and attaches itself to the nodes. bAttached says that the condition already stands in a table
  /// reference.
  RqJoinLink(RqJoinNode* pInNode, RqJoinNode* pOutNode, RqExprCond* pJoinCond, SqlTableRef::JoinType joinType,
             JoinCardinality cardinality, RqJoinNode* pDrivingNode, bool bAttached);
  RqJoinLink(const RqJoinLink&) = delete;
  RqJoinLink& operator=(const RqJoinLink&) = delete;
  virtual ~RqJoinLink() { RqJoinLink::DetachFromNodes(); }

  /// Takes the link off the lists of its nodes. It stays aimed at them.
  virtual void DetachFromNodes();
  /// Moves this end of the link to another node, or to none. The condition then no longer counts as attached, unless
  /// the end was free before. The present node changes nothing.
  virtual void SetInNode(RqJoinNode* pInNode) { SetNode(m_inNodePtr, pInNode); }
  virtual void SetOutNode(RqJoinNode* pOutNode) { SetNode(m_outNodePtr, pOutNode); }
  virtual RqJoinNode* GetInNode() const;
  virtual RqJoinNode* GetOutNode() const;
  /// The driving node is left out, and of a link whose condition is attached all but that fact.
  virtual void ToByteVector(ByteVector& bv);
  /// Wanted: what is read is an inner join, whatever was written. Before a request travels, its outer joins stand in
  /// table references.
  virtual const_iterator FromByteVector(const_iterator start);
  virtual RqNodeType_e GetObjectType() const { return kRqJoinLink; }

  /// Puts the link on the lists of its nodes. A logic error if it already stands on one, and so for a link from a node
  /// to itself.
  void AttachToNodes();
  /// Makes it another link, as the constructor does; the old condition is deleted unless it is the new one.
  void InitLink(RqJoinNode* pInNode, RqJoinNode* pOutNode, RqExprCond* pJoinCond, SqlTableRef::JoinType joinType,
                JoinCardinality cardinality, RqJoinNode* pDrivingNode, bool bAttached);
  /// Takes the condition, null or not, in front of the one that stands.
  void ConcatenateCond(RqExprCond* pJoinCond);
  /// Takes the condition; the old one is deleted unless it is the same.
  void SetNewJoinCond(RqExprCond* pNewJoinCond);
  /// Puts a copy of the condition of an inner join into the table reference of the in-node, or else of the out-node, if
  /// that is a single table; otherwise the in-node gets a new reference around its own. A condition that is attached is
  /// passed over unless bForce. The link must be an inner join.
  void AttachLinkCond(bool bForce);

  const RqExprCond* GetJoinCond() const { return m_joinCond.Get(); }
  RqExprCond* GetJoinCond() { return m_joinCond.Get(); }
  /// A copy of the same identities, owned by the caller; null without a condition.
  RqExprCond* GetJoinCondCopy() const;
  SqlTableRef::JoinType GetJoinType() const { return m_joinType; }
  JoinCardinality GetCardinality() const { return m_cardinality; }
  RqJoinNode* GetDrivingJoinNode() const;
  bool AlreadyAttachedCond() const { return m_bAttachedToTableReference; }

  /// Links have neither equality nor order: both end in a logic error, and stand for containers that ask for them.
  [[noreturn]] bool operator==(const RqJoinLink& rhs) const;
  [[noreturn]] bool operator<(const RqJoinLink& rhs) const;

 private:
  void SetNode(SmartRqNodePtr& nodePtr, RqJoinNode* pNode);

  SmartRqNodePtr m_inNodePtr;
  SmartRqNodePtr m_outNodePtr;
  OwnedRqExprCondPtr m_joinCond;
  SqlTableRef::JoinType m_joinType = SqlTableRef::kInnerJoin;
  JoinCardinality m_cardinality = kUnknownCardinality;
  SmartRqNodePtr m_drivingNodePtr;
  bool m_bAttachedToTableReference = false;
};

/// A link as it comes from bytes: it stands on its in-node and has no out-node, but knows the places of both among the
/// children of the join spec. RqJoinSpec::ReattachLinksAfterMarshal completes it.
class RqJoinLinkPersist final : public RqJoinLink {
 public:
  RqJoinLinkPersist() = default;

  std::int32_t GetInNodeIndex() const { return m_inNodeIndex; }
  std::int32_t GetOutNodeIndex() const { return m_outNodeIndex; }

  /// Appends the byte form of a link whose nodes stand at those places.
  static void ToByteVector(RqJoinLink& link, std::int32_t inNodeIndex, std::int32_t outNodeIndex, ByteVector& bv);
  void ToByteVector(ByteVector& bv) override { ToByteVector(*this, m_inNodeIndex, m_outNodeIndex, bv); }
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::int32_t m_inNodeIndex = -1;
  std::int32_t m_outNodeIndex = -1;
};
