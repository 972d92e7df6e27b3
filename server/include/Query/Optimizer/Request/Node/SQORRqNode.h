#pragma once

#include <list>
#include <map>

#include "Host/HostTypes.h"
#include "Host/RpObjects.h"
#include "Host/ServerInfo.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"
#include "Query/Optimizer/Request/Node/SQUCompositeNode.h"

class ARpGateway;
class AVisitorRqExpr;
class AVisitorRqNode;

/// An object of a logical request. The tree of requests is the composite tree: operands of an expression, clauses of a
/// block and children of a node are the same slots, and a node's parent frees it.
///
/// Every class has a constructor (rhs, bNewIDs, bDeepCopy): bNewIDs draws new identities instead of keeping those of
/// the source, bDeepCopy copies the children, and without it the copy has as many null slots. Children are never
/// shared.
///
/// A new node is detached, has a new identity and is marked for no target.
class RqNode : public CompositeNode {
 public:
  RqNode();
  RqNode(const RqNode& rhs, bool bNewIDs, bool bDeepCopy);
  ~RqNode() override;

  /// Puts pReplacement where this node stands. This node lives on as the last child of releaseContainer. A root goes to
  /// releaseContainer too, and pReplacement is then attached to nothing and stays the caller's. A derived column whose
  /// expression becomes a reference to a column of an inner block, which must be aimed, hands its break status down to
  /// that column.
  virtual void Replace(RqNode* pReplacement, RqNode& releaseContainer);
  /// A copy of the subtree, owned by the caller. References to nodes outside child slots stay aimed where the source's
  /// are. Raises ErrorMessage when the stack runs low.
  virtual RqNode* DeepCopy(bool bNewIDs) const = 0;
  /// Takes the visitor through the subtree, in pre-order unless the visitor says otherwise. The count of children is
  /// read afresh for each, so a visitor may remove the last ones. Raises ErrorMessage when the stack runs low.
  virtual AVisitorRqNode& Tour(AVisitorRqNode& visitor);
  /// The database object that this node is marked for; an empty handle when there is none.
  virtual RefADatabase GetRpDatabaseObj(ARpGateway* pRp) const;
  virtual bool IsAttribute() const { return false; }
  virtual bool IsEntity() const { return false; }
  virtual bool IsExpr() const { return false; }
  virtual bool IsAggr() const { return false; }
  virtual bool IsAbstractTable() const { return false; }
  /// Appends the fields of this node, without its children, to bv.
  virtual void ToByteVector(ByteVector& bv);
  /// Reads what ToByteVector wrote and returns the cursor behind it.
  virtual const_iterator FromByteVector(const_iterator start);
  virtual RqNodeType_e GetObjectType() const = 0;
  /// An estimate in bytes for accounting: a plain record for each node of the subtree. Wanted: the fields of the most
  /// derived class are not counted unless that class says so.
  virtual int GetMySize() const;
  virtual bool Accept(AVisitorRqNode& visitor) = 0;

  /// What GetObjectType answers, read from the object itself: for what asks every node of a tree, where the virtual
  /// call would cost more than the rest. Not for constructors and destructors.
  RqNodeType_e GetKind() const {
    return m_kind == kNoKind ? GetObjectType() : static_cast<RqNodeType_e>(m_kind & ~kOrderedByKind);
  }

  /// Whether the order of expressions knows no field of this class, so that two nodes of this kind tie. False may mean
  /// that it is not known.
  bool IsOrderedByKind() const { return m_kind != kNoKind && (m_kind & kOrderedByKind) != 0; }

  RqNode* GetParent() { return static_cast<RqNode*>(CompositeNode::GetParent()); }
  const RqNode* GetParent() const { return static_cast<const RqNode*>(CompositeNode::GetParent()); }
  RqNode* GetIthChild(int i) { return static_cast<RqNode*>(CompositeNode::GetIthChild(i)); }
  const RqNode* GetIthChild(int i) const { return static_cast<const RqNode*>(CompositeNode::GetIthChild(i)); }
  void SetIthChild(int i, RqNode* pNewChild) { CompositeNode::SetIthChild(i, pNewChild); }
  RqNode* ReleaseIthChild(int i) { return static_cast<RqNode*>(CompositeNode::ReleaseIthChild(i)); }
  void AddChild(RqNode* pNewChild) { CompositeNode::AddChild(pNewChild); }
  void DeleteChild(RqNode* pChild, RqNode* pReleaseContainer) { CompositeNode::DeleteChild(pChild, pReleaseContainer); }
  RqNode* ReleaseFromParent() { return static_cast<RqNode*>(CompositeNode::ReleaseFromParent()); }

  ServerInfo::TargetType GetTargetType() const { return m_targetType; }
  void MarkTargetType(ServerInfo::TargetType serverType) { m_targetType = serverType; }
  void GetTargetID(VoidID& objID) const { objID = m_targetID; }
  void MarkTargetID(const VoidID& targetID) { m_targetID = targetID; }

  /// Whether the two nodes have one identity, as a copy made without new identities has.
  bool IsCopyOf(const RqNode& rhs) const { return GetNodeID() == rhs.GetNodeID(); }

  /// Appends this node and, in pre-order, every descendant.
  void GetObjects(std::list<RqNode*>& nodePtrs) const;
  /// DeepCopy for a subtree that must be self-contained: references to derived columns inside it, among them those in
  /// the granularity of a grouping, are aimed at the columns' copies. Those to columns outside stay as they are. All
  /// must be aimed at a column: one whose column is gone, or that was read and not attached yet, is a logic error.
  RqNode* NestedDeepCopy(bool bNewIDs) const;

  /// Called on a copy of rhs: maps each node of rhs to its counterpart here. A key that stands keeps its value.
  void GetPtrMap(const RqNode& rhs, std::map<RqNode*, RqNode*>& childMap) const;

  /// Answers whether a node is of one of the kinds given.
  class IsObjectType {
   public:
    explicit IsObjectType(RqNodeType_e type) : m_rqTypeFlags{type} {}
    explicit IsObjectType(RqNodeTypeVector types) : m_rqTypeFlags(std::move(types)) {}
    bool operator()(const RqNode& node) const;

   private:
    RqNodeTypeVector m_rqTypeFlags;
  };

  /// Answers whether a node is an aggregate.
  struct IsAggrNode {
    bool operator()(const RqNode& node) const { return node.IsAggr(); }
  };

 protected:
  /// A member of each class that answers GetObjectType for its objects. It has no state: to be constructed is all it is
  /// for, and of the classes that an object is made of the most derived one does it last. (A constructor could say it
  /// too, but not one that is inherited.) bOrderedByKind: of two nodes of the kind neither comes first.
  template <RqNodeType_e kKind>
  struct KindMark {
    explicit KindMark(RqNode* pNode, bool bOrderedByKind = false) {
      pNode->m_kind = bOrderedByKind ? kKind | kOrderedByKind : kKind;
    }
  };

 private:
  static constexpr std::int32_t kOrderedByKind = 0x10000;  // a flag beside the kind
  static_assert(kRqHighestNodeType < kOrderedByKind);

  [[gnu::noinline]] void CopyChildren(const RqNode& rhs, bool bNewIDs, bool bDeepCopy);

  ServerInfo::TargetType m_targetType = ServerInfo::kUnknown;
  VoidID m_targetID;
};
