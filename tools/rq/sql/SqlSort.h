#pragma once

#include "Query/Optimizer/Request/Blocks/SQORRqOrderBy.h"
#include "rq/sql/SqlTree.h"

// The elements of an ORDER BY, of a query and of a window.

/// Raises SqlError for an operator to sort by.
RqSortSpec::SortDirection SortDirectionOf(SqlNode sortBy);
RqSortSpec::NullSortDirection NullSortDirectionOf(SqlNode sortBy);
