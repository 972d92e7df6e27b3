// Conditions of extreme length and depth: every step must be linear, and freeing must not need stack.

#include <benchmark/benchmark.h>
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "Ratio.h"

namespace {

RqExpr* MakeColumn() { return new RqTargetColumn(KXString(L"column"), RqTargetColumn::kUnknownTableNum); }

RqExprCond* MakeOrTerms(std::int64_t terms) {
  RqExprCond* pCond = nullptr;
  for (std::int64_t i = 0; i < terms; ++i) {
    const auto value = static_cast<int>(i);
    pCond = RqExprCondOr::Concatenate(
        pCond, new RqExprCondEquality(MakeColumn(), new RqExprIntegerLiteral(value, false), false));
  }
  return pCond;
}

RqExprCond* MakeInList(std::int64_t entries) {
  auto* const pList = new RqExprColumnList();
  pList->SetNumColumns(static_cast<int>(entries));
  for (int i = 0; i < static_cast<int>(entries); ++i) pList->SetIthColumn(i, new RqExprIntegerLiteral(i, false));
  return new RqExprCondIn(MakeColumn(), pList, false);
}

using Make = RqExprCond* (*)(std::int64_t);

template <Make make>
void BM_Build(benchmark::State& state) {
  for (auto _ : state) {
    const OwnedRqExprCondPtr condition(make(state.range(0)));
    benchmark::DoNotOptimize(condition.Get());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Make make>
void BM_Copy(benchmark::State& state) {
  const OwnedRqExprCondPtr condition(make(state.range(0)));
  for (auto _ : state) {
    const Heap<RqNode> copy(condition->DeepCopy(false));
    benchmark::DoNotOptimize(copy.Get());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Make make>
void BM_Compare(benchmark::State& state) {
  const OwnedRqExprCondPtr condition(make(state.range(0)));
  const OwnedRqExprPtr copy(condition->DeepExprCopy(false));
  const RqShallowLessThan less;
  for (auto _ : state) benchmark::DoNotOptimize(condition->IsLessThan(*copy, less));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Make make>
void BM_Text(benchmark::State& state) {
  const OwnedRqExprCondPtr condition(make(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(RqDumpout::StringFrom(*condition));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Make make>
void BM_Destroy(benchmark::State& state) {
  const OwnedRqExprCondPtr condition(make(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    RqNode* const pCopy = condition->DeepCopy(false);
    state.ResumeTiming();
    delete pCopy;
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

constexpr int kShort = 10'000;
constexpr int kLong = 100'000;
#define LINEAR(name, function)                                               \
  BENCHMARK(function)->Name(name)->Arg(kShort)->Arg(kLong);                  \
  [[maybe_unused]] const int BENCHMARK_PRIVATE_CONCAT(g_, ratio, __LINE__) = \
      AddRatio({name ", 100,000 to 10,000, an entry", name "/100000", {{1, name "/10000"}}})
LINEAR("or_terms_build", BM_Build<MakeOrTerms>);
LINEAR("or_terms_copy", BM_Copy<MakeOrTerms>);
LINEAR("or_terms_compare", BM_Compare<MakeOrTerms>);
LINEAR("or_terms_text", BM_Text<MakeOrTerms>);
LINEAR("or_terms_destroy", BM_Destroy<MakeOrTerms>);
LINEAR("in_list_build", BM_Build<MakeInList>);
LINEAR("in_list_copy", BM_Copy<MakeInList>);
LINEAR("in_list_compare", BM_Compare<MakeInList>);
LINEAR("in_list_text", BM_Text<MakeInList>);
LINEAR("in_list_destroy", BM_Destroy<MakeInList>);

RqExprCond* MakeNotChain(std::int64_t depth) {
  RqExprCond* pCond = new RqExprCondIsNull(MakeColumn(), false);
  for (std::int64_t i = 0; i < depth; ++i) pCond = new RqExprCondNot(pCond);
  return pCond;
}

void* Destroy(void* pCond) {
  delete static_cast<RqExprCond*>(pCond);
  return nullptr;
}

/// Runs one function on a thread with a stack of 256 KiB.
void RunOnSmallStack(void* (*function)(void*), void* pArgument) {
  constexpr std::size_t kStackSize = 256 * 1024;
  pthread_attr_t attributes;
  pthread_t thread{};
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackSize);
  if (pthread_create(&thread, &attributes, function, pArgument) != 0) {
    std::perror("pthread_create");
    std::exit(2);
  }
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

void BM_DestroyDeep(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    RqExprCond* const pCond = MakeNotChain(state.range(0));
    state.ResumeTiming();
    RunOnSmallStack(&Destroy, pCond);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_DestroyDeep)->Name("destroy_deep_on_256KiB")->Arg(10'000)->Arg(1'000'000)->UseRealTime();
[[maybe_unused]] const int g_deepRatio =
    AddRatio({"destroying a chain of 1,000,000 on a 256 KiB stack, a node, to one of 10,000",
              "destroy_deep_on_256KiB/1000000",
              {{1, "destroy_deep_on_256KiB/10000"}}});

}  // namespace
