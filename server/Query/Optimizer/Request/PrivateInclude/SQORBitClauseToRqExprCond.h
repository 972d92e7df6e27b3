#pragma once

#include <utility>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "SQORBitClause.h"

// The way back from clauses to conditions. The results are deep copies of the atoms, with their identities, and new
// connectives. Atom i of the clause is literalExprs[i]; the vector must outlive the visitor. A visitor serves one
// clause.
//
// An atom that is always true is left out of a conjunction, and of nothing else.

/// One condition for the whole clause.
class BitClauseToRqExprCond final : public BitClauseVisitor {
 public:
  explicit BitClauseToRqExprCond(const RqExprCondVector& literalExprs) : m_literalExprs(literalExprs) {}

  void Visit(BitClauseDisjunction& clause) override;
  void Visit(BitClauseConjunction& clause) override;

  /// Hands the condition over; null when nothing is left of the clause.
  RqExprCond* ReleaseExprCond() { return m_exprCond.Release(); }
  /// The terms of the conjunction at the top, lent, in the order of the clause. They live as long as the condition.
  const RqExprVector& GetConjuncts() const { return m_conjuncts; }

 private:
  /// Makes m_exprCond of the terms of the clause.
  template <class ClauseType>
  void Join(ClauseType& clause, bool bRecordTerms);

  bool m_bTopLevelConjunction = true;
  const RqExprCondVector& m_literalExprs;
  OwnedRqExprCondPtr m_exprCond;
  RqExprVector m_conjuncts;
};

/// The terms of the clause at the top, each a tree of its own, in the order of the clause. TopClause is the kind of
/// that clause. A nested clause of the other kind has its terms sorted, so that the same clause has the same text; one
/// of the top's own kind deeper down keeps the order of its terms.
template <class TopClause>
class BitClauseToTerms final : public BitClauseVisitor {
 public:
  explicit BitClauseToTerms(const RqExprCondVector& literalExprs) : m_literalExprs(literalExprs) {}

  void Visit(BitClauseDisjunction& clause) override;
  void Visit(BitClauseConjunction& clause) override;

  /// Hands the terms over in place of what the vector holds, which is deleted.
  void ReleaseTerms(OwnedRqExprCondVector& terms) { terms = std::exchange(m_terms, {}); }

 private:
  template <class ClauseType>
  OwnedRqPtrVector<RqExprCondVector> MakeTerms(ClauseType& clause);
  template <class ClauseType>
  void VisitClause(ClauseType& clause);

  bool m_bTopLevel = true;
  const RqExprCondVector& m_literalExprs;
  OwnedRqExprCondVector m_terms;
  OwnedRqExprCondPtr m_nestedResult;
};

extern template class BitClauseToTerms<BitClauseConjunction>;
extern template class BitClauseToTerms<BitClauseDisjunction>;

using BitClauseToConjuncts = BitClauseToTerms<BitClauseConjunction>;
using BitClauseToDisjuncts = BitClauseToTerms<BitClauseDisjunction>;
