#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "BitVector.h"
#include "Host/MemAlloc.h"

// The algebra in which normal forms are computed. Each distinct atom of a condition is a bit; a clause is a set of bits
// and of nested clauses of the opposite kind. Comparing and merging clauses takes word operations and never looks at an
// expression. A negated atom is an atom of its own: nothing here knows that p and not p exclude each other.
//
// All clauses of one conversion have one width, the number of atoms. A clause with nothing nested is flat; a normal
// form is a clause whose nested clauses are flat.

class BitClauseConjunction;
class BitClauseDisjunction;

class BitClauseVisitor {
 public:
  virtual ~BitClauseVisitor() = default;
  virtual void Visit(BitClauseDisjunction& clause) = 0;
  virtual void Visit(BitClauseConjunction& clause) = 0;
};

/// A set of atoms.
class BitClause : public memalloc::MemAllocNewdel {
 public:
  explicit BitClause(int width) : m_literals(static_cast<std::size_t>(width)) {}
  explicit BitClause(const BitVector& literals) : m_literals(literals) {}
  BitClause(const BitClause&) = default;
  BitClause(BitClause&&) noexcept = default;
  BitClause& operator=(const BitClause&) = default;
  BitClause& operator=(BitClause&&) noexcept = default;
  virtual ~BitClause() = default;

  virtual void Accept(BitClauseVisitor& visitor) = 0;
  /// Adds pClause as a term. What is nested in it is moved here; pClause stays the caller's, without it.
  virtual void Insert(BitClause* pClause) = 0;
  /// The same, seen from the term. One of the other clause's own kind, and one of a single atom, dissolves in it.
  virtual void InsertInto(BitClauseDisjunction* pClause) = 0;
  virtual void InsertInto(BitClauseConjunction* pClause) = 0;

  BitVector& GetLiterals() { return m_literals; }
  const BitVector& GetLiterals() const { return m_literals; }

 private:
  BitVector m_literals;
};

/// A vector of conjunctions that owns them: copying copies each, and what is removed is deleted. The elements are
/// pointers since this class stands before theirs; disjunctions are held by value.
class ConjunctionSet {
 public:
  using Pointers = std::vector<BitClauseConjunction*, KXNodeStdAlloc<BitClauseConjunction*>>;
  using iterator = Pointers::iterator;
  using const_iterator = Pointers::const_iterator;

  ConjunctionSet() noexcept = default;
  ConjunctionSet(const ConjunctionSet& rhs) {
    if (!rhs.empty()) CopyFrom(rhs);
  }
  ConjunctionSet(ConjunctionSet&& rhs) noexcept : m_conjunctions(std::move(rhs.m_conjunctions)) {}
  ConjunctionSet& operator=(const ConjunctionSet& rhs) { return *this = ConjunctionSet(rhs); }
  ConjunctionSet& operator=(ConjunctionSet&& rhs) noexcept {
    m_conjunctions.swap(rhs.m_conjunctions);
    return *this;
  }
  ~ConjunctionSet() {
    if (!empty()) clear();
  }

  /// Takes the conjunction.
  void PushBackConjunction(BitClauseConjunction* pConjunction) {
    constexpr std::size_t kUsualConjunctions = 8;
    if (m_conjunctions.capacity() == 0) m_conjunctions.reserve(kUsualConjunctions);
    m_conjunctions.push_back(pConjunction);
  }
  iterator erase(iterator it);
  void clear();
  /// Forgets the elements without deleting them.
  void clear_no_delete() { m_conjunctions.clear(); }
  /// Moves the elements of rhs to the end, and leaves rhs empty.
  void Append(ConjunctionSet&& rhs);

  iterator begin() { return m_conjunctions.begin(); }
  iterator end() { return m_conjunctions.end(); }
  const_iterator begin() const { return m_conjunctions.begin(); }
  const_iterator end() const { return m_conjunctions.end(); }
  std::size_t size() const { return m_conjunctions.size(); }
  bool empty() const { return m_conjunctions.empty(); }

 private:
  void CopyFrom(const ConjunctionSet& rhs);

  Pointers m_conjunctions;
};

using DisjunctionSet = std::vector<BitClauseDisjunction, KXNodeStdAlloc<BitClauseDisjunction>>;

/// The Or of its atoms and of its nested conjunctions.
class BitClauseDisjunction final : public BitClause {
 public:
  using Nested = BitClauseConjunction;
  using NestedSet = ConjunctionSet;

  explicit BitClauseDisjunction(int width) : BitClause(width) {}
  explicit BitClauseDisjunction(const BitVector& literals) : BitClause(literals) {}
  BitClauseDisjunction(const BitVector& literals, const ConjunctionSet& nested)
      : BitClause(literals), m_nestedConjunctions(nested) {}

  void Accept(BitClauseVisitor& visitor) override;
  void Insert(BitClause* pClause) override;
  void InsertInto(BitClauseDisjunction* pClause) override;
  void InsertInto(BitClauseConjunction* pClause) override;

  ConjunctionSet& GetNested() { return m_nestedConjunctions; }
  const ConjunctionSet& GetNested() const { return m_nestedConjunctions; }

