#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/ModelReader.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "RqTestUtil.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlParser.h"

namespace {

TEST(Aggregates, Trees) {
  for (const auto& [query, tree] : CasesOf("rq/cases/aggregates.txt")) {
    const RqRun run = RunRq({"explain", "--one-line", query});
    EXPECT_EQ(run.m_status, 0) << run.m_err;
    const std::string text = OneLine(run.m_out);
    EXPECT_EQ(text.substr(0, text.find_last_not_of(' ') + 1), tree) << query;
  }
}

TEST(Aggregates, Errors) {
  for (const auto& [query, error] : CasesOf("rq/cases/aggregate_errors.txt")) {
    const std::int64_t numNodes = MemoryDataCollector::GetRqNodeCount();
    const RqRun run = RunRq({"explain", query});
    EXPECT_EQ(run.m_status, 2) << query;
    EXPECT_EQ(run.m_err.substr(0, run.m_err.find('\n')), "rq: " + error) << query;
    EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), numNodes) << query;
  }
}

TEST(Aggregates, AreNotInConditions) {
  ExpectRefused("a > SUM(b)", "1:5 SUM is an aggregate, which only a query has");
  ExpectRefused("RANK() OVER () = 1", "1:1 RANK is a window function, which only a query has");
  ExpectRefused("GROUPING(a) = 1", "1:1 GROUPING stands in a query with groups");
}

// ---------------------------------------------------------------------------------------------------------------------
// What the text form does not show

class AggregateNodes : public testing::Test {
 protected:
  /// The first aggregate of the kind in the query's tree.
  template <class Aggr>
  const Aggr& Build(const std::string& sql, RqNodeType_e kind) {
    ModelReader::ReadDefault(m_gateway);
    const RepositoryNames names(m_gateway);
    m_list = std::move(QueryBuilder(sql, m_gateway, names).Build(SqlQuery(sql).GetSelect()).m_list);
    std::list<RqNode*> found;
    FindNodes(m_list.Get(), RqNode::IsObjectType(kind), found, false);
    EXPECT_FALSE(found.empty());
    return static_cast<const Aggr&>(*found.front());
  }

  MemoryGateway m_gateway;
  Heap<RqAbstractList> m_list;
};

constexpr auto kAsc = RqSortSpec::kAsc;
constexpr auto kDesc = RqSortSpec::kDesc;

// Partition and order share a column, which keeps the order's direction; what does not change orders nothing.
TEST_F(AggregateNodes, RowNumberHasADirectionForEachColumn) {
  const auto& number = Build<RqExprAggrRowNum>(
      "SELECT ROW_NUMBER() OVER (PARTITION BY region, city ORDER BY opened DESC NULLS LAST, city DESC NULLS LAST,"
      " opened NULLS LAST, 1 NULLS LAST) FROM store",
      kRqExprAggrRowNum);
  EXPECT_EQ(number.GetControlBreak()->GetNumColumns(), 2);
  EXPECT_EQ(number.GetComputeBreak()->GetNumColumns(), 3);
  EXPECT_EQ(number.GetSortDirections(), (SortDirectonVector{kAsc, kDesc, kDesc}));
  EXPECT_EQ(number.GetNullsSortOrder(), RqExprAggrRowNum::kNullsLast);
  EXPECT_FALSE(number.IsDistinctAggregation());
}

TEST_F(AggregateNodes, MovingAggregateKnowsItsOrder) {
  const auto& moving = Build<RqExprAggrMovingAvg>(
      "SELECT city, AVG(floor_area) OVER (ORDER BY opened DESC, city ROWS 6 PRECEDING) FROM store",
      kRqExprAggrMovingAvg);
  SortDirectonVector directions;
  Int32Vector columns;
  moving.GetSortSpec(directions, columns);
  EXPECT_EQ(directions, (SortDirectonVector{kDesc, kAsc}));
  EXPECT_EQ(columns, (Int32Vector{3, 1}));
  EXPECT_EQ(m_list->GetProjection()->GetNumColumns(), 3);
}

// A column that only the order has is not one of the query's where columns are counted.
TEST_F(AggregateNodes, HiddenOrderStaysInABranch) {
  const auto& running = Build<RqExprAggrRunningSum>(
      "SELECT SUM(floor_area) OVER (ORDER BY opened ROWS UNBOUNDED PRECEDING) FROM store UNION ALL SELECT 1",
      kRqExprAggrRunningSum);
  EXPECT_EQ(running.GetNumSortSpecs(), 1);
  EXPECT_EQ(m_list->GetProjection()->GetNumColumns(), 1);
}

}  // namespace
