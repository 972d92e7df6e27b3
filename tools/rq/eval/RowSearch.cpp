#include "rq/eval/RowSearch.h"

#include <algorithm>

#include "rq/eval/CandidateValues.h"

namespace {

class Search {
 public:
  Search(const ConditionEvaluator& evaluator, const RqExprCond& a, const RqExprCond& b, const RqExpr* pFirst,
         std::uint64_t maxSteps)
      : m_evaluator(evaluator),
        m_a(a),
        m_b(b),
        m_candidates(evaluator),
        m_row(evaluator.GetVariables().size()),
        m_startSteps(evaluator.GetNumSteps()),
        m_maxSteps(maxSteps) {
    if (pFirst) AddVariablesOf(*pFirst);
    for (std::size_t i = 0; i < m_row.size(); ++i) AddVariable(i);
  }

  RowSearchResult Run() {
    RowSearchResult result;
    const bool bFound = Descend(0);
    result.m_nSteps = GetNumSteps();
    if (bFound) {
      result.m_outcome = RowSearchResult::Outcome::kFound;
      for (const std::optional<RowValue>& value : m_row) result.m_row.push_back(*value);
    } else if (IsAtLimit() || !m_candidates.m_bAreAll) {
      result.m_outcome = RowSearchResult::Outcome::kStopped;
    }
    return result;
  }

 private:
  void AddVariablesOf(const RqExpr& expr) {
    if (const auto variable = m_evaluator.FindVariable(expr)) AddVariable(*variable);
    for (int i = 0; i < expr.GetNumOperands(); ++i) {
      if (const RqExpr* const pOperand = expr.GetIthOperand(i)) AddVariablesOf(*pOperand);
    }
  }
  void AddVariable(std::size_t variable) {
    if (std::ranges::find(m_order, variable) == m_order.end()) m_order.push_back(variable);
  }

  std::uint64_t GetNumSteps() const { return m_evaluator.GetNumSteps() - m_startSteps; }
  bool IsAtLimit() const { return GetNumSteps() >= m_maxSteps; }

  /// Gives values to the variables from a place of the order on; whether that made the row sought.
  bool Descend(std::size_t place) {
    if (IsAtLimit()) return false;
    const TruthSet truthOfA = m_evaluator.Evaluate(m_a, m_row);
    if (!truthOfA.MayBeTrue()) return false;
    const TruthSet truthOfB = m_evaluator.Evaluate(m_b, m_row);
    if (!truthOfB.MayBeOtherThanTrue()) return false;
    if (place == m_order.size()) return truthOfA.IsTrue() && !truthOfB.MayBeTrue();
    std::optional<RowValue>& value = m_row[m_order[place]];
    for (const RowValue& candidate : m_candidates.m_values[m_order[place]]) {
      value = candidate;
      if (Descend(place + 1)) return true;
    }
    value.reset();
    return false;
  }

  const ConditionEvaluator& m_evaluator;
  const RqExprCond& m_a;
  const RqExprCond& m_b;
  const CandidateValues m_candidates;
  ConditionEvaluator::Row m_row;
  std::vector<std::size_t> m_order;
  const std::uint64_t m_startSteps;
  const std::uint64_t m_maxSteps;
};

}  // namespace

RowSearchResult FindRow(const ConditionEvaluator& evaluator, const RqExprCond& a, const RqExprCond& b,
                        const RqExpr* pFirst, std::uint64_t maxSteps) {
  return Search(evaluator, a, b, pFirst, maxSteps).Run();
}
