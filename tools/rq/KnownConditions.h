#pragma once

#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "rq/eval/ConditionEvaluator.h"

// Conditions whose truth value the library knows by their form (RqExprCond::IsAlwaysTrue, IsAlwaysFalse), and what SQL
// makes of them in a row: the form leaves out of account that a value may be null, and that two constants may come out
// as one value.
//
// No IN over rows may stand where a rewriter would have to negate it (ExpandRowInsToNegate). ErrorMessage is raised
// when the stack runs low.

/// The atoms of a condition that are known by their form, without their negations; each occurrence is one.
class KnownAtoms {
 public:
  explicit KnownAtoms(const RqExprCond& cond);
  KnownAtoms(const KnownAtoms&) = delete;
  KnownAtoms& operator=(const KnownAtoms&) = delete;

  /// They live as long as this.
  const std::vector<const RqExprCond*>& Get() const { return m_atoms; }

 private:
  InwardNegationForm m_inward;
  std::vector<const RqExprCond*> m_atoms;
};

/// What the evaluator, which learns the atom, makes of it in a row: any truth value where it cannot evaluate it.
/// Variables that the row does not have are open.
TruthSet EvaluateAtom(const RqExprCond& atom, ConditionEvaluator& evaluator, ConditionEvaluator::Row row);

/// Whether a normal form of the condition may be true in other rows than the condition: where a part of it is known by
/// its form and may be something else in a row, and where a disjunction has a conjunction of nothing but parts that are
/// always true, which it loses.
bool MayNormalFormDiffer(const RqExprCond& cond, ARpGateway* pRp);
