#pragma once

#include <utility>

#include "Host/KXAssert.h"
#include "Host/KXString.h"
#include "Host/SqlTableRef.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

// Conditions that the rewriters carry through whole.

/// A test that only the target database knows: a function named by its text there, over any number of operands.
class RqExprEvaluatePredicate final : public RqNodeImpl<RqExprEvaluatePredicate, RqExprCond, kRqExprEvaluatePredicate> {
 public:
  RqExprEvaluatePredicate() = default;
  /// Takes the expressions and leaves the vector empty.
  RqExprEvaluatePredicate(RqExprVector& exprs, bool bNegated);
  RqExprEvaluatePredicate(const RqExprEvaluatePredicate& rhs, bool bNewIDs, bool bDeepCopy);

  bool IsNegated() const { return m_bNegated; }
  void Negate() { m_bNegated = !m_bNegated; }
  const KXString& GetFunctionDef() const { return m_functionDef; }
  void SetFunctionDef(const KXString& functionDef) { m_functionDef = functionDef; }
  /// Whether the function was given a name by a user. The name does not travel in the payload.
  bool IsUserDefinedFunction() const { return !m_userDefinedFuncName.empty(); }
  const KXString& GetUserDefinedFuncName() const { return m_userDefinedFuncName; }
  void SetUserDefinedFuncName(const KXString& funcName) { m_userDefinedFuncName = funcName; }

  bool IsCanonicalAtomicPredicate() const override { return true; }
  bool IsTargetOnlyExpr() const override { return true; }
  bool IsNavigationConstant() const override { return GetNumOperands() == 0 || RqExpr::IsNavigationConstant(); }
  /// The function text counts without regard to case. Wanted: the negation takes no part in order and equivalence, so a
  /// test and its negation are one element of a set.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  /// Wanted: the function text and the negation come before what the base writes.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  bool m_bNegated = false;
  KXString m_functionDef;
  KXString m_userDefinedFuncName;
};

/// A condition around another one, its only operand, whose truth it has.
template <class Derived, RqNodeType_e kKind>
class RqExprCondWrapper : public RqNodeImpl<Derived, RqExprCond, kKind> {
 public:
  enum { kOperand, kNumOperands };
  RqExprCondWrapper() = default;
  /// Takes the condition.
  explicit RqExprCondWrapper(RqExpr* pExpr) {
    KX_ASSERT(pExpr);
    KX_ASSERT(pExpr->IsCond());
    this->AddChild(pExpr);
  }
  using RqNodeImpl<Derived, RqExprCond, kKind>::RqNodeImpl;

  RqExprCond* GetInnerCond() { return const_cast<RqExprCond*>(std::as_const(*this).GetInnerCond()); }
  const RqExprCond* GetInnerCond() const {
    const RqExpr* const pOperand = this->GetIthOperand(kOperand);
    KX_ASSERT_TEXT(pOperand && pOperand->IsCond(), L"GetIthOperand(kOperand) && GetIthOperand(kOperand)->IsCond()");
    return static_cast<const RqExprCond*>(pOperand);
  }

  bool IsCanonicalAtomicPredicate() const override { return true; }
  bool IsAlwaysTrue() const override { return GetInnerCond()->IsAlwaysTrue(); }
  bool IsAlwaysFalse() const override { return GetInnerCond()->IsAlwaysFalse(); }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override {
    return rhs.GetObjectType() == kKind && pred(*GetInnerCond(), *static_cast<const Derived&>(rhs).GetInnerCond());
  }
  bool IsShallowLessThan(const RqExpr& rhs) const override {
    if (rhs.GetObjectType() != kKind) return RqNodeImpl<Derived, RqExprCond, kKind>::IsShallowLessThan(rhs);
    return GetInnerCond()->IsShallowLessThan(*static_cast<const Derived&>(rhs).GetInnerCond());
  }
};

/// A condition that the rewriters must take as one atom.
class RqExprCondAtomicWrapper final : public RqExprCondWrapper<RqExprCondAtomicWrapper, kRqExprCondAtomicWrapper> {
 public:
  using RqExprCondWrapper::RqExprCondWrapper;

  /// Puts the inner condition where this node stands, deletes this node, and gives the condition: its new parent's, or
  /// the caller's if this node was a root.
  RqExprCond* ReplaceWithInnerCond();
};

/// A condition that filters one side of an outer join, and the type of that join.
class RqExprCondOuterJoinFilter final
    : public RqExprCondWrapper<RqExprCondOuterJoinFilter, kRqExprCondOuterJoinFilter> {
 public:
  RqExprCondOuterJoinFilter() = default;
  /// Takes the condition.
  RqExprCondOuterJoinFilter(RqExpr* pExpr, SqlTableRef::JoinType joinType);
  RqExprCondOuterJoinFilter(const RqExprCondOuterJoinFilter& rhs, bool bNewIDs, bool bDeepCopy);

  SqlTableRef::JoinType GetJoinType() const { return m_JoinType; }

  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  /// Wanted: a lower join type is less, but a higher one is not yet greater: the inner conditions then decide. Of two
  /// filters each may be less than the other, and which one stands first in a sorted form depends on which is asked.
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  SqlTableRef::JoinType m_JoinType = SqlTableRef::kInnerJoin;
};

/// A block's grouping by its content: any number of grouping expressions, in the order given.
class RqExprCondGroupByContent final
    : public RqNodeImpl<RqExprCondGroupByContent, RqExprCond, kRqExprCondGroupByContent> {
 public:
  RqExprCondGroupByContent() = default;
  /// Takes the expressions and leaves the vector empty.
  explicit RqExprCondGroupByContent(RqExprVector& groupByExprs);
  using RqNodeImpl::RqNodeImpl;

  /// Lends the grouping expressions; what the vector held is dropped.
  void GetGroupByExprs(RqExprVector& groupByExprs);

  bool IsCanonicalAtomicPredicate() const override { return true; }
};
