#pragma once

#include <bit>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "SQORBitClause.h"

// The meaning of clauses of bits, by trying. Nothing negates in them, so two that agree in all rows of true and false
// agree in the rows with unknown too.

class ClauseTruth {
 public:
  /// The first row over the atoms of the clauses in which they differ: the letters of the atoms that are true there,
  /// or "all false". Empty if there is none. A clause of nothing makes no demand, of whichever kind it is.
  template <class A, class B>
  static std::string FirstDifference(const A& a, const B& b) {
    ClauseTruth truth(a.GetLiterals().size());
    truth.CollectAtoms(a);
    truth.CollectAtoms(b);
    for (std::uint64_t first = 0; first < std::uint64_t{1} << truth.m_atoms.size(); first += kRowsInWord) {
      truth.SetRows(first);
      const std::uint64_t differences = truth.Root(a) ^ truth.Root(b);
      if (differences != 0) return truth.RowText(std::countr_zero(differences));
    }
    return {};
  }

 private:
  static constexpr std::uint64_t kRowsInWord = 64;

  explicit ClauseTruth(std::size_t width) : m_values(width), m_bUsed(width) {}

  template <class ClauseType>
  void CollectAtoms(const ClauseType& clause) {
    clause.GetLiterals().ForEachSetBit([this](std::size_t i) {
      if (!m_bUsed[i]) m_atoms.push_back(i);
      m_bUsed[i] = true;
    });
    for (const auto& element : clause.GetNested()) CollectAtoms(Clause(element));
  }

  /// Row r gives the k-th atom that occurs the k-th bit of r; bit i of a word is row first + i.
  void SetRows(std::uint64_t first) {
    static constexpr std::uint64_t kLowBits[] = {0xaaaaaaaaaaaaaaaa, 0xcccccccccccccccc, 0xf0f0f0f0f0f0f0f0,
                                                 0xff00ff00ff00ff00, 0xffff0000ffff0000, 0xffffffff00000000};
    for (std::size_t k = 0; k < m_atoms.size(); ++k) {
      m_values[m_atoms[k]] = k < std::size(kLowBits) ? kLowBits[k] : -(first >> k & 1);
    }
  }

  template <class ClauseType>
  std::uint64_t Root(const ClauseType& clause) const {
    return clause.GetLiterals().none() && clause.GetNested().empty() ? ~std::uint64_t{0} : Words(clause);
  }
  std::uint64_t Words(const BitClauseConjunction& clause) const {
    std::uint64_t rows = ~std::uint64_t{0};
    clause.GetLiterals().ForEachSetBit([&](std::size_t i) { rows &= m_values[i]; });
    for (const auto& element : clause.GetNested()) {
      if (rows == 0) break;
      rows &= Words(Clause(element));
    }
    return rows;
  }
  std::uint64_t Words(const BitClauseDisjunction& clause) const {
    std::uint64_t rows = 0;
    clause.GetLiterals().ForEachSetBit([&](std::size_t i) { rows |= m_values[i]; });
    for (const auto& element : clause.GetNested()) rows |= Words(Clause(element));
    return rows;
  }

  std::string RowText(int bit) const {
    std::string text;
    for (std::size_t i = 0; i < m_values.size(); ++i) {
      if (m_values[i] >> bit & 1) text += static_cast<char>('a' + i);
    }
    return text.empty() ? "all false" : text;
  }

  std::vector<std::uint64_t> m_values;
  std::vector<bool> m_bUsed;
  std::vector<std::size_t> m_atoms;
};
