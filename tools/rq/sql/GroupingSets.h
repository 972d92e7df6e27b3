#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <vector>

#include "Query/Optimizer/Request/Blocks/SQORRqGroupBy.h"
#include "rq/sql/BlockAggregates.h"
#include "rq/sql/SqlTree.h"

/// The grouping sets that a GROUP BY clause says: each a set of columns, which a function numbers as they appear.
class GroupingSets {
 public:
  using Set = std::set<std::size_t>;
  using NumberColumn = std::function<std::size_t(SqlNode)>;

  /// Raises SqlError for more than kMaxSets.
  GroupingSets(SqlNode groupClause, const NumberColumn& numberColumn);

  static constexpr std::size_t kMaxSets = 4096;

  const std::vector<Set>& Get() const { return m_sets; }
  /// Whether the clause says columns alone, and so one set.
  bool IsPlain() const { return m_bPlain; }

 private:
  std::vector<Set> Expand(SqlNode item);
  Set ColumnsOf(SqlNode item);

  const NumberColumn& m_numberColumn;
  std::vector<Set> m_sets{Set()};
  bool m_bPlain = true;
};

/// Raises SqlError at the node if the expression names, outside of what is grouped by and of aggregates over the rows
/// of the tables, a column of one of the tables with those numbers: it has no one value in a group. Without pGroupBy
/// all rows are one group. Attributes pass, since the business model says how they are aggregated.
void RequireGrouped(const RqExpr& expr, const RqGroupBy* pGroupBy, const std::set<int>& tables,
                    const BlockAggregates& aggregates, SqlNode node);
