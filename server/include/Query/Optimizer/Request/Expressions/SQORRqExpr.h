#pragma once

#include <compare>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

#include "Host/KXDataType.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeImpl.h"

class PropertyValue;
class RqEquivalence;
class RqShallowLessThan;

/// A value, a condition or an aggregate of a request. Its operands are its child slots, named by an enumeration of each
/// class. An expression holds no data type: the layers that use the tree work it out, and a class that must keep one
/// has a field for it.
///
/// Two relations stand over all expressions and carry the optimizer's sets, sorts and look-ups: equivalence
/// (IsEquivalent) and a total order (IsLessThan). Neither depends on identities, marks or addresses.
class RqExpr : public RqNode {
 public:
  RqExpr() = default;
  RqExpr(const RqExpr& rhs, bool bNewIDs, bool bDeepCopy) : RqNode(rhs, bNewIDs, bDeepCopy) {}

  /// One new node of this class and its fields, with a new identity and as many operand slots, all null. The caller
  /// owns it.
  virtual RqExpr* ShallowCopy() const = 0;
  /// Deletes what the slot holds and takes pNewOperand.
  virtual void SetIthOperand(int i, RqExpr* pNewOperand) { SetIthChild(i, pNewOperand); }
  /// Takes the visitor through this expression and its operands, in pre-order. A cancellation point. Raises
  /// ErrorMessage when the job is cancelled or the stack runs low.
  virtual AVisitorRqExpr& TourExpr(AVisitorRqExpr& visitor);
  virtual bool IsColumnReference() const { return IsTargetColumn() || IsDerivedColumnReference() || IsAttribute(); }
  virtual bool IsDerivedColumnReference() const { return false; }
  virtual bool IsTargetColumn() const { return false; }
  virtual bool IsExprLogicalSubquery() const { return false; }
  virtual bool IsExprPhysicalSubquery() const { return false; }
  /// Whether only a target database can evaluate it.
  virtual bool IsTargetOnlyExpr() const { return false; }
  virtual bool IsValueExpr() const { return true; }
  virtual bool IsCond() const { return false; }
  /// Whether the value is fixed for the request: every operand constant, null ones ignored. Without operands it is not,
  /// unless the class says so.
  virtual bool IsConstant() const;
  /// Whether the navigator may treat it as fixed, though its value may be unknown yet.
  virtual bool IsNavigationConstant() const;
  /// The value of a literal as a new object of the caller's; null for all else.
  virtual PropertyValue* MakePropertyValue() const { return nullptr; }
  virtual bool IsAlwaysNull() const { return false; }
  virtual bool IsMultiExpr() const { return false; }
  virtual bool IsParam() const { return false; }
  /// Whether both have one structure: kind, operands slot by slot under pred, then the fields that a class compares.
  virtual bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const;
  /// The total order: kind by number, own fields in declared order, then operands depth first, null first and a prefix
  /// before its extension. No class overrides it.
  virtual bool IsLessThan(const RqExpr& rhs, const RqShallowLessThan& shallowLessThanPred) const;
  /// As IsLessThan, and bEquivalent tells whether no difference was found at any level. Recursive, with no stack check.
  virtual bool IsDeepLessThan(const RqExpr& rhs, const RqShallowLessThan& shallowLessThanPred, bool& bEquivalent) const;
  /// The order of the two nodes without their operands.
  virtual bool IsShallowLessThan(const RqExpr& rhs) const;
  virtual bool IsTimeSeries() const { return false; }
  virtual bool IsAggrWrapper() const { return false; }
  virtual bool IsLiteral() const { return false; }
  virtual bool IsMashupsPinnedExpr() const { return false; }
  /// False when the value is known to be zero or null. A session variable is read through pRp.
  virtual bool IsNonZeroValue([[maybe_unused]] ARpGateway* pRp) const { return true; }
  virtual bool Accept(AVisitorRqExpr& visitor) = 0;
  /// The answers of IsShallowLessThan in both directions, by one call. A class overrides it only to be faster.
  virtual std::weak_ordering CompareShallow(const RqExpr& rhs) const;

  /// Ends at this expression, whatever the visitor answers: a node visitor sees an expression as a leaf.
  AVisitorRqNode& Tour(AVisitorRqNode& visitor) override;
  bool IsExpr() const override { return true; }
  bool IsAggr() const override { return false; }
  RqNodeType_e GetObjectType() const override { return kRqExpr; }
  bool Accept(AVisitorRqNode& visitor) override { return visitor.Visit(*this); }

