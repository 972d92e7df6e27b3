#pragma once

#include <cstdint>

#include "Query/Optimizer/Request/Conditions/SQORAVisitorRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"

/// What InwardNegationForm and NegateCondExpr have in common: all of it but the truth value aimed at.
///
/// Law: the negation of an And is the Or of the negations, and the other way round; the negation of a negation is the
/// condition itself; a > b is b < a; a <= b is not b < a; x between a and b is not x < a and not b < x; x in (a, b) is
/// x = a or x = b. The laws hold for the third truth value, unknown, too.
/// Ensures: every negation stands on an atom, and of the comparisons only equality and less are left, so a > b, b < a
///          and not a <= b come out as one form. An atom is a leaf of the connectives And and Or; a Not is an atom with
///          what it stands on.
///
/// Derived gives kNegates and the members to fill.
template <class Derived>
class NegationRewriter : public AVisitorRqExprCond {
 public:
  using AVisitorRqExprCond::Visit;
  bool Visit(RqExprCondEquality& cond) override;
  bool Visit(RqExprCondNotEqual& cond) override;
  bool Visit(RqExprCondLess& cond) override;
  bool Visit(RqExprCondLessEqual& cond) override;
  bool Visit(RqExprCondGreater& cond) override;
  bool Visit(RqExprCondGreaterEqual& cond) override;
  bool Visit(RqExprCondAnd& cond) override;
  bool Visit(RqExprCondOr& cond) override;
  bool Visit(RqExprCondNot& cond) override;
  bool Visit(RqExprCondIsNull& cond) override;
  bool Visit(RqExprCondLike& cond) override;
  bool Visit(RqExprEvaluatePredicate& cond) override;
  bool Visit(RqExprCondBetween& cond) override;
  bool Visit(RqExprCondIn& cond) override;
  bool Visit(RqExprCondMultiColumnIn& cond) override;
#define RQ_OPAQUE_COND(Class) \
  bool Visit(Class& cond) override { return SetOpaqueCopy(cond); }
#include "Query/Optimizer/Request/Conditions/SQOROpaqueConds.def"

 private:
  friend Derived;
  NegationRewriter() = default;

  Derived& Self() { return static_cast<Derived&>(*this); }
  bool SetResult(RqExprCond* pResult);
  bool SetAtom(RqExprCond* pAtom);
  bool SetAtom(RqExprCond* pAtom, bool bUnderNot);
  template <class Cond>
  bool SetNegatableCopy(const Cond& cond);
  bool SetOpaqueCopy(const RqExprCond& cond);
  template <class Rewriter>
  RqExprCond* Rewrite(RqExprCond& cond, bool bConvertCondIn);
  template <class Junction>
  bool SetJunction(RqExprCond& left, RqExprCond& right);
  template <class Junction>
  bool SetExpandedIn(const RqExpr& search, const RqExpr& values, bool bUnderNot);
};

/// Rewrites a condition, keeping its meaning, so that negations stand on atoms alone, and lists the atoms.
///
/// To be started by cond.TourExpr(visitor), once. The condition stays as it is, and the result shares nothing with it:
/// it is made of deep copies that keep the identities, and of new nodes. The visitor owns the result until it is
/// released; the atoms are lent, and live as long as the result.
class InwardNegationForm final : public NegationRewriter<InwardNegationForm> {
 public:
  InwardNegationForm() = default;
  /// bConvertCondIn: whether an In over a list of values is expanded. Wanted: below a negated And or Or it is expanded
  /// all the same.
  explicit InwardNegationForm(bool bConvertCondIn) : m_bConvertCondIn(bConvertCondIn) {}

  /// Hands the result over.
  RqExprCond* ReleaseInwardNegationForm() { return m_inwardNegationFormExpr.Release(); }
  /// Lends the result.
  RqExprCond* GetInwardNegationExpr() const { return m_inwardNegationFormExpr.Get(); }
  /// Appends the atoms in the order of the condition, one an occurrence.
  void GetLiteralExprs(RqExprVector& out) const { out.insert(out.end(), m_literalExprs.begin(), m_literalExprs.end()); }
  /// Lends them.
  const RqExprVector& GetLiteralExprs() const { return m_literalExprs; }

  /// An estimate of the number of clauses of the conjunctive normal form, or of the disjunctive one if bNegated. A null
  /// condition counts 1. An estimate above limit may be that of a part alone. Wanted: counted modulo 2^32, so a product
  /// of two parts within the limit may come out small. Raises ErrorMessage when the stack runs low.
  static std::uint32_t CheckComplexityScore(const RqExprCond* cond, bool bNegated, std::uint32_t& limit);

 private:
  template <class>
  friend class NegationRewriter;

  static constexpr bool kNegates = false;
  OwnedRqExprCondPtr& Result() { return m_inwardNegationFormExpr; }
  RqExprVector& Atoms() { return m_literalExprs; }

  OwnedRqExprCondPtr m_inwardNegationFormExpr;
  RqExprVector m_literalExprs;
  bool m_bConvertCondIn = true;
};

/// Rewrites a condition into its negation, with negations on atoms alone, and lists the atoms. In all else as
/// InwardNegationForm.
class NegateCondExpr final : public NegationRewriter<NegateCondExpr> {
 public:
  NegateCondExpr() = default;
  explicit NegateCondExpr(bool bConvertCondIn) : m_bConvertCondIn(bConvertCondIn) {}

  RqExprCond* ReleaseNegatedExpr() { return m_negatedExpr.Release(); }
  RqExprCond* GetNegatedExpr() const { return m_negatedExpr.Get(); }
  void GetLiteralExprs(RqExprVector& out) const { out.insert(out.end(), m_literals.begin(), m_literals.end()); }

 private:
  template <class>
  friend class NegationRewriter;

  static constexpr bool kNegates = true;
  OwnedRqExprCondPtr& Result() { return m_negatedExpr; }
  RqExprVector& Atoms() { return m_literals; }

  OwnedRqExprCondPtr m_negatedExpr;
  RqExprVector m_literals;
  bool m_bConvertCondIn = true;
};

extern template class NegationRewriter<InwardNegationForm>;
extern template class NegationRewriter<NegateCondExpr>;
