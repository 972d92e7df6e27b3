// Whether one filter implies another: over pairs of filters of real size, with each condition converted for every pair
// and with each converted once, and over one pair of long filters.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "Corpus.h"
#include "Query/Optimizer/Request/Conditions/SQORExprSubsumption.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Ratio.h"

namespace {

constexpr std::size_t kPairs = 1000;

/// A condition converted once: what a caller keeps of each of many.
class Converted {
 public:
  explicit Converted(const RqExprCond& condition) {
    m_toCNF.GenerateCNF(condition, false, true, -1);
    if (m_toCNF.GetConversionSuccess()) m_toCNF.GetConjuncts(m_conjuncts);
  }

  bool IsConverted() const { return m_toCNF.GetConversionSuccess(); }
  const ConstRqExprVector& GetConjuncts() const { return m_conjuncts; }

 private:
  ToCNF m_toCNF;
  ConstRqExprVector m_conjuncts;
};

RqExprCond* MakeComparison(int column, int value) {
  return new RqExprCondGreater(
      new RqTargetColumn(KXString((L"column" + std::to_wstring(column)).c_str()), RqTargetColumn::kUnknownTableNum),
      new RqExprIntegerLiteral(value, false));
}

/// A pair of filters: whether one implies the other is asked.
struct FilterPair {
  OwnedRqExprCondPtr a;
  OwnedRqExprCondPtr b;
};

/// Every other pair is a filter narrowed by one comparison against the filter itself; the rest are two filters by
/// chance.
const std::vector<FilterPair>& Pairs() {
  static const std::vector<FilterPair> pairs = [] {
    std::vector<FilterPair> made;
    for (std::size_t i = 0; i < kPairs; ++i) {
      const RqExprCond& b = *Corpus()[2 * i].condition;
      auto* const pCopy = static_cast<RqExprCond*>((i % 2 ? *Corpus()[2 * i + 1].condition : b).DeepExprCopy(false));
      RqExprCond* const pA = i % 2 ? pCopy : RqExprCondAnd::Concatenate(pCopy, MakeComparison(7, 5));
      made.push_back({OwnedRqExprCondPtr(pA), OwnedRqExprCondPtr(static_cast<RqExprCond*>(b.DeepExprCopy(false)))});
    }
    return made;
  }();
  return pairs;
}

/// Each condition is converted for each pair it is in.
void BM_EachPairConverts(benchmark::State& state) {
  std::size_t nImplied = 0;
  for (auto _ : state) {
    nImplied = 0;
    for (const FilterPair& pair : Pairs()) {
      bool bEquivalent = false;
      nImplied += ExprSubsumptionTester::IsSubsumedBy(nullptr, pair.a.Get(), pair.b.Get(), bEquivalent);
    }
  }
  // The narrowed ones must all be found, but for those that are too complicated.
  if (nImplied < kPairs / 3) std::abort();
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPairs));
}

/// The form on lists, over conditions that were converted beforehand.
void BM_ConvertedOnce(benchmark::State& state) {
  std::vector<std::pair<std::unique_ptr<Converted>, std::unique_ptr<Converted>>> pairs;
  for (const FilterPair& pair : Pairs()) {
    pairs.emplace_back(std::make_unique<Converted>(*pair.a), std::make_unique<Converted>(*pair.b));
  }
  for (auto _ : state) {
    for (const auto& [pA, pB] : pairs) {
      bool bEquivalent = false;
      benchmark::DoNotOptimize(
          pA->IsConverted() && pB->IsConverted() &&
          ExprSubsumptionTester::IsSubsumedBy(nullptr, pA->GetConjuncts(), pB->GetConjuncts(), bEquivalent));
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPairs));
}

/// What the pairs cost to convert, and nothing else.
void BM_ConversionOfPairs(benchmark::State& state) {
  for (auto _ : state) {
    for (const FilterPair& pair : Pairs()) {
      const Converted a(*pair.a);
      const Converted b(*pair.b);
      benchmark::DoNotOptimize(&a);
      benchmark::DoNotOptimize(&b);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPairs));
}

// ---------------------------------------------------------------------------------------------------------------------
// Long filters: each conjunct of b is implied by the conjunct of a that stands last of those not yet used, so that all
// pairs of conjuncts are looked at that may have to be.

OwnedRqExprCondVector MakeLong(int conjuncts, bool bReversed, int value) {
  OwnedRqExprCondVector made;
  for (int i = 0; i < conjuncts; ++i) made.emplace_back(MakeComparison(bReversed ? conjuncts - 1 - i : i, value));
  return made;
}

ConstRqExprVector Lent(const OwnedRqExprCondVector& conds) {
  ConstRqExprVector lent;
  for (const OwnedRqExprCondPtr& cond : conds) lent.push_back(cond.Get());
  return lent;
}

void BM_Long(benchmark::State& state) {
  const auto conjuncts = static_cast<int>(state.range(0));
  const OwnedRqExprCondVector a = MakeLong(conjuncts, true, 6);
  const OwnedRqExprCondVector b = MakeLong(conjuncts, false, 5);
  const ConstRqExprVector lentA = Lent(a);
  const ConstRqExprVector lentB = Lent(b);
  for (auto _ : state) {
    bool bEquivalent = false;
    if (!ExprSubsumptionTester::IsSubsumedBy(nullptr, lentA, lentB, bEquivalent)) std::abort();
  }
  state.SetItemsProcessed(state.iterations() * conjuncts * conjuncts);
}

/// The least that looking at all pairs of conjuncts can cost: whether the two are equal.
void BM_LongEquality(benchmark::State& state) {
  const auto conjuncts = static_cast<int>(state.range(0));
  const OwnedRqExprCondVector a = MakeLong(conjuncts, true, 6);
  const OwnedRqExprCondVector b = MakeLong(conjuncts, false, 5);
  const RqEquivalenceShareBase equivalent;
  for (auto _ : state) {
    for (const OwnedRqExprCondPtr& y : b) {
      for (const OwnedRqExprCondPtr& x : a) benchmark::DoNotOptimize(equivalent(*x, *y));
    }
  }
  state.SetItemsProcessed(state.iterations() * conjuncts * conjuncts);
}

constexpr int kLong = 200;
BENCHMARK(BM_EachPairConverts)->Name("subsumption_converting");
BENCHMARK(BM_ConvertedOnce)->Name("subsumption_converted");
BENCHMARK(BM_ConversionOfPairs)->Name("subsumption_conversion");
BENCHMARK(BM_Long)->Name("subsumption_long")->Arg(kLong);
BENCHMARK(BM_LongEquality)->Name("subsumption_long_equality")->Arg(kLong);

[[maybe_unused]] const bool g_ratios = [] {
  AddRatio({"implication of a pair, both converted for it, to their conversion",
            "subsumption_converting",
            {{1, "subsumption_conversion"}}});
  AddRatio({"implication of a pair, converted once, to one converted for it",
            "subsumption_converted",
            {{1, "subsumption_converting"}}});
  AddRatio({"implication of two lists of 200 conjuncts, a pair of conjuncts, to their equality",
            "subsumption_long/200",
            {{1, "subsumption_long_equality/200"}}});
  return true;
}();

}  // namespace