  int GetNumOperands() const { return GetNumChildren(); }
  void SetNumOperands(int numOperands) { SetNumChildren(numOperands); }
  RqExpr* GetIthOperand(int i) { return static_cast<RqExpr*>(GetIthChild(i)); }
  const RqExpr* GetIthOperand(int i) const { return static_cast<const RqExpr*>(GetIthChild(i)); }
  /// The operand of a slot; null also where there is no such slot.
  RqExpr* FindOperand(int i) { return i < GetNumOperands() ? GetIthOperand(i) : nullptr; }
  const RqExpr* FindOperand(int i) const { return i < GetNumOperands() ? GetIthOperand(i) : nullptr; }
  /// DeepCopy, typed.
  RqExpr* DeepExprCopy(bool bNewIDs) const { return static_cast<RqExpr*>(DeepCopy(bNewIDs)); }

  /// Appends the subexpressions equal to searchExpr, aggregates by their share base too. What lies under a match is not
  /// searched.
  static void FindEquivalentSubExprs(RqExpr* pRoot, const RqExpr& searchExpr, std::vector<RqExpr*>& equivalentSubExprs);
  /// Appends the leaves, left to right.
  static void FindSubExprs(RqExpr* pRoot, std::vector<const RqExpr*>& subExprs);

  /// A type in a payload: the one-word name of its data type, then precision, scale and nullability. The type travels
  /// by name, not by number.
  static void ToByteVector_KXTypeInfo(ByteVector& bv, const KXTypeInfo& typeInfo);
  static const_iterator FromByteVector_KXTypeInfo(const_iterator start, KXTypeInfo& typeInfo);

 protected:
  /// Makes the expressions the last operands, in their order, and leaves the vector empty.
  void TakeOperands(std::vector<RqExpr*>& exprs);
};

inline bool RqExpr::IsShallowLessThan(const RqExpr& rhs) const { return GetKind() < rhs.GetKind(); }

inline std::weak_ordering RqExpr::CompareShallow(const RqExpr& rhs) const {
  if (IsShallowLessThan(rhs)) return std::weak_ordering::less;
  return rhs.IsShallowLessThan(*this) ? std::weak_ordering::greater : std::weak_ordering::equivalent;
}

using RqExprVector = std::vector<RqExpr*>;
using ConstRqExprVector = std::vector<const RqExpr*>;
using OwnedRqExprPtr = Heap<RqExpr>;
using OwnedRqExprVector = OwnedRqPtrVector<RqExprVector>;

/// The rule by which two expressions are held equal; it is handed down unchanged, so one call sets the rule for the
/// whole subtree. Here: structure, without regard to the share base of aggregates.
class RqEquivalence {
 public:
  virtual ~RqEquivalence() = default;
  virtual bool operator()(const RqExpr& lhs, const RqExpr& rhs) const { return lhs.IsEquivalent(rhs, *this); }
};

/// As RqEquivalence, and aggregates must have one share base.
class RqEquivalenceShareBase : public RqEquivalence {
 public:
  bool operator()(const RqExpr& lhs, const RqExpr& rhs) const override;
};

/// The rule by which two nodes are ordered without their operands.
class RqShallowLessThan {
 public:
  virtual ~RqShallowLessThan() = default;
  virtual bool operator()(const RqExpr& lhs, const RqExpr& rhs) const { return lhs.IsShallowLessThan(rhs); }
};

/// As RqShallowLessThan, with aggregates ordered by their share base first.
class RqShallowLessThanShareBase : public RqShallowLessThan {
 public:
  bool operator()(const RqExpr& lhs, const RqExpr& rhs) const override;
};

/// The total order under the share base rule.
class RqDeepLessThanShareBase {
 public:
  virtual ~RqDeepLessThanShareBase() = default;
  virtual bool operator()(const RqExpr& lhs, const RqExpr& rhs) const { return lhs.IsLessThan(rhs, m_pred); }

 private:
  RqShallowLessThanShareBase m_pred;
};

/// Comparator of containers and sorts of expression pointers: null first, then the total order under Pred.
template <class Pred>
class LessEquivalentRqExprBy {
 public:
  bool operator()(const RqExpr* pLhs, const RqExpr* pRhs) const {
    if (!pLhs || !pRhs) return !pLhs && pRhs;
    return pLhs->IsLessThan(*pRhs, m_pred);
  }

 private:
  Pred m_pred;
};
using LessEquivalentRqExpr = LessEquivalentRqExprBy<RqShallowLessThan>;
using LessEquivalentRqExprShareBase = LessEquivalentRqExprBy<RqShallowLessThanShareBase>;

using RqExprSet = std::set<RqExpr*, LessEquivalentRqExpr>;
using ConstRqExprSet = std::set<const RqExpr*, LessEquivalentRqExpr>;

