// Copy, destruction, tour, comparison and text of a condition, beside the same shape as a plain tree.

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>

#include "Corpus.h"
#include "PlainTree.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "Ratio.h"

namespace {

constexpr int kSmall = 50;       // comparisons: 199 nodes
constexpr int kLarge = 250'000;  // 999,999 nodes

struct Trees {
  OwnedRqExprCondPtr library;
  std::unique_ptr<PlainNode> plain;
  std::size_t nodes = 0;
};

const Trees& TreesOf(std::int64_t comparisons) {
  static std::map<std::int64_t, Trees> trees;
  Trees& entry = trees[comparisons];
  if (!entry.plain) {
    entry.library = MakeBalancedCondition(static_cast<int>(comparisons));
    entry.plain = MakePlainTree(*entry.library);
    entry.nodes = CountNodes(*entry.plain);
  }
  return entry;
}

void SetNodes(benchmark::State& state, const Trees& trees) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(trees.nodes));
}

class CountingVisitor final : public AVisitorRqExpr {
 public:
#define RQ_VISIT(Class, body, state) \
  bool Visit(Class&) override {      \
    ++m_count;                       \
    return false;                    \
  }
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
  std::size_t m_count = 0;
};

void BM_CopyDestroy(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  for (auto _ : state) {
    const Heap<RqNode> copy(trees.library->DeepCopy(false));
    benchmark::DoNotOptimize(copy.Get());
  }
  SetNodes(state, trees);
}

void BM_CopyNewIDsDestroy(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  for (auto _ : state) {
    const Heap<RqNode> copy(trees.library->DeepCopy(true));
    benchmark::DoNotOptimize(copy.Get());
  }
  SetNodes(state, trees);
}

void BM_PlainCopyDestroy(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  for (auto _ : state) {
    const std::unique_ptr<PlainNode> copy = trees.plain->Clone();
    benchmark::DoNotOptimize(copy.get());
  }
  SetNodes(state, trees);
}

// Copy and destruction apart: a batch of copies is made, then destroyed, and one of the two is timed.
constexpr int kBatch = 64;

template <bool bTimeCopy, class MakeCopy>
void TimeHalf(benchmark::State& state, const Trees& trees, MakeCopy makeCopy) {
  using Copy = decltype(makeCopy());
  const int batch = trees.nodes > 10'000 ? 1 : kBatch;
  std::vector<Copy> copies;
  for (auto _ : state) {
    if (!bTimeCopy) state.PauseTiming();
    for (int i = 0; i < batch; ++i) copies.push_back(makeCopy());
    bTimeCopy ? state.PauseTiming() : state.ResumeTiming();
    copies.clear();
    if (bTimeCopy) state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * batch * static_cast<std::int64_t>(trees.nodes));
}

template <bool bTimeCopy>
void BM_Half(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  TimeHalf<bTimeCopy>(state, trees, [&trees] { return Heap<RqNode>(trees.library->DeepCopy(false)); });
}

template <bool bTimeCopy>
void BM_PlainHalf(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  TimeHalf<bTimeCopy>(state, trees, [&trees] { return trees.plain->Clone(); });
}

void BM_ArenaCopy(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  const std::unique_ptr<std::byte[]> arena(new std::byte[trees.nodes * (sizeof(ArenaNode) + sizeof(ArenaNode*))]);
  for (auto _ : state) {
    std::byte* place = arena.get();
    benchmark::DoNotOptimize(CopyToArena(*trees.plain, place));
  }
  SetNodes(state, trees);
}

void BM_Tour(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  CountingVisitor visitor;
  for (auto _ : state) trees.library->TourExpr(visitor);
  benchmark::DoNotOptimize(visitor.m_count);
  SetNodes(state, trees);
}

void BM_PlainTour(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(trees.plain->Tour());
  SetNodes(state, trees);
}

void BM_Equivalent(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  const OwnedRqExprPtr copy(trees.library->DeepExprCopy(false));
  const RqEquivalence equivalence;
  for (auto _ : state) benchmark::DoNotOptimize(trees.library->IsEquivalent(*copy, equivalence));
  SetNodes(state, trees);
}

