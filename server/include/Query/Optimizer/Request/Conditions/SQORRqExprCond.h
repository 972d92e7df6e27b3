#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

// Conditions over values and their connectives. A constructor takes over every expression passed to it.

/// An expression whose value is a truth value.
///
/// Folding (IsAlwaysTrue, IsAlwaysFalse) answers whether the truth value is known without data; false means only that
/// it is not known. Each node below is asked once. Wanted: it is known by form, and nothing is computed: nulls are left
/// out of account, and constants of one kind that are not of one form count as different values, parameters and
/// computed ones too. What folds may thus be wrong for a row, and a rewriting that folds may change the rows of such a
/// request.
class RqExprCond : public RqExpr {
 public:
  RqExprCond() = default;
  RqExprCond(const RqExprCond& rhs, bool bNewIDs, bool bDeepCopy) : RqExpr(rhs, bNewIDs, bDeepCopy) {}

  RqNodeType_e GetObjectType() const override { return kRqExprCond; }
  virtual bool IsOrCond() const { return false; }
  virtual bool IsAndCond() const { return false; }
  virtual bool IsNotConnective() const { return false; }
  /// Whether the rewriters leave it as it stands: a condition that they neither take apart nor express by another.
  virtual bool IsCanonicalAtomicPredicate() const = 0;
  virtual bool IsEqualityPredicate() const { return false; }
  virtual bool IsNotEqualityPredicate() const { return false; }
  virtual bool IsComparisonPredicate() const { return false; }
  virtual bool IsAlwaysTrue() const { return false; }
  virtual bool IsAlwaysFalse() const { return false; }

  bool IsValueExpr() const override { return false; }
  bool IsCond() const override { return true; }

  /// Whether this condition is equivalent to tree or to one of its conjuncts. The share base of aggregates is ignored.
  bool IsContainedInConjunctTree(const RqExprCond& tree) const;
};

using OwnedRqExprCondPtr = Heap<RqExprCond>;
using OwnedRqExprCondVector = KXNodeVector<OwnedRqExprCondPtr>;
using RqExprCondVector = std::vector<RqExprCond*>;
using RqExprCondSet = std::set<RqExprCond*, LessEquivalentRqExpr>;

/// An owning set of conditions, one of each kind of equivalents.
class OwnedEquivRqExprCondSet : public OwnedEquivRqPtrSet<RqExprCondSet> {
 public:
  /// Makes cond the conjunction of all elements, concatenated in set order, and leaves the set empty. What cond held is
  /// deleted; an empty set makes it null.
  void moveConjunctSetToCondition(OwnedRqExprCondPtr& cond);
};

// ---------------------------------------------------------------------------------------------------------------------
// Comparisons

/// An equality or an inequality of two values.
class RqExprCondEqualityOperator : public RqExprCond {
 public:
  RqExprCondEqualityOperator() = default;
  RqExprCondEqualityOperator(const RqExprCondEqualityOperator& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprCond(rhs, bNewIDs, bDeepCopy) {}

  RqNodeType_e GetObjectType() const override { return kRqExprCondEqualityOperator; }
  /// Whether an operand is a session variable with many values that is used as a whole. The first operand that is a
  /// session variable, left before right, decides, and both results lend what they name: sessionVar that operand,
  /// otherOperand the other one. They are left alone when neither operand is one. The value is read through pRp, and
  /// ErrorMessage is raised when the variable has none.
  bool IsMultiValuedInListExpression(ARpGateway* pRp, RqExpr*& otherOperand, RqExprSessionVar*& sessionVar);
};

/// What the comparisons of two values have in common. The operands stay in the order given: it carries the meaning, or
/// a rewriter relies on it.
template <class Derived, class Base, RqNodeType_e kKind>
class RqExprCondComparison : public RqNodeImpl<Derived, Base, kKind> {
 public:
  enum { kLeftOperand, kRightOperand, kNumOperands };

  using RqNodeImpl<Derived, Base, kKind>::RqNodeImpl;
  RqExprCondComparison() = default;
  RqExprCondComparison(RqExpr* pLeftOperand, RqExpr* pRightOperand) {
    KX_ASSERT(pLeftOperand);
    KX_ASSERT(pRightOperand);
    this->AddChild(pLeftOperand);
    this->AddChild(pRightOperand);
  }

