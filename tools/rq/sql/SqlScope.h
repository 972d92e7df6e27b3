#pragma once

#include <string>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "rq/sql/SqlTree.h"

/// What names and subqueries in an expression of SQL stand for where it stands.
class SqlScope {
 public:
  virtual ~SqlScope() = default;

  /// The column that a name means; in front of the last of its parts stand those of a table. Raises SqlError at the
  /// node.
  virtual OwnedRqExprPtr MakeColumn(const std::vector<std::string>& names, SqlNode node) = 0;
  /// The subquery that a SELECT says, with nColumns columns; any number of them for 0. Raises SqlError.
  virtual Heap<RqExprSubquery> MakeSubquery(SqlNode select, std::size_t nColumns) = 0;
};
