// A pooled literal made and given back, beside new and delete of the same literal.

#include <benchmark/benchmark.h>

#include <string>

#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Ratio.h"

namespace {

void BM_FastMake(benchmark::State& state) {
  int value = 0;
  for (auto _ : state) {
    ObjPoolGuard<RqExprLiteral> owner;
    benchmark::DoNotOptimize(FastMakeIntegerLiteral(owner, ++value));
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_NewDelete(benchmark::State& state) {
  int value = 0;
  for (auto _ : state) {
    const Heap<RqExprIntegerLiteral> literal(new RqExprIntegerLiteral(++value, false));
    benchmark::DoNotOptimize(literal.Get());
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BM_FastMake)->Name("literal_pool")->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_NewDelete)->Name("literal_new_delete")->Threads(1)->Threads(2)->UseRealTime();

[[maybe_unused]] const bool g_ratios = [] {
  for (const std::string threads : {"1", "2"}) {
    AddRatio({"pooled literal, " + threads + " thread(s), to new and delete",
              "literal_pool/threads:" + threads,
              {{1, "literal_new_delete/threads:" + threads}},
              1.0});
  }
  return true;
}();

}  // namespace