  bool IsCanonicalAtomicPredicate() const override { return false; }
  bool IsComparisonPredicate() const override { return true; }
};

/// left = right. The operand that sorts first is stored left, so that a = b and b = a are one form; a parameter,
/// though, is stored right whenever it is given right, and does not move left.
class RqExprCondEquality final
    : public RqExprCondComparison<RqExprCondEquality, RqExprCondEqualityOperator, kRqExprCondEquality> {
 public:
  RqExprCondEquality() = default;
  RqExprCondEquality(RqExpr* pLeftOperand, RqExpr* pRightOperand, bool bNullsAreEqual);
  RqExprCondEquality(const RqExprCondEquality& rhs, bool bNewIDs, bool bDeepCopy);

  /// Whether two nulls satisfy the equality.
  bool AreNullsEqual() const { return m_bNullsAreEqual; }
  void SetNullsEqual(bool bNullsAreEqual) { m_bNullsAreEqual = bNullsAreEqual; }

  bool IsCanonicalAtomicPredicate() const override { return true; }
  bool IsEqualityPredicate() const override { return true; }
  bool IsAlwaysTrue() const override;
  bool IsAlwaysFalse() const override;
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  bool m_bNullsAreEqual = false;
};

/// left <> right
class RqExprCondNotEqual final
    : public RqExprCondComparison<RqExprCondNotEqual, RqExprCondEqualityOperator, kRqExprCondNotEqual> {
 public:
  using RqExprCondComparison::RqExprCondComparison;
  bool IsNotEqualityPredicate() const override { return true; }
};

/// left < right. The one inequality that the rewriters keep.
class RqExprCondLess final : public RqExprCondComparison<RqExprCondLess, RqExprCond, kRqExprCondLess> {
 public:
  using RqExprCondComparison::RqExprCondComparison;
  bool IsCanonicalAtomicPredicate() const override { return true; }
};

/// left <= right
class RqExprCondLessEqual final : public RqExprCondComparison<RqExprCondLessEqual, RqExprCond, kRqExprCondLessEqual> {
 public:
  using RqExprCondComparison::RqExprCondComparison;
};

/// left > right
class RqExprCondGreater final : public RqExprCondComparison<RqExprCondGreater, RqExprCond, kRqExprCondGreater> {
 public:
  using RqExprCondComparison::RqExprCondComparison;
};

/// left >= right
class RqExprCondGreaterEqual final
    : public RqExprCondComparison<RqExprCondGreaterEqual, RqExprCond, kRqExprCondGreaterEqual> {
 public:
  using RqExprCondComparison::RqExprCondComparison;
};

// ---------------------------------------------------------------------------------------------------------------------
// Connectives

/// A condition made of conditions.
class RqExprCondConnective : public RqExprCond {
 public:
  RqExprCondConnective() = default;
  RqExprCondConnective(const RqExprCondConnective& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprCond(rhs, bNewIDs, bDeepCopy) {}

  RqNodeType_e GetObjectType() const override { return kRqExprCondConnective; }
  bool IsCanonicalAtomicPredicate() const override { return false; }
};

/// And and Or: binary nodes that form balanced trees, since a filter of thousands of terms must not become a chain.
///
/// A tree grows at its right edge, along nodes of one connective: its spine. The height of a node is that of its spine;
/// 0 means that the node is part of none, or no longer, and is a leaf of whatever spine holds it. Every new node and
/// every node read back from bytes starts at 0; a copy keeps the height of its source.
///
/// Traits gives the class (Connective), its kind (kKind), the truth value of one operand that decides the whole
/// (kDominant) and the height field (Height).
template <class Traits>
class RqExprCondJunction : public RqNodeImpl<typename Traits::Connective, RqExprCondConnective, Traits::kKind> {
 public:
  enum { kLeftOperand, kRightOperand, kNumOperands };
  using Connective = typename Traits::Connective;

  using RqNodeImpl<Connective, RqExprCondConnective, Traits::kKind>::RqNodeImpl;
  RqExprCondJunction() = default;
  /// The operand that sorts first is stored left; equal operands change places.
  RqExprCondJunction(RqExprCond* pLeftOperand, RqExprCond* pRightOperand);

