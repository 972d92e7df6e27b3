// A pooled literal made and given back, beside new and delete of the same literal on node memory and on the system
// allocator, and beside the least that the way through a pool costs: its turn and its lock.

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

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

void BM_SystemNewDelete(benchmark::State& state) {
  int value = 0;
  for (auto _ : state) {
    RqExprIntegerLiteral* const pLiteral = ::new RqExprIntegerLiteral(++value, false);
    benchmark::DoNotOptimize(pLiteral);
    ::delete pLiteral;
  }
  state.SetItemsProcessed(state.iterations());
}

/// The turn alone, which is the same memory for every thread.
void BM_Turn(benchmark::State& state) {
  static PartitionedPools<TypedObjPool<RqExprIntegerLiteral>> pools;
  for (auto _ : state) benchmark::DoNotOptimize(&pools.Next());
  state.SetItemsProcessed(state.iterations());
}

/// A lock that nobody else wants, taken as often as a literal takes that of its pool: once to be made, once to go back.
void BM_Locks(benchmark::State& state) {
  KXCriticalSection lock(__FILE__, __LINE__, "bench");
  for (auto _ : state) {
    for (int i = 0; i < 2; ++i) {
      const KXCriticalSectionGuard guard(lock);
      benchmark::DoNotOptimize(&lock);
    }
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BM_FastMake)->Name("literal_pool")->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_NewDelete)->Name("literal_new_delete")->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_SystemNewDelete)->Name("literal_system_new_delete")->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_Turn)->Name("literal_pool_turn")->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_Locks)->Name("literal_pool_locks")->Threads(1)->Threads(2)->UseRealTime();

[[maybe_unused]] const bool g_ratios = [] {
  for (const std::string threads : {"1", "2"}) {
    const std::vector<std::pair<double, std::string>> baseline{{1, "literal_new_delete/threads:" + threads}};
    AddRatio({"pooled literal, " + threads + " thread(s), to new and delete", "literal_pool/threads:" + threads,
              baseline, 1.0});
    AddRatio({"the same to new and delete on the system allocator",
              "literal_pool/threads:" + threads,
              {{1, "literal_system_new_delete/threads:" + threads}},
              0});
    AddRatio({"the turn of its pool alone", "literal_pool_turn/threads:" + threads, baseline, 0});
    AddRatio({"two holds of a lock that is free", "literal_pool_locks/threads:" + threads, baseline, 0});
  }
  return true;
}();

}  // namespace
