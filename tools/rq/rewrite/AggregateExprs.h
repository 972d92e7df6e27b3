#pragma once

#include <vector>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"

// The aggregates of the expressions of a block.

/// Whether an operand of the expression, at any depth, is an aggregate.
bool HoldsAggregate(const RqExpr& expr);

/// The aggregates of a tree that are evaluated over the rows of a group, lent: those that hold no other. Of one in
/// wrappers the outermost wrapper stands here. The tree is no such aggregate itself.
std::vector<RqExprAggr*> AggregatesOverRows(RqNode& tree);
