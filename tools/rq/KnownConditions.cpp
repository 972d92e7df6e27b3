#include "rq/KnownConditions.h"

#include "Host/KXThread.h"

namespace {

/// The visitor that moves negations onto the atoms changes nothing of the condition.
void Visit(const RqExprCond& cond, InwardNegationForm& inward) { const_cast<RqExprCond&>(cond).TourExpr(inward); }

bool IsKnown(const RqExprCond& cond) { return cond.IsAlwaysTrue() || cond.IsAlwaysFalse(); }

/// Whether an atom that is known to be true may be something else in a row, or one known to be false may be true.
bool MayBeOtherwise(const RqExprCond& atom, ARpGateway* pRp) {
  ConditionEvaluator evaluator(pRp);
  const TruthSet truth = EvaluateAtom(atom, evaluator, {});
  return atom.IsAlwaysTrue() ? truth.MayBeOtherThanTrue() : truth.MayBeTrue();
}

/// Law: And and Or over atoms are true where they are still true with each unknown atom taken for false. So an atom may
///      be left out of a disjunction if it is never true, and out of a conjunction if it always is.
/// Requires: negations on atoms.
bool MayDiffer(const RqExprCond& cond, ARpGateway* pRp) {
  KXThread::LowStackCheck(0);
  if (!cond.IsAndCond() && !cond.IsOrCond()) return IsKnown(cond) && MayBeOtherwise(cond, pRp);
  const auto& left = static_cast<const RqExprCond&>(*cond.GetIthOperand(0));
  const auto& right = static_cast<const RqExprCond&>(*cond.GetIthOperand(1));
  if (MayDiffer(left, pRp) || MayDiffer(right, pRp)) return true;
  const auto isLost = [](const RqExprCond& operand) { return operand.IsAndCond() && operand.IsAlwaysTrue(); };
  if (cond.IsOrCond() && (isLost(left) || isLost(right))) return true;
  // Known though neither operand is: a condition beside its negation.
  return IsKnown(cond) && !IsKnown(left) && !IsKnown(right);
}

}  // namespace

KnownAtoms::KnownAtoms(const RqExprCond& cond) {
  Visit(cond, m_inward);
  for (const RqExpr* pExpr : m_inward.GetLiteralExprs()) {
    if (pExpr->GetObjectType() == kRqExprCondNot) pExpr = pExpr->GetIthOperand(RqExprCondNot::kOperand);
    const auto& atom = static_cast<const RqExprCond&>(*pExpr);
    if (IsKnown(atom)) m_atoms.push_back(&atom);
  }
}

TruthSet EvaluateAtom(const RqExprCond& atom, ConditionEvaluator& evaluator, ConditionEvaluator::Row row) {
  if (!evaluator.Learn(atom)) return TruthSet::Any();
  row.resize(evaluator.GetVariables().size());
  return evaluator.Evaluate(atom, row);
}

bool MayNormalFormDiffer(const RqExprCond& cond, ARpGateway* pRp) {
  InwardNegationForm inward;
  Visit(cond, inward);
  return MayDiffer(*inward.GetInwardNegationExpr(), pRp);
}
