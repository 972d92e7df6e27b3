#pragma once

#include <string>
#include <variant>
#include <vector>

#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlText.h"

/// Reads the columns of a grain, which stand outside a query, as expressions over the tables of its outermost block. It
/// is to be the observer of that query's builder.
class GrainReader final : public QueryObserver {
 public:
  /// The text holds expressions of SQL with commas between them, and no subqueries.
  explicit GrainReader(std::string text) : m_text(std::move(text)) {}

  void OnBlock(RqList&) override {}
  void OnScope(QueryScope& scope) override;

  /// The expressions, once the query is built. Raises std::runtime_error, with the name of the option that they came by
  /// and the place, for a name that the block does not have and for whatever is no list of such expressions.
  std::vector<OwnedRqExprPtr> Take(const std::string& option);

 private:
  std::vector<OwnedRqExprPtr> Read(QueryScope& block) const;

  std::string m_text;
  /// Of the block that was built last, which the blocks in it come before.
  std::variant<std::vector<OwnedRqExprPtr>, SqlError> m_outcome;
};
