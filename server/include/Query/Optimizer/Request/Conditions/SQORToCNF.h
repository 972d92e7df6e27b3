#pragma once

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

class BitClauseConjunction;

// Normal forms of conditions. Giving up is a result, not an error: a condition may be too complicated to be tried, and
// a conversion to conjunctive form may be refused on its way. Each object serves one conversion.
//
// Two settings are read from the process environment at each call and bound the conversion to conjunctive form:
// TELMA_CNF_COMPLEXITY_LIMIT (512), the estimated number of clauses, and TELM_CNF_UNIQUE_CONDITION_LIMIT (16), the
// number of distinct atoms. TELMA_DNF_COMPLEXITY_LIMIT (1024) bounds the disjunctive form. A value that is no number
// counts as none. All of them raise ErrorMessage when the stack runs low or the job is cancelled.
//
// What is always true is left out of a conjunction and what is always false of a disjunction, by the folding of
// RqExprCond. Wanted: that goes by form, so a result may be true in other rows than its condition where that compares a
// value with itself, joins a condition with its negation, or compares constants that are no literals: $1 = $2 or a = 1
// becomes a = 1. Wanted too: a disjunction loses a conjunction of nothing but parts that are always true. A caller to
// whom every row matters looks for such parts first.
//
// The limits hold down what is estimated, and no more: a negated In counts as one clause and becomes one a value, so an
// Or of long negated lists is multiplied out in time that grows with the fourth power of their lengths; and few atoms
// let any estimate through. A job that may meet such conditions is to be one that can be cancelled.
//
// An outer join filter below two negations ends the process, as in not (not filter and a).
//
// Order of a result: single atoms first, as they first occur in the condition; then the clauses of several atoms, as
// distribution brings them forth.

/// The conjunctive normal form of a condition, and the list of its conjuncts.
class ToCNF {
 public:
  /// A complexityLimit that stands for the environment's.
  static constexpr int kLimitOfEnvironment = -1;

  /// GenerateCNF(cond, false, true, -1); hands the form over. Null when there is none: nothing but always true atoms,
  /// or too complicated.
  RqExprCond* operator()(const RqExprCond& cond);

  /// Makes the form, which this object owns, and the list of its conjuncts, which are lent.
  ///
  /// bForceCNFConversion lets a disjunction at the top be multiplied out whatever it costs; wanted: one below a
  /// conjunction it does not reach. bConvertCondIn as in InwardNegationForm, complexityLimit as in
  /// IsCondTooComplicated. Outcomes:
  ///
  /// converted          success; the form and its conjuncts.
  /// too complicated    but in conjunctive form already: success; the form is a copy of cond without repeated
  ///                    conjuncts. Wanted: the conjuncts point into cond, which must outlive their use.
  /// too complicated    otherwise: no success, no form, no conjuncts.
  /// refused at the top no success; the form is equivalent to cond, but not flat.
  /// refused below an   no success. Wanted: the refused disjunction and what stands behind it are missing, so the form
  ///   And              must not stand in for cond.
  void GenerateCNF(const RqExprCond& cond, bool bForceCNFConversion, bool bConvertCondIn, int complexityLimit);

  /// Lends the form that GenerateCNF made; null when there is none.
  const RqExprCond* GetCNF() const { return m_exprCNF.Get(); }
  /// Appends the conjuncts, which live as long as the form (or cond, see GenerateCNF).
  void GetConjuncts(ConstRqExprVector& conjuncts) const;
  void GetConjuncts(std::vector<const RqExprCond*>& conjuncts) const;

  bool GetConversionSuccess() const { return m_bConversionSuccess; }
  void SetConversionSuccess(bool bConversionSuccess) { m_bConversionSuccess = bConversionSuccess; }

  /// Whether the estimated number of clauses is above complexityLimit and the condition has more distinct atoms than
  /// the environment allows: many clauses over few atoms collapse by absorption, and are let through. A negative
  /// complexityLimit stands for the environment's; 0 switches the test off.
  static bool IsCondTooComplicated(const RqExprCond& cond, int complexityLimit);

