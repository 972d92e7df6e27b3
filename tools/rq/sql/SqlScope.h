#pragma once

#include <cstddef>
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

  /// How many columns have been made so far, of the tables here and of those of the queries around.
  struct ColumnUses {
    std::size_t m_own = 0;
    std::size_t m_outer = 0;
  };
  virtual ColumnUses GetColumnUses() const = 0;
};
