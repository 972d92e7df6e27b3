// Aggregates: rewriting those of a block, aligning breaks, and looking partial values up in content maps.

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "Host/BaseStringUtil.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Ratio.h"

namespace {

RqExpr* MakeColumn(int number) { return new RqTargetColumn(L"column" + BaseStringUtil::StringFrom(number), 1); }

/// The columns from one number to another, in either direction; the last one is left out.
RqExprColumnList* MakeBreak(int from, int to) {
  auto* const pList = new RqExprColumnList;
  for (int i = from; i != to; i += from < to ? 1 : -1) pList->AddChild(MakeColumn(i));
  return pList;
}

// ---------------------------------------------------------------------------------------------------------------------
// The aggregates of a block

constexpr int kNumAggrs = 50;
constexpr int kNumMeasures = 10;

template <class Aggr>
OwnedRqExprAggrPtr MakeAggr(int measure) {
  return OwnedRqExprAggrPtr(new Aggr(MakeColumn(measure), MakeBreak(100, 102), nullptr, false));
}

/// Five aggregates over each of ten columns, by two others.
std::vector<OwnedRqExprAggrPtr> MakeAggrs() {
  std::vector<OwnedRqExprAggrPtr> aggrs;
  for (int i = 0; i < kNumMeasures; ++i) {
    aggrs.push_back(MakeAggr<RqExprAggrSum>(i));
    aggrs.push_back(MakeAggr<RqExprAggrCount>(i));
    aggrs.push_back(MakeAggr<RqExprAggrAvg>(i));
    aggrs.push_back(MakeAggr<RqExprAggrMin>(i));
    aggrs.push_back(MakeAggr<RqExprAggrMax>(i));
  }
  return aggrs;
}

void BM_Copy(benchmark::State& state) {
  const std::vector<OwnedRqExprAggrPtr> aggrs = MakeAggrs();
  for (auto _ : state) {
    for (const OwnedRqExprAggrPtr& aggr : aggrs) {
      const Heap<RqExpr> copy(aggr->DeepExprCopy(false));
      benchmark::DoNotOptimize(copy.Get());
    }
  }
  state.SetItemsProcessed(state.iterations() * kNumAggrs);
}

template <bool kGrouped>
void BM_RenderOntoBlock(benchmark::State& state) {
  const std::vector<OwnedRqExprAggrPtr> aggrs = MakeAggrs();
  for (auto _ : state) {
    RqList inner(0);
    if constexpr (kGrouped) {
      RqExprVector columns{MakeColumn(100), MakeColumn(101), MakeColumn(102)};
      inner.SetGroupBy(new RqGroupBy(columns, RqGroupBy::kUnknown));
    }
    for (const OwnedRqExprAggrPtr& aggr : aggrs) {
      const Heap<RqExpr> rendered(aggr->RenderOnSummaryList(inner));
      benchmark::DoNotOptimize(rendered.Get());
    }
  }
  state.SetItemsProcessed(state.iterations() * kNumAggrs);
}

BENCHMARK(BM_Copy)->Name("aggr_copy");
BENCHMARK(BM_RenderOntoBlock<false>)->Name("aggr_render_onto_block");
BENCHMARK(BM_RenderOntoBlock<true>)->Name("aggr_render_onto_grouped_block");

// ---------------------------------------------------------------------------------------------------------------------
// Content maps

/// A map from that many sums and counts to a column of a source.
class Sources {
 public:
  explicit Sources(int numRows) : m_source(MakeColumn(-1)) {
    SourceContentMap rows;
    for (int i = 0; i < numRows; ++i) {
      RqExpr* const pExpr = MakeColumn(i / 2);
      m_partials.emplace_back(i % 2 == 0 ? static_cast<RqExpr*>(new RqExprAggrSum(pExpr, nullptr, nullptr, false))
                                         : new RqExprAggrCount(pExpr, nullptr, nullptr, false));
      rows.push_back({m_partials.back().Get(), m_source.Get(), nullptr});
    }
    m_map.InstallContentMap(rows);
  }
  const SourceContentMap& GetMap() const { return m_map.GetContentMap(); }

