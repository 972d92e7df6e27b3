#pragma once

#include <cstddef>
#include <vector>

#include "rq/eval/ConditionEvaluator.h"

/// Values worth trying for each variable of an evaluator, by number: the constants that the variable meets, those that
/// variables meet which it meets itself, and so on; neighbours of all of them; and null, which stands last.
///
/// Law: among comparisons of one variable with constants, two values that stand in the same order to each of the
/// constants satisfy the same comparisons. So the constants, a value next to each, and null tell all cases apart, but
/// for types that have no next value, for patterns, and for variables that are compared with each other.
struct CandidateValues {
  explicit CandidateValues(const ConditionEvaluator& evaluator);

  std::vector<std::vector<RowValue>> m_values;
  bool m_bAreAll = true;  ///< Whether none was left out for there being too many.
};
