#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rq/sql/AggregateFunctions.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlWindow.h"

/// Makes the tree of one call of an aggregate or window function.
///
///   f(x), f(DISTINCT x), COUNT(*)     over the rows of a group: no control break, as the block's grouping is the grain
///   f(x BY a, b)                      over the rows of the tables, or with an aggregate in x over the block's, at the
///                                     grain of the control break (a, b), which must be grouped by
///   f(x) OVER (PARTITION BY a, b)     over the rows of the block: with the control break (a, b). An empty partition is
///                                     the control break (1), since no control break would say a group
///   RANK and DENSE_RANK               over the order's columns, with the partition as control break; RANK(x BY a) is
///                                     that from the greatest x down
///   ROW_NUMBER                        over the text * for a row, with the partition as control break, and as compute
///                                     break the columns of partition and order, each once, each with a direction
///   NTILE, PERCENT_RANK               over the one column that they are ordered by, upwards; PERCENTILE(x) is the
///   latter SUM, COUNT, MIN, MAX with ROWS    from the first row on: the running kind, which knows its order by columns
///   of the
///                                     select list, if need be hidden ones. RANGE, the default, will do where the block
///                                     is grouped by what partition and order have, and so no rows are peers
///   SUM, AVG with ROWS n PRECEDING    the moving kind, whose window size is the number of rows with this one: n + 1
///   RSUM, RCOUNT, RMIN, RMAX(x),      the running and moving kinds along the ORDER BY of the query
///   MSUM, MAVG(x, size)
///   FILTER (WHERE ...)                RqExprAggrIf around the aggregate
///
/// Raises SqlError at the place of anything else.
class AggregateBuilder {
 public:
  /// All are lent; the name is that of the call's function.
  AggregateBuilder(std::string_view text, SqlContext& context, std::string_view name, SqlNode call);

  static bool IsAggregate(std::string_view name) { return FindAggregateFunction(name) || IsWindowFunction(name); }

  OwnedRqExprPtr Build();

 private:
  using Columns = std::vector<OwnedRqExprPtr>;
  using OwnedAggr = Heap<RqExprAggr>;

  void RefuseOptions() const;
  void RefuseFilter() const;
  void ReadArguments();
  [[noreturn]] void RaiseArguments(const std::string& arguments) const;
  void RequirePlace(bool bOfGroup) const;
  std::string NameAsWritten() const;

  OwnedAggr BuildOfGroup(const AggregateFunction& function);
  OwnedAggr BuildWithBreak(const AggregateFunction& function);
  OwnedAggr BuildOver(const AggregateFunction* pFunction);
  OwnedAggr BuildAggregateOver(const AggregateFunction& function, const SqlWindow& window);
  OwnedAggr BuildPlaceOver(const SqlWindow& window);
  OwnedAggr BuildRankOver(const SqlWindow& window);
  OwnedAggr BuildRowNumber(const SqlWindow& window);
  OwnedAggr BuildOverOneColumn(const SqlWindow& window);
  OwnedRqExprPtr BuildFiltered(OwnedAggr aggr);

  /// Of COUNT(*) the text that stands for a row if it is needed, else null.
  OwnedRqExprPtr BuildArgument(bool bNeedsRow);
  OwnedRqExprPtr BuildNumber(SqlNode node, const char* what);
  OwnedRqExprPtr BuildWindowSize(const SqlFrame& frame);
  Columns BuildColumns(const std::vector<SqlNode>& nodes);
  Columns BuildOrder(const SqlWindow& window, SortDirectonVector& directions, bool bMayPlaceNulls);

  std::string_view m_text;
  SqlContext& m_context;
  std::string_view m_name;
  SqlNode m_call;
  BlockAggregates* m_pBlock;
  std::vector<SqlNode> m_arguments;
  std::vector<SqlNode> m_breaks;  ///< What stands behind BY.
  bool m_bBy = false;
  bool m_bStar = false;
  bool m_bDistinct = false;
};