  /// Adds a copy of a flat conjunction to flat ones, by absorption: A or (A and B) is A. A conjunction that a shorter
  /// one makes redundant is left out or removed.
  void AddConjunction(const BitClauseConjunction& conjunction);
  /// AddConjunction for each.
  void AddUniqueNestedConjunctions(const ConjunctionSet& conjunctions);
  /// Takes the conjunction as it is.
  void AddNestedConjunction(BitClauseConjunction* pConjunction) {
    m_nestedConjunctions.PushBackConjunction(pConjunction);
  }

  /// Wanted: a disjunction with nested conjunctions equals nothing, not even itself.
  friend bool operator==(const BitClauseDisjunction& lhs, const BitClauseDisjunction& rhs) {
    return lhs.GetLiterals() == rhs.GetLiterals() && lhs.m_nestedConjunctions.empty() &&
           rhs.m_nestedConjunctions.empty();
  }
  /// Keeps what other has too.
  BitClauseDisjunction& operator&=(const BitClauseDisjunction& other);
  /// Keeps what other has not, and adds what only other has: the remainder, if other is a part of this. Not to be
  /// applied to the clause itself.
  BitClauseDisjunction& operator^=(const BitClauseDisjunction& other);

  bool HasMatchingConjunction(const BitClauseConjunction& conjunction) const;
  bool HasMatchingConjunction(const BitClauseConjunction& conjunction, ConjunctionSet::iterator& position);
  /// The first nested conjunction that is equal, or the end.
  ConjunctionSet::iterator FindMatchingConjunction(const BitClauseConjunction& conjunction);
  ConjunctionSet::const_iterator FindMatchingConjunction(const BitClauseConjunction& conjunction) const;

  /// Whether each element of lhs has an equal one in rhs.
  static bool IsSubsetOf(const DisjunctionSet& lhs, const DisjunctionSet& rhs);

 private:
  ConjunctionSet m_nestedConjunctions;
};

/// Equality as sets.
bool operator==(const DisjunctionSet& lhs, const DisjunctionSet& rhs);

/// The And of its atoms and of its nested disjunctions.
class BitClauseConjunction final : public BitClause {
 public:
  using Nested = BitClauseDisjunction;
  using NestedSet = DisjunctionSet;

  explicit BitClauseConjunction(int width) : BitClause(width) {}
  explicit BitClauseConjunction(const BitVector& literals) : BitClause(literals) {}

  void Accept(BitClauseVisitor& visitor) override;
  void Insert(BitClause* pClause) override;
  void InsertInto(BitClauseDisjunction* pClause) override;
  void InsertInto(BitClauseConjunction* pClause) override;

  DisjunctionSet& GetNested() { return m_nestedDisjunctions; }
  const DisjunctionSet& GetNested() const { return m_nestedDisjunctions; }

  /// Adds a copy of a flat disjunction to flat ones, by absorption: A and (A or B) is A. A disjunction that a shorter
  /// one makes redundant is left out or removed.
  void AddDisjunction(const BitClauseDisjunction& disjunction);
  /// AddDisjunction for each.
  void AddUniqueNestedDisjunctions(const DisjunctionSet& disjunctions);

  /// Equal atoms, and equal nested disjunctions as sets.
  friend bool operator==(const BitClauseConjunction& lhs, const BitClauseConjunction& rhs) {
    return lhs.GetLiterals() == rhs.GetLiterals() && lhs.m_nestedDisjunctions == rhs.m_nestedDisjunctions;
  }
  /// As those of BitClauseDisjunction.
  BitClauseConjunction& operator&=(const BitClauseConjunction& other);
  BitClauseConjunction& operator^=(const BitClauseConjunction& other);

  bool HasMatchingDisjunction(const BitClauseDisjunction& disjunction) const;
  bool HasMatchingDisjunction(const BitClauseDisjunction& disjunction, DisjunctionSet::iterator& position);
  /// The first nested disjunction that is equal, or the end.
  DisjunctionSet::iterator FindMatchingDisjunction(const BitClauseDisjunction& disjunction);
  DisjunctionSet::const_iterator FindMatchingDisjunction(const BitClauseDisjunction& disjunction) const;

 private:
  DisjunctionSet m_nestedDisjunctions;
};

/// The clause that an element of a nested set is or points at, so that code for both kinds reads alike.
inline BitClauseDisjunction& Clause(BitClauseDisjunction& element) { return element; }
inline const BitClauseDisjunction& Clause(const BitClauseDisjunction& element) { return element; }
inline BitClauseConjunction& Clause(BitClauseConjunction* pElement) { return *pElement; }

/// Add a clause at the end of a set, as it is.
template <class Disjunction>
void PushBack(DisjunctionSet& set, Disjunction&& clause) {
  constexpr std::size_t kUsualClauses = 8;
  if (set.capacity() == 0) set.reserve(kUsualClauses);
  set.push_back(std::forward<Disjunction>(clause));
}
template <class Conjunction>
void PushBack(ConjunctionSet& set, Conjunction&& clause) {
  set.PushBackConjunction(new BitClauseConjunction(std::forward<Conjunction>(clause)));
}
