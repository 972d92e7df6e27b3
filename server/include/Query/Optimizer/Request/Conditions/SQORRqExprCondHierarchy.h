#pragma once

#include <cstdint>
#include <tuple>

#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

// Tests of a member's place in a hierarchy.

/// Whether the first argument stands the given number of levels above or below the second one. One argument is a
/// column, an attribute before navigation and a target column behind it, and the other a constant or a column too. The
/// leaf form takes one argument, and fills the places of the others with literals.
class RqExprIsAncestor : public RqNodeImpl<RqExprIsAncestor, RqExprCond, kRqExprIsAncestor> {
 public:
  enum { k1stArg, k2ndArg, kParentChildDistance, kNumOperands };
  RqExprIsAncestor() = default;
  RqExprIsAncestor(RqExpr* pFirstArg, RqExpr* pSecArg, RqExpr* pDistance, bool bNegated);
  /// The leaf form.
  RqExprIsAncestor(RqExpr* pFirstArg, bool bNegated);
  RqExprIsAncestor(const RqExprIsAncestor& rhs, bool bNewIDs, bool bDeepCopy);

  /// Whether the second argument is a column, so that its members are looked for below the first one.
  virtual bool IsDescendant() const;
  virtual bool IsTypeOfIsLeaf() const { return m_bIsLeaf; }
  virtual bool IsIsRoot() const { return false; }
  virtual bool IsIsSibling() const { return false; }

  bool IsNegated() const { return m_bNegated; }
  void Negate() { m_bNegated = !m_bNegated; }

  /// The argument that is an attribute, a target column or a constant: the first one if it is, else the second one,
  /// which then must be.
  RqAttribute* GetAttributeArgument();
  const RqAttribute* GetAttributeArgument() const { return Mutable().GetAttributeArgument(); }
  RqTargetColumn* GetTargetColumn();
  const RqTargetColumn* GetTargetColumn() const { return Mutable().GetTargetColumn(); }
  RqExpr* GetLiteralColumn();
  const RqExpr* GetLiteralColumn() const { return Mutable().GetLiteralColumn(); }

  /// The distance in levels, which must be an integer literal.
  std::int32_t GetDistanceValue() const;
  RqExpr* GetDistanceColumn() { return GetIthOperand(kParentChildDistance); }
  const RqExpr* GetDistanceColumn() const { return GetIthOperand(kParentChildDistance); }

  /// The table source that the test is evaluated on; the null identifier when none is set.
  const VoidID& GetLTSVoidID() const { return m_LTSVoidID; }
  void SetLTSVoidID(const VoidID& ltsVoidID) { m_LTSVoidID = ltsVoidID; }

  bool IsCanonicalAtomicPredicate() const override { return true; }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 protected:
  /// The fields in the order in which they sort.
  auto SortKey() const { return std::tie(m_bIsLeaf, m_LTSVoidID, m_bNegated); }

 private:
  RqExprIsAncestor& Mutable() const { return const_cast<RqExprIsAncestor&>(*this); }

  bool m_bIsLeaf = false;
  bool m_bNegated = false;
  VoidID m_LTSVoidID;

  static constexpr std::tuple kWrittenFields{&RqExprIsAncestor::m_bIsLeaf, &RqExprIsAncestor::m_bNegated,
                                             &RqExprIsAncestor::m_LTSVoidID};
};

/// Whether the argument is a root of its hierarchy. It has the operands of the leaf form and is none.
class RqExprIsRoot final : public RqNodeImpl<RqExprIsRoot, RqExprIsAncestor, kRqExprIsRoot> {
 public:
  RqExprIsRoot() = default;
  explicit RqExprIsRoot(RqExpr* pFirstArg) : RqNodeImpl(pFirstArg, false) {}
  using RqNodeImpl::RqNodeImpl;

  bool IsTypeOfIsLeaf() const override { return false; }
  bool IsIsRoot() const override { return true; }
};

/// Whether two members have one parent, given by its key.
class RqExprIsSibling final : public RqNodeImpl<RqExprIsSibling, RqExprIsAncestor, kRqExprIsSibling> {
 public:
  enum { kParentKey = RqExprIsAncestor::kNumOperands, kNumOperands };
  RqExprIsSibling() = default;
  RqExprIsSibling(RqExpr* first, RqExpr* second, RqExpr* pParentKey, bool bIncludeRootNode);
  RqExprIsSibling(const RqExprIsSibling& rhs, bool bNewIDs, bool bDeepCopy);

  RqExpr* GetParentKeyColumn();
  const RqExpr* GetParentKeyColumn() const { return const_cast<RqExprIsSibling*>(this)->GetParentKeyColumn(); }
  bool IsIncludeRootNode() const { return m_bIncludeRootNode; }

  bool IsDescendant() const override { return false; }
  bool IsTypeOfIsLeaf() const override { return false; }
  bool IsIsRoot() const override { return false; }
  bool IsIsSibling() const override { return true; }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  bool m_bIncludeRootNode = false;
};

/// Whether a member is a leaf of its hierarchy. Late in compilation the test is rewritten to a condition over the key
/// columns of a level, the processed expression: it lies aside, owned by this node and out of sight of tree walkers,
/// while copies of the attributes that it needs stand behind the operands. It takes no part in order, equivalence and
/// payload.
class RqExprIsLeaf final : public RqNodeImpl<RqExprIsLeaf, RqExprCondNegatable, kRqExprIsLeaf> {
 public:
  enum { kExprOperand1, kNumOperands };
  RqExprIsLeaf() = default;
  RqExprIsLeaf(RqExpr* pExpr, bool bNegated);
  /// The processed expression is copied even where the operands are not.
  RqExprIsLeaf(const RqExprIsLeaf& rhs, bool bNewIDs, bool bDeepCopy);

  /// Deletes the one operand and stands a deep copy of each key component, in order, in its place.
  void SetQueryLevelExpr(const RqExprVector& keyComponents);
  /// Takes the expression, and appends a deep copy of each distinct attribute in it to the operands, in their order.
  void SetProcessedExpr(OwnedRqExprCondPtr& processedExpr);
  /// Lends it; null when none is set.
  RqExprCond* GetProcessedExpr() { return maxExpr.Get(); }
  const RqExprCond* GetProcessedExpr() const { return maxExpr.Get(); }
  /// Undoes SetProcessedExpr.
  void RemoveProcessedExpr();
  /// Puts the processed expression where this node stands, deletes this node, and gives the expression: its new
  /// parent's, or the caller's if this node was a root.
  RqExprCond* ReplaceWithProcessedExpr();

  bool IsCanonicalAtomicPredicate() const override { return true; }
  bool IsTargetOnlyExpr() const override { return true; }

 private:
  OwnedRqExprCondPtr maxExpr;
};
