#pragma once

#include <cstdint>
#include <string>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

/// What a condition says about another, as text.
struct ImplicationAnswer {
  bool m_bImplied = false;
  std::string m_text;  ///< Closed by a line feed.
};

/// An object of JSON on one line.
ImplicationAnswer ImplicationAsJson(ARpGateway* pRp, OwnedRqExprCondPtr a, OwnedRqExprCondPtr b);

/// Lines to read. Where a was not shown to imply b they tell the first conjunct of b that no conjunct of a implies, and
/// a row that satisfies a and not b, if there is one among the candidates: a proof that b is not implied. The search is
/// bounded by maxSteps comparisons.
///
/// An IN over rows that is negated is expanded first: the library's test takes its rows for those of a plain one.
/// Raises ErrorMessage when a session variable has no value.
ImplicationAnswer ImplicationAsText(ARpGateway* pRp, OwnedRqExprCondPtr a, OwnedRqExprCondPtr b,
                                    std::uint64_t maxSteps);
