#pragma once

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

// INs over rows, where the library has no rule for them as they stand and their comparisons must stand in.

/// Expands those that the rewriters would have to negate: that a NOT reaches through ANDs and ORs. One right under a
/// NOT stays there. Over a subquery, which does not expand, it becomes NOT (... NOT IN ...).
void ExpandRowInsToNegate(RqExprCond& root);

/// Expands those and the NOT INs too, of which a test for implication would take the rows for those of an IN.
void ExpandNegatedRowIns(OwnedRqExprCondPtr& root);
