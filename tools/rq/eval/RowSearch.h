#pragma once

#include <cstdint>
#include <vector>

#include "rq/eval/ConditionEvaluator.h"

/// What became of the search for a row.
struct RowSearchResult {
  enum class Outcome {
    kFound,
    kNone,     ///< None of the rows over the candidate values is one.
    kStopped,  ///< The limit was reached, or there were more values than are tried.
  };

  Outcome m_outcome = Outcome::kNone;
  std::vector<RowValue> m_row;  ///< By number of variable; of a row that was found.
  std::uint64_t m_nSteps = 0;   ///< Comparisons evaluated.
};

/// Looks for a row that satisfies a and does not satisfy b: for which b is false or unknown. Both have been learnt by
/// the evaluator. The rows are those over CandidateValues, tried depth first; a branch ends where a can no longer be
/// true or b must be. pFirst, if not null, is the part of b whose variables are tried first. What is found is such a
/// row; that none is found says nothing.
RowSearchResult FindRow(const ConditionEvaluator& evaluator, const RqExprCond& a, const RqExprCond& b,
                        const RqExpr* pFirst, std::uint64_t maxSteps);
