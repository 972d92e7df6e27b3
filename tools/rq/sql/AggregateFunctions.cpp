#include "rq/sql/AggregateFunctions.h"

#include <algorithm>
#include <array>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "rq/sql/SqlNodeUtil.h"

namespace {

template <class Aggr>
RqExprAggr* Make(RqExpr* pAggrExpr, RqExpr*, RqExprColumnList* pControlBreak, bool bDistinct) {
  return new Aggr(pAggrExpr, pControlBreak, nullptr, bDistinct);
}

template <class Aggr>
RqExprAggr* MakeWithNumber(RqExpr* pAggrExpr, RqExpr* pNumber, RqExprColumnList* pControlBreak, bool bDistinct) {
  return new Aggr(pAggrExpr, pNumber, pControlBreak, nullptr, bDistinct);
}

template <bool bSample>
RqExprAggr* MakeStddev(RqExpr* pAggrExpr, RqExpr*, RqExprColumnList* pControlBreak, bool bDistinct) {
  return new RqExprAggrStddev(pAggrExpr, pControlBreak, nullptr, bDistinct, bSample);
}

template <bool bDense>
RqExprAggr* MakeRank(RqExpr* pAggrExpr, RqExpr*, RqExprColumnList* pControlBreak, bool bDistinct) {
  return new RqExprAggrRank(pAggrExpr, pControlBreak, nullptr, bDistinct, bDense, false);
}

constexpr AggregateFunction OfGroup(std::string_view name, MakeAggregate make, MakeAggregate makeRunning = nullptr,
                                    MakeAggregate makeMoving = nullptr) {
  return {name, "x", 1, true, make, makeRunning, makeMoving};
}
constexpr AggregateFunction OfRow(std::string_view name, MakeAggregate make) { return {name, "x", 1, false, make}; }
constexpr AggregateFunction OfRowWithNumber(std::string_view name, MakeAggregate make) {
  return {name, "x, n", 2, false, make};
}

constexpr auto kAggregates = std::to_array<AggregateFunction>({
    OfGroup("sum", Make<RqExprAggrSum>, Make<RqExprAggrRunningSum>, MakeWithNumber<RqExprAggrMovingSum>),
    OfGroup("count", Make<RqExprAggrCount>, Make<RqExprAggrRunningCount>),
    OfGroup("avg", Make<RqExprAggrAvg>, nullptr, MakeWithNumber<RqExprAggrMovingAvg>),
    OfGroup("min", Make<RqExprAggrMin>, Make<RqExprAggrRunningMin>),
    OfGroup("max", Make<RqExprAggrMax>, Make<RqExprAggrRunningMax>),
    OfGroup("stddev", MakeStddev<true>),
    OfGroup("stddev_samp", MakeStddev<true>),
    OfGroup("stddev_pop", MakeStddev<false>),
    OfGroup("median", Make<RqExprAggrMedian>),
    OfGroup("first", Make<RqExprAggrFirst>),
    OfGroup("last", Make<RqExprAggrLast>),
    OfGroup("listagg", Make<RqExprAggrListAgg>),
    OfGroup("string_agg", Make<RqExprAggrListAgg>),
    OfGroup("group_concat", Make<RqExprAggrListAgg>),
    OfRow("rank", MakeRank<false>),
    OfRow("dense_rank", MakeRank<true>),
    OfRow("percentile", Make<RqExprAggrPercentile>),
    OfRowWithNumber("ntile", MakeWithNumber<RqExprAggrNtile>),
    OfRowWithNumber("topn", MakeWithNumber<RqExprAggrTopN>),
    OfRowWithNumber("bottomn", MakeWithNumber<RqExprAggrBottomN>),
    OfRow("rsum", Make<RqExprAggrRunningSum>),
    OfRow("rcount", Make<RqExprAggrRunningCount>),
    OfRow("rmin", Make<RqExprAggrRunningMin>),
    OfRow("rmax", Make<RqExprAggrRunningMax>),
    OfRowWithNumber("msum", MakeWithNumber<RqExprAggrMovingSum>),
    OfRowWithNumber("mavg", MakeWithNumber<RqExprAggrMovingAvg>),
});

constexpr std::string_view kWindowFunctions[] = {"row_number", "percent_rank", "cume_dist", "first_value",
                                                 "last_value", "nth_value",    "lag",       "lead"};

}  // namespace

const AggregateFunction* FindAggregateFunction(std::string_view name) { return FindByName(kAggregates, name); }

bool IsWindowFunction(std::string_view name) {
  return std::ranges::find(kWindowFunctions, name) != std::end(kWindowFunctions);
}