  RqExprCond* GetLeftCond() { return static_cast<RqExprCond*>(this->GetIthOperand(kLeftOperand)); }
  const RqExprCond* GetLeftCond() const { return static_cast<const RqExprCond*>(this->GetIthOperand(kLeftOperand)); }
  RqExprCond* GetRightCond() { return static_cast<RqExprCond*>(this->GetIthOperand(kRightOperand)); }
  const RqExprCond* GetRightCond() const { return static_cast<const RqExprCond*>(this->GetIthOperand(kRightOperand)); }
  std::int32_t GetHeight() const { return Traits::Height(static_cast<const Connective&>(*this)); }

  bool IsAlwaysTrue() const override { return FoldsTo(true); }
  bool IsAlwaysFalse() const override { return FoldsTo(false); }

  /// Takes both and gives the connection of the two, which the caller owns; when one is null, the other. pFirst, if it
  /// is of this connective, grows by pSecond as one leaf, whatever pSecond is. Cost: the height of pFirst.
  static RqExprCond* Concatenate(RqExprCond* pFirst, RqExprCond* pSecond);

  /// Takes pFirst, and connects it with a deep copy of second that keeps the identities; with pFirst null, the result
  /// is the copy. Wanted: where a new node is made of the two, the height set to 0 is not that of the copy but that of
  /// second. So second counts as a leaf from now on, and a later insertion may go down into the copy.
  static RqExprCond* ConcatenateCopy(RqExprCond* pFirst, RqExprCond& second);

  /// Takes pNewCond into the tree below pRoot and gives the new root, which stands where pRoot stood.
  /// Requires: pRoot has no parent or is its parent's right operand.
  static Connective* InsertAtEnd(Connective* pRoot, RqExprCond* pNewCond);

 private:
  bool FoldsTo(bool bValue) const;
};

struct RqExprCondAndTraits {
  using Connective = RqExprCondAnd;
  static constexpr RqNodeType_e kKind = kRqExprCondAnd;
  static constexpr bool kDominant = false;

  template <class Node>
  static auto& Height(Node& node) {
    return node.andHeight_;
  }
};

struct RqExprCondOrTraits {
  using Connective = RqExprCondOr;
  static constexpr RqNodeType_e kKind = kRqExprCondOr;
  static constexpr bool kDominant = true;

  template <class Node>
  static auto& Height(Node& node) {
    return node.orHeight_;
  }
};

/// left and right
class RqExprCondAnd final : public RqExprCondJunction<RqExprCondAndTraits> {
 public:
  RqExprCondAnd() = default;
  RqExprCondAnd(RqExprCond* pLeftOperand, RqExprCond* pRightOperand)
      : RqExprCondJunction(pLeftOperand, pRightOperand) {}
  RqExprCondAnd(const RqExprCondAnd& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprCondJunction(rhs, bNewIDs, bDeepCopy), andHeight_(rhs.andHeight_) {}

  bool IsAndCond() const override { return true; }

 private:
  friend RqExprCondAndTraits;
  std::int32_t andHeight_ = 0;
};

/// left or right
class RqExprCondOr final : public RqExprCondJunction<RqExprCondOrTraits> {
 public:
  RqExprCondOr() = default;
  RqExprCondOr(RqExprCond* pLeftOperand, RqExprCond* pRightOperand) : RqExprCondJunction(pLeftOperand, pRightOperand) {}
  RqExprCondOr(const RqExprCondOr& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprCondJunction(rhs, bNewIDs, bDeepCopy), orHeight_(rhs.orHeight_) {}

  bool IsOrCond() const override { return true; }

 private:
  friend RqExprCondOrTraits;
  std::int32_t orHeight_ = 0;
};

extern template class RqExprCondJunction<RqExprCondAndTraits>;
extern template class RqExprCondJunction<RqExprCondOrTraits>;

/// not operand
class RqExprCondNot final : public RqNodeImpl<RqExprCondNot, RqExprCondConnective, kRqExprCondNot> {
 public:
  enum { kOperand, kNumOperands };
  RqExprCondNot() = default;
  explicit RqExprCondNot(RqExprCond* pOperand);
  using RqNodeImpl::RqNodeImpl;

  RqExprCond* GetInnerOperand() { return static_cast<RqExprCond*>(GetIthOperand(kOperand)); }
  const RqExprCond* GetInnerOperand() const { return static_cast<const RqExprCond*>(GetIthOperand(kOperand)); }

