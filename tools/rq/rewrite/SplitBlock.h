#pragma once

#include <vector>

#include "Query/Optimizer/Request/Blocks/SQORRqList.h"

/// Splits a grouped block in two: an inner one that groups at the finer grain of the block's own grouping and the
/// columns of the grain, and the outer one over it as a derived table. Each aggregate is rewritten onto the inner block
/// (RqExprAggr::RenderOnSummaryList); filtered ones are first turned inside out, so that the filter stands in what they
/// aggregate.
///
/// Law: both say the same rows.
///
/// The block becomes the outer one. tableNumber is that of the derived table, and no table of the request has it.
/// Raises RewriteRefusal, and leaves the block as it is, if it is not grouped, if it has grouping sets, if an aggregate
/// of it cannot be split, if the grain has no column, or if what stands behind the grouping has an attribute of its own
/// or a subquery that refers to the tables of the block.
void SplitBlock(RqList& block, const std::vector<OwnedRqExprPtr>& grain, int tableNumber, ARpGateway* pRp);

/// A number above those of all tables of the request.
int NextTableNumber(RqNode& request);