 private:
  OwnedRqExprPtr m_source;
  std::vector<OwnedRqExprPtr> m_partials;
  SourceContentMapWrapper m_map;
};

/// Sums and counts, spread over the whole map.
void BM_FindMapping(benchmark::State& state) {
  const int numRows = static_cast<int>(state.range(0));
  const Sources sources(numRows);
  std::vector<OwnedRqExprAggrPtr> sought;
  for (int i = 0; i < kNumAggrs; ++i) {
    const int measure = static_cast<int>(static_cast<std::int64_t>(i) * (numRows / 2) / kNumAggrs);
    sought.push_back(i % 2 == 0 ? MakeAggr<RqExprAggrSum>(measure) : MakeAggr<RqExprAggrCount>(measure));
  }
  for (auto _ : state) {
    for (const OwnedRqExprAggrPtr& aggr : sought) {
      int index = 0;
      if (!sources.GetMap().FindMapping(aggr.Get(), index)) state.SkipWithError("a partial value is missing");
      benchmark::DoNotOptimize(index);
    }
  }
  state.SetItemsProcessed(state.iterations() * kNumAggrs);
}

/// Those of a block that sums, counts and averages.
void BM_RenderOntoSources(benchmark::State& state) {
  const Sources sources(1000);
  std::vector<OwnedRqExprAggrPtr> aggrs;
  for (int i = 0; i < kNumMeasures; ++i) {
    aggrs.push_back(MakeAggr<RqExprAggrSum>(i));
    aggrs.push_back(MakeAggr<RqExprAggrCount>(i));
    aggrs.push_back(MakeAggr<RqExprAggrAvg>(i));
  }
  Int32Vector indexes;
  for (auto _ : state) {
    indexes.clear();
    for (const OwnedRqExprAggrPtr& aggr : aggrs) {
      const Heap<RqExpr> rendered(aggr->RenderOntoMoreDetailedSources(nullptr, true, sources.GetMap(), indexes));
      benchmark::DoNotOptimize(rendered.Get());
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(aggrs.size()));
}

BENCHMARK(BM_FindMapping)->Name("aggr_find_mapping")->Arg(10)->Arg(1000)->Arg(100'000);
BENCHMARK(BM_RenderOntoSources)->Name("aggr_render_onto_sources");

// ---------------------------------------------------------------------------------------------------------------------
// Breaks

/// A compute break that has the columns of the control break, from the last to the first, among as many others.
void BM_ComputeBreak(benchmark::State& state) {
  const int numColumns = static_cast<int>(state.range(0));
  RqExprAggrSum aggr(MakeColumn(-1), MakeBreak(0, numColumns / 2), nullptr, false);
  const Heap<RqExprColumnList> compute(MakeBreak(numColumns - 1, -1));
  for (auto _ : state) aggr.SetComputeBreak(static_cast<RqExprColumnList*>(compute->DeepCopy(false)));
  state.SetItemsProcessed(state.iterations() * numColumns);
}

BENCHMARK(BM_ComputeBreak)->Name("aggr_compute_break")->Arg(2)->Arg(10)->Arg(50);

[[maybe_unused]] const bool g_ratios = [] {
  const auto toCopy = [](const char* what, const char* ours) { AddRatio({what, ours, {{1, "aggr_copy"}}, 0}); };
  toCopy("50 aggregates rewritten onto a block, each, to its copy", "aggr_render_onto_block");
  toCopy("onto a grouped block", "aggr_render_onto_grouped_block");
  toCopy("sums, counts and means onto a map of 1,000 partial values", "aggr_render_onto_sources");
  AddRatio(
      {"look-up of a partial value among 1,000, to 10", "aggr_find_mapping/1000", {{1, "aggr_find_mapping/10"}}, 0});
  AddRatio({"look-up among 100,000, to 1,000", "aggr_find_mapping/100000", {{1, "aggr_find_mapping/1000"}}, 0});
  AddRatio(
      {"compute break of 50 columns, a column, to 10", "aggr_compute_break/50", {{1, "aggr_compute_break/10"}}, 0});
  AddRatio({"of 10 columns, to 2", "aggr_compute_break/10", {{1, "aggr_compute_break/2"}}, 0});
  return true;
}();

}  // namespace