  bool IsNotConnective() const override { return true; }
  bool IsAlwaysTrue() const override { return GetInnerOperand()->IsAlwaysFalse(); }
  bool IsAlwaysFalse() const override { return GetInnerOperand()->IsAlwaysTrue(); }
};

// ---------------------------------------------------------------------------------------------------------------------
// Predicates with a negation of their own

/// A condition with a plain and a negated form, told apart by a flag that takes part in order, equivalence and payload.
class RqExprCondNegatable : public RqExprCond {
 public:
  RqExprCondNegatable() = default;
  RqExprCondNegatable(const RqExprCondNegatable& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprCond(rhs, bNewIDs, bDeepCopy), m_bNegated(rhs.m_bNegated) {}

  bool IsNegated() const { return m_bNegated; }
  /// Turns the plain form into the negated one and back.
  void Negate() { m_bNegated = !m_bNegated; }

  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 protected:
  explicit RqExprCondNegatable(bool bNegated) : m_bNegated(bNegated) {}

 private:
  bool m_bNegated = false;
};

/// operand is [not] null
class RqExprCondIsNull final : public RqNodeImpl<RqExprCondIsNull, RqExprCondNegatable, kRqExprCondIsNull> {
 public:
  enum { kOperand, kNumOperands };
  RqExprCondIsNull() = default;
  RqExprCondIsNull(RqExpr* pExpr, bool bNegated);
  using RqNodeImpl::RqNodeImpl;

  bool IsCanonicalAtomicPredicate() const override { return true; }
  bool IsAlwaysTrue() const override { return IsNegated() ? IsOperandNeverNull() : IsOperandAlwaysNull(); }
  bool IsAlwaysFalse() const override { return IsNegated() ? IsOperandAlwaysNull() : IsOperandNeverNull(); }

 private:
  bool IsOperandAlwaysNull() const { return GetIthOperand(kOperand)->IsAlwaysNull(); }
  bool IsOperandNeverNull() const;
};

/// operand [not] between low and high
class RqExprCondBetween final : public RqNodeImpl<RqExprCondBetween, RqExprCondNegatable, kRqExprCondBetween> {
 public:
  enum { kOperand, kLowOperand, kHighOperand, kNumOperands };
  RqExprCondBetween() = default;
  /// Wanted: the bounds are not asserted, so a null one makes a null operand.
  RqExprCondBetween(RqExpr* pExpr, RqExpr* low, RqExpr* high, bool bNegated);
  using RqNodeImpl::RqNodeImpl;

  bool IsCanonicalAtomicPredicate() const override { return false; }
};

/// operand [not] like pattern escape character
class RqExprCondLike final : public RqNodeImpl<RqExprCondLike, RqExprCondNegatable, kRqExprCondLike> {
 public:
  enum { kOperand, kPatternString, kEscapeString, kNumOperands };
  RqExprCondLike() = default;
  /// The escape character is null when there is none. It comes last here and is the third operand.
  RqExprCondLike(RqExpr* pExpr, RqExpr* pattern, bool bNegated, RqExpr* escape);
  using RqNodeImpl::RqNodeImpl;

  bool IsCanonicalAtomicPredicate() const override { return false; }
};

/// search [not] in (values). The values are a column list of expressions, or a subquery.
class RqExprCondIn : public RqNodeImpl<RqExprCondIn, RqExprCondNegatable, kRqExprCondIn> {
 public:
  enum { kSearchExpr, kInValues, kNumOperands };
  RqExprCondIn() = default;
  RqExprCondIn(RqExpr* pSearchExpr, RqExpr* pInClause, bool bNegated);
  using RqNodeImpl::RqNodeImpl;

  bool IsCanonicalAtomicPredicate() const override;
  bool IsAlwaysTrue() const override;
  bool IsAlwaysFalse() const override;
};

/// (c1, c2 ...) [not] in ((v11, v12 ...), (v21, v22 ...) ...). Search and values are column lists, and so is each row
/// of the values.
class RqExprCondMultiColumnIn final
    : public RqNodeImpl<RqExprCondMultiColumnIn, RqExprCondIn, kRqExprCondMultiColumnIn> {
 public:
  RqExprCondMultiColumnIn() = default;
  using RqNodeImpl::RqNodeImpl;

  bool IsCanonicalAtomicPredicate() const override { return true; }

  /// The same condition without lists, over deep copies that keep the identities: c1 = v11 and c2 = v12 or ..., negated
  /// (c1 <> v11 or c2 <> v12) and .... The caller owns it. Null when there are no rows, when an operand or a row is no
  /// column list, or when a row has no value for a column.
  RqExprCond* Expand() const;
};
