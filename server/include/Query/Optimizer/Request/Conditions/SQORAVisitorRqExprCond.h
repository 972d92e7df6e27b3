#pragma once

#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.h"

/// Base of the visitors that rewrite conditions. Such a visitor is started on a condition, answers each node that it
/// handles with true, and takes the operands in hand by itself; so whatever else it meets is a mistake of the caller.
///
/// Ensures: a node that the visitor does not override ends the process: a value, an aggregate or a subquery has no
/// negation and no clause. Wanted: two conditions are passed over instead, and their operands visited. Of an outer join
/// filter only the inner condition is then left; of a multi-column In the column list ends the process after all.
class AVisitorRqExprCond : public AVisitorRqExpr {
 public:
#define RQ_VISIT(Class, body, state) bool Visit(Class& expr) override;
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
};
