#include "SQORDistribute.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "Host/KXThread.h"

namespace {

// Both directions are one algorithm. Form is the kind of the normal form, and the kind that the terms of a clause of
// the other kind have once each of them is distributed. Below, "and" and "or" are those of the conjunctive form; for
// the disjunctive one they change places.
template <class Form>
using ClauseOf = typename Form::Nested;
template <class Form>
using TermSetOf = typename ClauseOf<Form>::NestedSet;

/// The most terms with more than one factor that are multiplied out unasked: each doubles the clauses at least.
constexpr std::size_t kMaxNontrivialTerms = 8;

void AddUniqueNested(BitClauseConjunction& form, const DisjunctionSet& clauses) {
  form.AddUniqueNestedDisjunctions(clauses);
}
void AddUniqueNested(BitClauseDisjunction& form, const ConjunctionSet& clauses) {
  form.AddUniqueNestedConjunctions(clauses);
}
void AddNested(BitClauseConjunction& form, const BitClauseDisjunction& clause) { form.AddDisjunction(clause); }
void AddNested(BitClauseDisjunction& form, const BitClauseConjunction& clause) { form.AddConjunction(clause); }

template <class ClauseType>
bool HasNoTerms(const ClauseType& clause) {
  return clause.GetNested().empty() && clause.GetLiterals().none();
}

/// Whether multiplying by the term makes no more clauses.
template <class ClauseType>
bool IsTrivial(const ClauseType& clause) {
  return clause.GetNested().empty() && clause.GetLiterals().count() < 2;
}

void ForgetElements(ConjunctionSet& set) { set.clear_no_delete(); }
void ForgetElements(DisjunctionSet& set) { set.clear(); }

/// The law is that of Distribute::FactorCommonSubexpression.
template <class Set, class Term>
bool FactorCommon(const Set& set, Term& common, Set& remainder) {
  for (auto it = set.begin(); it != set.end(); ++it) {
    if (it == set.begin()) {
      common = Clause(*it);
    } else {
      common &= Clause(*it);
      if (HasNoTerms(common)) return false;
    }
  }
  ForgetElements(remainder);
  for (const auto& element : set) {
    Term rest = Clause(element);
    rest ^= common;
    if (HasNoTerms(rest)) {
      remainder.clear();
      return true;
    }
    PushBack(remainder, std::move(rest));
  }
  return true;
}

/// The factors of the terms to be multiplied: for each term a row of clauses, as sets of atoms.
class FactorRows {
 public:
  template <class Set>
  explicit FactorRows(const Set& terms);

  /// Calls function(atoms) for each way to choose a factor of every row: base with all those chosen. The first row
  /// varies fastest. A row without factors leaves no way. To be called once.
  /// A cancellation point at each combination.
  /// Cost: the product of the row lengths. What a combination shares with the one before, the choices of the slow rows,
  ///       is not put together again.
  template <class Function>
  void ForEachCombination(const BitVector& base, Function function);

 private:
  template <class T>
  using Vector = std::vector<T, KXNodeStdAlloc<T>>;

  struct Row {
    std::size_t m_begin;
    std::size_t m_end;
    std::size_t m_chosen;
    BitVector m_sum;  // base with the choices of this row and of all slower ones
  };

