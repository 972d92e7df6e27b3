#pragma once

#include <vector>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"

// The aggregates of the expressions of a block, and what stands beside them.

/// Whether an operand of the expression, at any depth, is an aggregate.
bool HoldsAggregate(const RqExpr& expr);

/// Whether an aggregate is evaluated over the rows of a group: one that holds no other, or a wrapper.
bool IsOverRows(const RqExprAggr& aggr);

/// The aggregates of a tree that are evaluated over the rows of a group, lent. Of one in wrappers the outermost wrapper
/// stands here. The tree is no such aggregate itself.
std::vector<RqExprAggr*> AggregatesOverRows(RqNode& tree);

/// The clauses of a block that are evaluated behind its grouping, lent.
std::vector<RqNode*> ClausesBehindGrouping(RqList& block);

/// The column of a grouping that the expression is, lent; null if it is none, and without a grouping.
const RqExpr* FindGroupingColumn(const RqGroupBy* pGroupBy, const RqExpr& expr);

/// Raises RewriteRefusal if an attribute is evaluated behind the grouping, and is none of its columns.
void RequireGroupedAttributes(RqList& block, ARpGateway* pRp);

/// What stands for an aggregate of all rows where it was rewritten to one of partial values, of which there may be
/// none: the sum of no counts is null, and so a count gets a zero for it.
OwnedRqExprPtr CountedOfNoRows(const RqExprAggr& aggr, OwnedRqExprPtr rendered);