/// Position by position: a null equals only a null, others are asked of pred. Different lengths are unequal.
bool EquivalentVectorExprs(const RqExprVector& lhs, const RqExprVector& rhs, const RqEquivalence& pred);
bool EquivalentVectorExprs(const ConstRqExprVector& lhs, const ConstRqExprVector& rhs, const RqEquivalence& pred);

/// Lexicographic order, null first.
bool LessEquivalentVectorExprs(const RqExprVector& lhs, const RqExprVector& rhs);
bool LessEquivalentVectorExprs(const ConstRqExprVector& lhs, const ConstRqExprVector& rhs);

/// The order of two kinds, by number.
inline std::weak_ordering CompareKinds(const RqExpr& lhs, const RqExpr& rhs) { return lhs.GetKind() <=> rhs.GetKind(); }

/// The shallow order of a class with fields: kind by number, then key, a function that gives the fields in declared
/// order as something with operator<. A tie is false.
template <class Class, class KeyFunction>
bool IsShallowLessThanByKey(const Class& lhs, const RqExpr& rhs, KeyFunction key) {
  if (const std::weak_ordering order = CompareKinds(lhs, rhs); order != 0) return order < 0;
  return key(lhs) < key(static_cast<const Class&>(rhs));
}

/// CompareShallow of a class whose IsShallowLessThan goes by that key.
template <class Class, class KeyFunction>
std::weak_ordering CompareShallowByKey(const Class& lhs, const RqExpr& rhs, KeyFunction key) {
  if (const std::weak_ordering order = CompareKinds(lhs, rhs); order != 0) return order;
  const auto& lhsKey = key(lhs);
  const auto& rhsKey = key(static_cast<const Class&>(rhs));
  if constexpr (std::three_way_comparable<std::remove_cvref_t<decltype(lhsKey)>, std::weak_ordering>) {
    return lhsKey <=> rhsKey;
  } else {
    if (lhsKey < rhsKey) return std::weak_ordering::less;
    return rhsKey < lhsKey ? std::weak_ordering::greater : std::weak_ordering::equivalent;
  }
}

/// RqNodeImpl for expressions: both copies, typed, and Accept of the expression visitor. Node visitors get
/// Visit(RqExpr&) through RqExpr.
template <class Derived, class Base, RqNodeType_e kKind>
requires std::is_base_of_v<RqExpr, Base>
class RqNodeImpl<Derived, Base, kKind> : public Base {
 public:
  static constexpr RqNodeType_e kObjectType = kKind;

  using Base::Base;
  RqNodeImpl() = default;
  RqNodeImpl(const RqNodeImpl& rhs, bool bNewIDs, bool bDeepCopy) : Base(rhs, bNewIDs, bDeepCopy) {}

  RqNodeType_e GetObjectType() const override { return kKind; }

  RqNode* DeepCopy(bool bNewIDs) const override {
    static_assert(std::is_same_v<typename RqNodeTraits<kKind>::Class, Derived>, "the catalogue has another class here");
    return new Derived(static_cast<const Derived&>(*this), bNewIDs, true);
  }
  RqExpr* ShallowCopy() const override { return new Derived(static_cast<const Derived&>(*this), true, false); }

  std::weak_ordering CompareShallow(const RqExpr& rhs) const override {
    if (IsOrderedByKindAlone()) return CompareKinds(*this, rhs);
    if constexpr (std::is_final_v<Derived>) {
      if (rhs.GetKind() == kKind) {
        const auto& left = static_cast<const Derived&>(*this);
        const auto& right = static_cast<const Derived&>(rhs);
        if (left.Derived::IsShallowLessThan(right)) return std::weak_ordering::less;
        return right.Derived::IsShallowLessThan(left) ? std::weak_ordering::greater : std::weak_ordering::equivalent;
      }
    }
    return RqExpr::CompareShallow(rhs);  // that of a base may know of fewer fields
  }

  using Base::Accept;
  bool Accept(AVisitorRqExpr& visitor) override {
    return visitor.Visit(static_cast<typename RqNodeTraits<kKind>::VisitedAs&>(static_cast<Derived&>(*this)));
  }

 private:
  static constexpr bool IsOrderedByKindAlone() {
    using OrderOfKinds = bool (RqExpr::*)(const RqExpr&) const;
    return std::is_same_v<decltype(&Derived::IsShallowLessThan), OrderOfKinds>;
  }

  [[no_unique_address]] RqNode::KindMark<kKind> m_kindMark{this, IsOrderedByKindAlone()};
};