  /// Whether the condition is a conjunction of atoms and flat disjunctions, where a Not on an atom is an atom.
  static bool IsCondInCNF(const RqExprCond* pCond);

  /// Append the conjuncts or the disjuncts of the top, left to right.
  static void HarvestConjuncts(const RqExprCond* pCond, ConstRqExprVector& conjuncts);
  static void HarvestDisjuncts(const RqExprCond* pCond, ConstRqExprVector& disjuncts);
  /// As HarvestDisjuncts, and every Not on the way is stripped.
  static void HarvestDisjunctivePredicates(const RqExprCond* pCond, ConstRqExprVector& predicates);
  /// Appends the conjuncts of the top that are not in conjunctive form: those to be wrapped in an
  /// RqExprCondAtomicWrapper to hide them from conversion.
  static void GatherCandidateCondsForAtomicCondWrap(RqExprCond* pCond, RqExprCondVector& candidates);

 private:
  void TakeConjunctsAsTheyStand(const RqExprCond& cond);

  OwnedRqExprCondPtr m_exprCNF;
  ConstRqExprVector m_conjuncts;
  bool m_bConversionSuccess = false;
};

/// The conjuncts of a condition in conjunctive normal form, each a tree of its own. The atoms of each are sorted, so
/// the same clause has the same text.
class ToCNFConjuncts {
 public:
  /// Makes the conjuncts. Too complicated: copies of the conjuncts as they stand, distinct and with success if that is
  /// conjunctive form already, else all of those at the top and no success. Refused: one copy of cond with new
  /// identities, and no success. The limits are those of the environment.
  void GenerateOwnedCNFConjuncts(const RqExprCond& cond, bool bConvertCondIn);

  /// Hands the conjuncts over in place of what the vector holds, which is deleted.
  void ReleaseConjuncts(OwnedRqExprCondVector& conjuncts);

  bool GetConversionSuccess() const { return m_bConversionSuccess; }

 private:
  void CopyConjunctsAsTheyStand(const RqExprCond& cond);

  OwnedRqExprCondVector m_ownedConjuncts;
  bool m_bConversionSuccess = false;
};

/// The disjuncts of a condition in disjunctive normal form, each a tree of its own with its atoms sorted.
class ToDNFDisjuncts {
 public:
  /// Makes the disjuncts. It never refuses: the caller asks IsCondTooComplicatedToConvert beforehand.
  void GenerateOwnedDNFDisjuncts(const RqExprCond& cond, bool bConvertCondIn);

  /// Hands the disjuncts over in place of what the vector holds, which is deleted.
  void ReleaseDisjuncts(OwnedRqExprCondVector& disjuncts);

  /// Whether the estimated number of clauses is above complexityLimit. A negative one stands for the environment's; 0
  /// switches the test off.
  static bool IsCondTooComplicatedToConvert(const RqExprCond& cond, int complexityLimit);

 private:
  OwnedRqExprCondVector m_ownedDisjuncts;
};

/// Appends the distinct conjuncts of a condition that is in conjunctive form already, lent, left to right. A conjunct
/// that is equivalent to one in the vector is left out and sets bDuplicateFound, which is never reset here. A conjunct
/// that has an And inside ends it with false and an empty vector, unless bIgnoreNestedAnd. Cost: quadratic in the
/// number of conjuncts.
bool HarvestLeafConjuncts(const RqExprCond* cond, ConstRqExprVector& out, bool& bDuplicateFound, bool bIgnoreNestedAnd);

/// Converts a condition to bit clauses in conjunctive normal form. Appends the distinct atoms to literals; bit i stands
/// for literals[i]. bSuccess is false if distribution refused. Gives the tree that the atoms stand in, which the caller
/// owns and keeps while it uses them.
[[nodiscard]] RqExprCond* GenerateBitClauses(const RqExprCond& cond, bool bForceCNFConversion,
                                             RqExprCondVector& literals, BitClauseConjunction& result, bool& bSuccess,
                                             bool bConvertCondIn);
