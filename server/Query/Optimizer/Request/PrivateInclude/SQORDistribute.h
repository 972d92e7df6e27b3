#pragma once

#include <utility>

#include "SQORBitClause.h"

/// Turns a clause into a conjunction of flat disjunctions.
///
/// It refuses a disjunction of more than 8 terms that are not single atoms, apart from what all its terms share. The
/// force flag lifts that bound; wanted: for the very clause that is visited, and not for those nested in it.
///
/// A visitor serves one clause. Wanted: after a refusal below a conjunction the refused disjunction and those behind it
/// are missing from the result; after one at the top the result is equivalent to the clause, but nested.
class Distribute final : public BitClauseVisitor {
 public:
  explicit Distribute(bool bForceCNFConversion) : m_bForceCNFConversion(bForceCNFConversion) {}

  void Visit(BitClauseDisjunction& clause) override;
  void Visit(BitClauseConjunction& clause) override;

  /// Copies the atoms and the disjunctions of the normal form.
  void GetCNFConjunction(BitClauseConjunction& out) const& { out = m_conjunction; }
  /// Hands them over.
  void GetCNFConjunction(BitClauseConjunction& out) && { out = std::move(m_conjunction); }
  bool GetConversionSuccess() const { return m_bConversionSuccess; }
  void SetConversionSuccess(bool bConversionSuccess) { m_bConversionSuccess = bConversionSuccess; }

  /// (A and B) or (A and C)  =>  A and (B or C), over a set of conjunctions: common is A, remainder is B, C.
  /// Ensures: false, and remainder as it was, if nothing is common to all. An element that is the common part itself
  ///          absorbs all others, and remainder is empty then. What remainder held before stays the caller's to delete.
  static bool FactorCommonSubexpression(const ConjunctionSet& set, BitClauseConjunction& common,
                                        ConjunctionSet& remainder);

 private:
  BitClauseConjunction m_conjunction{0};
  bool m_bForceCNFConversion;
  bool m_bConversionSuccess = true;
};

/// Turns a clause into a disjunction of flat conjunctions. It never refuses: whoever starts it knows the size. A
/// visitor serves one clause.
class DistributeDNF final : public BitClauseVisitor {
 public:
  void Visit(BitClauseDisjunction& clause) override;
  void Visit(BitClauseConjunction& clause) override;

  /// Copies the atoms and the conjunctions of the normal form.
  void GetDNFDisjunction(BitClauseDisjunction& out) const& { out = m_disjunction; }
  /// Hands them over.
  void GetDNFDisjunction(BitClauseDisjunction& out) && { out = std::move(m_disjunction); }

 private:
  BitClauseDisjunction m_disjunction{0};
};
