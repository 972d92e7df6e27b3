#pragma once

#include <cstddef>
#include <utility>

#include "BitVector.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "SQORBitClause.h"

// The way back from clauses to conditions. The results are the atoms, each use one of its own, and new connectives.
// Atom i of the clause is literalExprs[i]; the vector must outlive the visitor. A visitor serves one clause, and the
// tree that the atoms stand in serves one visitor: see AtomUses.
//
// An atom that is always true is left out of a conjunction, and of nothing else.

/// The uses of the atoms in a result. The first use of an atom takes it out of the tree that it stands in, which is
/// about to go, and leaves a null slot there; every other one is a deep copy of it with its identities. An atom that is
/// the whole tree belongs to whoever owns that, and is copied each time.
///
/// Requires: what is taken lives as long as uses are made.
class AtomUses {
 public:
  explicit AtomUses(const RqExprCondVector& literalExprs)
      : m_literalExprs(literalExprs), m_taken(literalExprs.size()) {}

  const RqExprCond& operator[](std::size_t i) const { return *m_literalExprs[i]; }

  /// The next use of atom i, to be taken by the caller.
  [[nodiscard]] RqExprCond* Make(std::size_t i) {
    RqExprCond* const pAtom = m_literalExprs[i];
    if (m_taken[i] || !pAtom->GetParent()) return static_cast<RqExprCond*>(pAtom->DeepExprCopy(false));
    m_taken.set(i);
    pAtom->ReleaseFromParent();
    return pAtom;
  }

 private:
  const RqExprCondVector& m_literalExprs;
  BitVector m_taken;
};

/// One condition for the whole clause.
class BitClauseToRqExprCond final : public BitClauseVisitor {
 public:
  explicit BitClauseToRqExprCond(const RqExprCondVector& literalExprs) : m_atoms(literalExprs) {}

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
  AtomUses m_atoms;
  OwnedRqExprCondPtr m_exprCond;
  RqExprVector m_conjuncts;
};

/// The terms of the clause at the top, each a tree of its own, in the order of the clause. TopClause is the kind of
/// that clause. A nested clause of the other kind has its terms sorted, so that the same clause has the same text; one
/// of the top's own kind deeper down keeps the order of its terms.
template <class TopClause>
class BitClauseToTerms final : public BitClauseVisitor {
 public:
  explicit BitClauseToTerms(const RqExprCondVector& literalExprs) : m_atoms(literalExprs) {}

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
  AtomUses m_atoms;
  OwnedRqExprCondVector m_terms;
  OwnedRqExprCondPtr m_nestedResult;
};

extern template class BitClauseToTerms<BitClauseConjunction>;
extern template class BitClauseToTerms<BitClauseDisjunction>;

using BitClauseToConjuncts = BitClauseToTerms<BitClauseConjunction>;
using BitClauseToDisjuncts = BitClauseToTerms<BitClauseDisjunction>;
