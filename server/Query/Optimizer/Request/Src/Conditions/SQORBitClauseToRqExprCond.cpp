#include "SQORBitClauseToRqExprCond.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "Host/KXThread.h"

namespace {

template <class ClauseType>
constexpr bool kIsConjunction = std::is_same_v<ClauseType, BitClauseConjunction>;

/// The connective that a kind of clause stands for.
template <class ClauseType>
using ConnectiveOf = std::conditional_t<kIsConjunction<ClauseType>, RqExprCondAnd, RqExprCondOr>;

/// Calls function with each atom of the clause, to be taken, in ascending order of their bits.
template <class ClauseType, class Function>
void ForEachAtom(const ClauseType& clause, AtomUses& atoms, Function function) {
  clause.GetLiterals().ForEachSetBit([&](std::size_t i) {
    if constexpr (kIsConjunction<ClauseType>) {
      if (atoms[i].IsAlwaysTrue()) return;
    }
    function(atoms.Make(i));
  });
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// BitClauseToRqExprCond

template <class ClauseType>
void BitClauseToRqExprCond::Join(ClauseType& clause, bool bRecordTerms) {
  KXThread::LowStackCheck(0);
  if (bRecordTerms) m_conjuncts.reserve(clause.GetLiterals().count() + clause.GetNested().size());
  OwnedRqExprCondPtr result;
  const auto add = [this, bRecordTerms, &result](RqExprCond* pTerm) {
    if (bRecordTerms && pTerm) m_conjuncts.push_back(pTerm);
    result = ConnectiveOf<ClauseType>::Concatenate(result.Release(), pTerm);
  };
  ForEachAtom(clause, m_atoms, add);
  for (auto& element : clause.GetNested()) {
    Visit(Clause(element));
    add(m_exprCond.Release());
  }
  m_exprCond = std::move(result);
}

void BitClauseToRqExprCond::Visit(BitClauseConjunction& clause) { Join(clause, m_bTopLevelConjunction); }

void BitClauseToRqExprCond::Visit(BitClauseDisjunction& clause) {
  const bool bTopLevelConjunction = std::exchange(m_bTopLevelConjunction, false);
  Join(clause, false);
  m_bTopLevelConjunction = bTopLevelConjunction;
}

// ---------------------------------------------------------------------------------------------------------------------
// BitClauseToTerms

/// Makes the terms of the clause, in its order. A nested clause of which nothing is left is none.
template <class TopClause>
template <class ClauseType>
OwnedRqPtrVector<RqExprCondVector> BitClauseToTerms<TopClause>::MakeTerms(ClauseType& clause) {
  KXThread::LowStackCheck(0);
  OwnedRqPtrVector<RqExprCondVector> terms;
  terms.reserve(clause.GetLiterals().count() + clause.GetNested().size());
  ForEachAtom(clause, m_atoms, [&terms](RqExprCond* pAtom) { terms.push_back(pAtom); });
  for (auto& element : clause.GetNested()) {
    Visit(Clause(element));
    if (m_nestedResult) terms.push_back(m_nestedResult.Release());
  }
  return terms;
}

template <class TopClause>
template <class ClauseType>
void BitClauseToTerms<TopClause>::VisitClause(ClauseType& clause) {
  constexpr bool bKindOfTop = std::is_same_v<ClauseType, TopClause>;
  const bool bTopLevel = m_bTopLevel;
  if constexpr (!bKindOfTop) m_bTopLevel = false;
  OwnedRqPtrVector<RqExprCondVector> terms = MakeTerms(clause);
  m_bTopLevel = bTopLevel;

  if (bKindOfTop && bTopLevel) {
    m_terms.reserve(m_terms.size() + terms.size());
    for (RqExprCond*& pTerm : terms) m_terms.emplace_back(std::exchange(pTerm, nullptr));
    return;
  }
  // The order of outer join filters is no strict one. std::sort may then read outside the range; a merge sort does not.
  if constexpr (!bKindOfTop) std::stable_sort(terms.begin(), terms.end(), LessEquivalentRqExprShareBase());
  OwnedRqExprCondPtr result;
  for (RqExprCond*& pTerm : terms) {
    result = ConnectiveOf<ClauseType>::Concatenate(result.Release(), std::exchange(pTerm, nullptr));
  }
  m_nestedResult = std::move(result);
}

template <class TopClause>
void BitClauseToTerms<TopClause>::Visit(BitClauseDisjunction& clause) {
  VisitClause(clause);
}

template <class TopClause>
void BitClauseToTerms<TopClause>::Visit(BitClauseConjunction& clause) {
  VisitClause(clause);
}

template class BitClauseToTerms<BitClauseConjunction>;
template class BitClauseToTerms<BitClauseDisjunction>;