void BM_LessThan(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  const OwnedRqExprPtr copy(trees.library->DeepExprCopy(false));
  const RqShallowLessThan less;
  for (auto _ : state) benchmark::DoNotOptimize(trees.library->IsLessThan(*copy, less));
  SetNodes(state, trees);
}

void BM_PlainEquals(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  const std::unique_ptr<PlainNode> copy = trees.plain->Clone();
  for (auto _ : state) benchmark::DoNotOptimize(trees.plain->Equals(*copy));
  SetNodes(state, trees);
}

void BM_Text(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(RqDumpout::StringFrom(*trees.library));
  SetNodes(state, trees);
}

void BM_PlainText(benchmark::State& state) {
  const Trees& trees = TreesOf(state.range(0));
  for (auto _ : state) {
    std::string text;
    trees.plain->AppendText(text);
    benchmark::DoNotOptimize(text);
  }
  SetNodes(state, trees);
}

#define BOTH_SIZES(function, ...) BENCHMARK(function __VA_ARGS__)->Arg(kSmall)->Arg(kLarge)
BOTH_SIZES(BM_CopyDestroy)->Name("copy_destroy");
BOTH_SIZES(BM_CopyNewIDsDestroy)->Name("copy_new_ids_destroy");
BOTH_SIZES(BM_PlainCopyDestroy)->Name("plain_copy_destroy");
BOTH_SIZES(BM_Half<true>)->Name("copy");
BOTH_SIZES(BM_PlainHalf<true>)->Name("plain_copy");
BOTH_SIZES(BM_Half<false>)->Name("destroy");
BOTH_SIZES(BM_PlainHalf<false>)->Name("plain_destroy");
BOTH_SIZES(BM_ArenaCopy)->Name("arena_copy");
BOTH_SIZES(BM_Tour)->Name("tour");
BOTH_SIZES(BM_PlainTour)->Name("plain_tour");
BOTH_SIZES(BM_Equivalent)->Name("equivalent");
BOTH_SIZES(BM_LessThan)->Name("less_than");
BOTH_SIZES(BM_PlainEquals)->Name("plain_equals");
BOTH_SIZES(BM_Text)->Name("text");
BOTH_SIZES(BM_PlainText)->Name("plain_text");

void AddRatios(const std::string& nodes, int comparisons, double copyDestroyAim) {
  const std::string size = "/" + std::to_string(comparisons);
  AddRatio({"copy and destroy, " + nodes + " nodes, a node, to the plain tree",
            "copy_destroy" + size,
            {{1, "plain_copy_destroy" + size}},
            copyDestroyAim});
  AddRatio({"the same with new identities", "copy_new_ids_destroy" + size, {{1, "plain_copy_destroy" + size}}});
  AddRatio({"copy, " + nodes + " nodes, to the plain tree", "copy" + size, {{1, "plain_copy" + size}}});
  AddRatio({"copy, " + nodes + " nodes, to an arena copy", "copy" + size, {{1, "arena_copy" + size}}});
  AddRatio({"destroy, " + nodes + " nodes, to the plain tree", "destroy" + size, {{1, "plain_destroy" + size}}});
  AddRatio({"tour, " + nodes + " nodes, to the plain tree", "tour" + size, {{1, "plain_tour" + size}}});
  AddRatio({"equivalence, " + nodes + " nodes, to the plain tree", "equivalent" + size, {{1, "plain_equals" + size}}});
  AddRatio(
      {"order, " + nodes + " nodes, to the plain tree's equality", "less_than" + size, {{1, "plain_equals" + size}}});
  AddRatio({"text, " + nodes + " nodes, to the plain tree", "text" + size, {{1, "plain_text" + size}}});
}

[[maybe_unused]] const bool g_ratios = [] {
  AddRatios("199", kSmall, 0.8);
  AddRatios("999,999", kLarge, 0);
  return true;
}();

}  // namespace