  Vector<BitVector> m_factors;
  Vector<Row> m_rows;
};

/// A term's own clauses are its first factors, and then its atoms.
template <class Set>
FactorRows::FactorRows(const Set& terms) {
  std::size_t numFactors = 0;
  for (const auto& element : terms) {
    numFactors += Clause(element).GetNested().size() + Clause(element).GetLiterals().count();
  }
  m_factors.reserve(numFactors);
  m_rows.reserve(terms.size());
  for (const auto& element : terms) {
    const auto& term = Clause(element);
    const std::size_t begin = m_factors.size();
    for (const auto& nestedElement : term.GetNested()) m_factors.push_back(Clause(nestedElement).GetLiterals());
    term.GetLiterals().ForEachSetBit([&](std::size_t i) {
      m_factors.emplace_back(term.GetLiterals().size());
      m_factors.back().set(i);
    });
    m_rows.push_back({begin, m_factors.size(), begin, {}});
  }
}

template <class Function>
void FactorRows::ForEachCombination(const BitVector& base, Function function) {
  if (std::any_of(m_rows.begin(), m_rows.end(), [](const Row& row) { return row.m_begin == row.m_end; })) return;
  for (std::size_t turned = m_rows.size(); turned > 0;) {
    for (std::size_t i = turned; i-- > 0;) {
      Row& row = m_rows[i];
      row.m_sum = i + 1 == m_rows.size() ? base : m_rows[i + 1].m_sum;
      row.m_sum |= m_factors[row.m_chosen];
    }
    KXThreadJobMgr::ServiceJobCancellation();
    function(m_rows.front().m_sum);
    turned = 0;
    for (std::size_t i = 0; i < m_rows.size() && turned == 0; ++i) {
      Row& row = m_rows[i];
      if (++row.m_chosen == row.m_end) {
        row.m_chosen = row.m_begin;
      } else {
        turned = i + 1;
      }
    }
  }
}

template <class Form>
bool MultiplyOut(const ClauseOf<Form>& source, bool bForce, Form& form);

/// Adds the normal form of a nested clause to form.
template <class Form>
void AddPart(const Form& part, Form& form) {
  form.GetLiterals() |= part.GetLiterals();
  AddUniqueNested(form, part.GetNested());
}

/// Makes form the normal form of a clause of its own kind: the atoms, and the normal form of each nested clause.
/// Ensures: false, with the nested clauses from the refused one on missing, if one is refused. A clause that came early
///          and that an atom of a later one makes redundant stays.
template <class Form>
bool JoinTerms(const Form& source, Form& form) {
  KXThread::LowStackCheck(0);
  form.GetLiterals().resize(source.GetLiterals().size());
  form.GetLiterals() |= source.GetLiterals();
  for (const auto& element : source.GetNested()) {
    Form part(0);
    if (!MultiplyOut<Form>(Clause(element), false, part)) return false;
    AddPart(part, form);
  }
  return true;
}

/// The distinct nested terms of a clause, each distributed by itself; false if one is refused.
template <class Form>
bool GatherNestedTerms(const ClauseOf<Form>& source, TermSetOf<Form>& terms) {
  for (const auto& element : source.GetNested()) {
    Form term(0);
    if (!JoinTerms(Clause(element), term)) return false;
    if (std::any_of(terms.begin(), terms.end(), [&term](auto& other) { return Clause(other) == term; })) continue;
    PushBack(terms, std::move(term));
  }
  return true;
}

/// Appends each of the atoms as a term of its own.
template <class Form>
void AppendAtoms(const BitVector& literals, TermSetOf<Form>& terms) {
  literals.ForEachSetBit([&](std::size_t i) {
    Form term(static_cast<int>(literals.size()));
    term.GetLiterals().set(i);
    PushBack(terms, std::move(term));
  });
}

/// (A and B) or (A and C)  =>  form gets A, and terms become B, C. Gives whether that is all.
template <class Form>
bool FactorOut(TermSetOf<Form>& terms, Form& form) {
  Form common(0);
  TermSetOf<Form> remainder;
  if (!FactorCommon(terms, common, remainder)) return false;
  AddPart(common, form);
  terms = std::move(remainder);
  return terms.empty();
}

/// Whether the number of terms speaks against multiplying them out.
template <class Set>
bool AreTooManyTerms(const Set& terms) {
  const auto trivialTerms =
      std::count_if(terms.begin(), terms.end(), [](auto& element) { return IsTrivial(Clause(element)); });
  return terms.size() - static_cast<std::size_t>(trivialTerms) > kMaxNontrivialTerms;
}

/// Law: (A and B) or C  =>  (A or C) and (B or C), after (A and B) or (A and C)  =>  A and (B or C).
/// Requires: negations on atoms, one width for all clauses; form is new.
/// Ensures:  form is a normal form, none of its clauses a subset of another if there was anything to multiply out. Only
///           the conjunctive form may refuse: false then, with form equivalent to source if it is this clause that is
///           refused, and useless if it is a nested one.
/// Cost:     the product of the row lengths; refused above kMaxNontrivialTerms unless forced.
/// Example:  {ab, c}  =>  {ac, bc}
template <class Form>
bool MultiplyOut(const ClauseOf<Form>& source, bool bForce, Form& form) {
  KXThread::LowStackCheck(0);
  const BitVector& literals = source.GetLiterals();
  form.GetLiterals().resize(literals.size());
  form.GetLiterals().reset();
  const std::size_t numAtoms = literals.count();
  if (numAtoms + source.GetNested().size() < 2) {
    form.GetLiterals() |= literals;
    for (const auto& element : source.GetNested()) {
      Form part(0);
      if (!JoinTerms(Clause(element), part)) return false;
      AddPart(part, form);
    }
    return true;
  }

  TermSetOf<Form> terms;
  if (!GatherNestedTerms<Form>(source, terms)) return false;
  if (terms.empty()) {
    PushBack(form.GetNested(), ClauseOf<Form>(literals));
    return true;
  }

  // Two different atoms have nothing in common. And every clause starts with the atoms, so as terms they add nothing: a
  // list of thousands of atoms beside one And must not cost its square.
  const bool bAtomsAreTerms = numAtoms < 2;
  if (bAtomsAreTerms) {
    AppendAtoms<Form>(literals, terms);
    if (FactorOut(terms, form)) return true;
  }

  if constexpr (std::is_same_v<Form, BitClauseConjunction>) {
    if (!bForce && AreTooManyTerms(terms)) {
      if (!bAtomsAreTerms) AppendAtoms<Form>(literals, terms);
      PushBack(form.GetNested(), BitClauseDisjunction(literals, terms));
      return false;
    }
  }

  ClauseOf<Form> clause(0);
  FactorRows rows(terms);
  rows.ForEachCombination(literals, [&form, &clause](const BitVector& atoms) {
    clause.GetLiterals() = atoms;
    AddNested(form, clause);
  });
  return true;
}

}  // namespace

void Distribute::Visit(BitClauseDisjunction& clause) {
  m_bConversionSuccess = MultiplyOut(clause, m_bForceCNFConversion, m_conjunction);
}

void Distribute::Visit(BitClauseConjunction& clause) {
  if (!JoinTerms(clause, m_conjunction)) m_bConversionSuccess = false;
}

bool Distribute::FactorCommonSubexpression(const ConjunctionSet& set, BitClauseConjunction& common,
                                           ConjunctionSet& remainder) {
  return FactorCommon(set, common, remainder);
}

void DistributeDNF::Visit(BitClauseDisjunction& clause) { JoinTerms(clause, m_disjunction); }

void DistributeDNF::Visit(BitClauseConjunction& clause) { MultiplyOut(clause, false, m_disjunction); }
