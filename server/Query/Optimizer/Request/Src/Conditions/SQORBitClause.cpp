#include "SQORBitClause.h"

#include <algorithm>
#include <compare>
#include <iterator>

// ---------------------------------------------------------------------------------------------------------------------
// Sets

ConjunctionSet::iterator ConjunctionSet::erase(iterator it) {
  delete *it;
  return m_conjunctions.erase(it);
}

void ConjunctionSet::clear() {
  for (const BitClauseConjunction* const pConjunction : m_conjunctions) delete pConjunction;
  m_conjunctions.clear();
}

void ConjunctionSet::Append(ConjunctionSet&& rhs) {
  m_conjunctions.insert(m_conjunctions.end(), rhs.begin(), rhs.end());
  rhs.m_conjunctions.clear();
}

void ConjunctionSet::CopyFrom(const ConjunctionSet& rhs) {
  m_conjunctions.reserve(rhs.size());
  for (const BitClauseConjunction* const pConjunction : rhs) {
    m_conjunctions.push_back(new BitClauseConjunction(*pConjunction));
  }
}

namespace {

/// Law: A or (A and B) is A, and A and (A or B) is A.
/// Requires: flat clauses of one width; only their atoms are looked at.
/// Ensures:  nested stands for the same with the clause added. A redundant clause is not added, and an element that it
///           makes redundant is not kept; elements that were there before are not compared with each other.
template <class Set, class NestedClause>
void AddAbsorbing(const BitVector& outerLiterals, Set& nested, const NestedClause& clause) {
  const BitVector& literals = clause.GetLiterals();
  if (literals.Intersects(outerLiterals)) return;
  for (std::size_t i = nested.size(); i-- > 0;) {
    const auto it = nested.begin() + static_cast<std::ptrdiff_t>(i);
    const std::partial_ordering order = Clause(*it).GetLiterals().CompareAsSets(literals);
    if (order <= 0) return;
    if (order > 0) nested.erase(it);
  }
  PushBack(nested, clause);
}

/// The first element that equals the clause, or the end.
template <class Set, class NestedClause>
auto FindMatching(Set& nested, const NestedClause& clause) {
  return std::find_if(nested.begin(), nested.end(), [&clause](auto& element) { return Clause(element) == clause; });
}

template <class ClauseType>
void KeepCommon(ClauseType& clause, const ClauseType& other) {
  clause.GetLiterals() &= other.GetLiterals();
  auto& nested = clause.GetNested();
  for (std::size_t i = nested.size(); i-- > 0;) {
    const auto it = nested.begin() + static_cast<std::ptrdiff_t>(i);
    if (FindMatching(other.GetNested(), Clause(*it)) == other.GetNested().end()) nested.erase(it);
  }
}

template <class ClauseType>
void KeepDifference(ClauseType& clause, const ClauseType& other) {
  clause.GetLiterals() ^= other.GetLiterals();
  auto& nested = clause.GetNested();
  for (const auto& element : other.GetNested()) {
    const auto& otherClause = Clause(element);
    if (const auto it = FindMatching(nested, otherClause); it != nested.end()) {
      nested.erase(it);
    } else {
      PushBack(nested, otherClause);
    }
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// BitClauseDisjunction

void BitClauseDisjunction::Accept(BitClauseVisitor& visitor) { visitor.Visit(*this); }

void BitClauseDisjunction::Insert(BitClause* pClause) { pClause->InsertInto(this); }

void BitClauseDisjunction::InsertInto(BitClauseDisjunction* pClause) {
  pClause->GetLiterals() |= GetLiterals();
  pClause->m_nestedConjunctions.Append(std::move(m_nestedConjunctions));
}

void BitClauseDisjunction::InsertInto(BitClauseConjunction* pClause) {
  BitClauseDisjunction& term = pClause->GetNested().emplace_back(GetLiterals());
  term.m_nestedConjunctions = std::exchange(m_nestedConjunctions, {});
}

void BitClauseDisjunction::AddConjunction(const BitClauseConjunction& conjunction) {
  AddAbsorbing(GetLiterals(), m_nestedConjunctions, conjunction);
}

void BitClauseDisjunction::AddUniqueNestedConjunctions(const ConjunctionSet& conjunctions) {
  for (const BitClauseConjunction* const pConjunction : conjunctions) AddConjunction(*pConjunction);
}

BitClauseDisjunction& BitClauseDisjunction::operator&=(const BitClauseDisjunction& other) {
  KeepCommon(*this, other);
  return *this;
}

BitClauseDisjunction& BitClauseDisjunction::operator^=(const BitClauseDisjunction& other) {
  KeepDifference(*this, other);
  return *this;
}

bool BitClauseDisjunction::HasMatchingConjunction(const BitClauseConjunction& conjunction) const {
  return FindMatchingConjunction(conjunction) != m_nestedConjunctions.end();
}

bool BitClauseDisjunction::HasMatchingConjunction(const BitClauseConjunction& conjunction,
                                                  ConjunctionSet::iterator& position) {
  position = FindMatchingConjunction(conjunction);
  return position != m_nestedConjunctions.end();
}

ConjunctionSet::iterator BitClauseDisjunction::FindMatchingConjunction(const BitClauseConjunction& conjunction) {
  return FindMatching(m_nestedConjunctions, conjunction);
}

ConjunctionSet::const_iterator BitClauseDisjunction::FindMatchingConjunction(
    const BitClauseConjunction& conjunction) const {
  return FindMatching(m_nestedConjunctions, conjunction);
}

bool BitClauseDisjunction::IsSubsetOf(const DisjunctionSet& lhs, const DisjunctionSet& rhs) {
  return std::all_of(lhs.begin(), lhs.end(), [&rhs](const BitClauseDisjunction& disjunction) {
    return FindMatching(rhs, disjunction) != rhs.end();
  });
}

bool operator==(const DisjunctionSet& lhs, const DisjunctionSet& rhs) {
  return BitClauseDisjunction::IsSubsetOf(lhs, rhs) && BitClauseDisjunction::IsSubsetOf(rhs, lhs);
}

// ---------------------------------------------------------------------------------------------------------------------
// BitClauseConjunction

void BitClauseConjunction::Accept(BitClauseVisitor& visitor) { visitor.Visit(*this); }

void BitClauseConjunction::Insert(BitClause* pClause) { pClause->InsertInto(this); }

void BitClauseConjunction::InsertInto(BitClauseDisjunction* pClause) {
  if (m_nestedDisjunctions.empty() && GetLiterals().count() < 2) {
    pClause->GetLiterals() |= GetLiterals();
    return;
  }
  auto* const pTerm = new BitClauseConjunction(GetLiterals());
  pTerm->m_nestedDisjunctions = std::exchange(m_nestedDisjunctions, {});
  pClause->AddNestedConjunction(pTerm);
}

void BitClauseConjunction::InsertInto(BitClauseConjunction* pClause) {
  pClause->GetLiterals() |= GetLiterals();
  DisjunctionSet& nested = pClause->m_nestedDisjunctions;
  nested.insert(nested.end(), std::move_iterator(m_nestedDisjunctions.begin()),
                std::move_iterator(m_nestedDisjunctions.end()));
  m_nestedDisjunctions.clear();
}

void BitClauseConjunction::AddDisjunction(const BitClauseDisjunction& disjunction) {
  AddAbsorbing(GetLiterals(), m_nestedDisjunctions, disjunction);
}

void BitClauseConjunction::AddUniqueNestedDisjunctions(const DisjunctionSet& disjunctions) {
  for (const BitClauseDisjunction& disjunction : disjunctions) AddDisjunction(disjunction);
}

BitClauseConjunction& BitClauseConjunction::operator&=(const BitClauseConjunction& other) {
  KeepCommon(*this, other);
  return *this;
}

BitClauseConjunction& BitClauseConjunction::operator^=(const BitClauseConjunction& other) {
  KeepDifference(*this, other);
  return *this;
}

bool BitClauseConjunction::HasMatchingDisjunction(const BitClauseDisjunction& disjunction) const {
  return FindMatchingDisjunction(disjunction) != m_nestedDisjunctions.end();
}

bool BitClauseConjunction::HasMatchingDisjunction(const BitClauseDisjunction& disjunction,
                                                  DisjunctionSet::iterator& position) {
  position = FindMatchingDisjunction(disjunction);
  return position != m_nestedDisjunctions.end();
}

DisjunctionSet::iterator BitClauseConjunction::FindMatchingDisjunction(const BitClauseDisjunction& disjunction) {
  return FindMatching(m_nestedDisjunctions, disjunction);
}

DisjunctionSet::const_iterator BitClauseConjunction::FindMatchingDisjunction(
    const BitClauseDisjunction& disjunction) const {
  return FindMatching(m_nestedDisjunctions, disjunction);
}
