// Normal forms of a corpus of filters, beside the least that multiplying them out can cost, and beside Z3.

#include <benchmark/benchmark.h>
#include <z3++.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "Corpus.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Ratio.h"

namespace {

using Clauses = std::vector<std::uint64_t>;

/// Adds a clause unless one that stands is a subset of it; removes those it is a subset of.
void AddAbsorbing(Clauses& clauses, std::uint64_t clause) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < clauses.size(); ++i) {
    if ((clauses[i] & clause) == clauses[i]) return;
    if ((clauses[i] & clause) != clause) clauses[kept++] = clauses[i];
  }
  clauses.resize(kept);
  clauses.push_back(clause);
}

/// The floor: conjunctive clauses over 64-bit masks, multiplied out with absorption, and no expression anywhere.
void MultiplyOut(const MaskTree& tree, Clauses& clauses) {
  clauses.clear();
  if (tree.kind == MaskTree::Kind::kAtom) {
    clauses.push_back(std::uint64_t{1} << tree.bit);
    return;
  }
  Clauses child;
  Clauses product;
  bool bFirst = true;
  for (const MaskTree& term : tree.children) {
    if (bFirst) {
      MultiplyOut(term, clauses);
      bFirst = false;
      continue;
    }
    MultiplyOut(term, child);
    if (tree.kind == MaskTree::Kind::kAnd) {
      for (const std::uint64_t clause : child) AddAbsorbing(clauses, clause);
      continue;
    }
    product.clear();
    for (const std::uint64_t left : clauses) {
      for (const std::uint64_t right : child) AddAbsorbing(product, left | right);
    }
    clauses.swap(product);
  }
}

OwnedRqExprCondPtr ToNormalForm(const RqExprCond& condition) {
  ToCNF toCNF;
  return OwnedRqExprCondPtr(toCNF(condition));
}

/// Times work(entry) over the corpus. The items are conditions; the counter median_ns is the median over the conditions
/// of the time of each, taken in a pass of its own.
template <class Work>
void TimeCorpus(benchmark::State& state, Work work) {
  const std::vector<CorpusEntry>& corpus = Corpus();
  for (auto _ : state) {
    for (std::size_t i = 0; i < corpus.size(); ++i) work(i, corpus[i]);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(corpus.size()));

  constexpr int kRounds = 15;
  std::vector<double> times;
  for (std::size_t i = 0; i < corpus.size(); ++i) {
    work(i, corpus[i]);
    const auto start = std::chrono::steady_clock::now();
    for (int round = 0; round < kRounds; ++round) work(i, corpus[i]);
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    times.push_back(time.count() / kRounds);
  }
  std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
  state.counters["median_ns"] = times[times.size() / 2];
}

void BM_GenerateCNF(benchmark::State& state) {
  TimeCorpus(state, [](std::size_t, const CorpusEntry& entry) {
    const OwnedRqExprCondPtr normal = ToNormalForm(*entry.condition);
    benchmark::DoNotOptimize(normal.Get());
  });
}

void BM_CNFConjuncts(benchmark::State& state) {
  TimeCorpus(state, [](std::size_t, const CorpusEntry& entry) {
    ToCNFConjuncts conjuncts;
    conjuncts.GenerateOwnedCNFConjuncts(*entry.condition, true);
    benchmark::DoNotOptimize(&conjuncts);
  });
}

void BM_DNFDisjuncts(benchmark::State& state) {
  TimeCorpus(state, [](std::size_t, const CorpusEntry& entry) {
    ToDNFDisjuncts disjuncts;
    disjuncts.GenerateOwnedDNFDisjuncts(*entry.condition, true);
    benchmark::DoNotOptimize(&disjuncts);
  });
}

void BM_Masks(benchmark::State& state) {
  Clauses clauses;
  TimeCorpus(state, [&clauses](std::size_t, const CorpusEntry& entry) {
    MultiplyOut(entry.masks, clauses);
    benchmark::DoNotOptimize(clauses.data());
  });
}

void BM_CopyInput(benchmark::State& state) {
  TimeCorpus(state, [](std::size_t, const CorpusEntry& entry) {
    const Heap<RqNode> copy(entry.condition->DeepCopy(false));
    benchmark::DoNotOptimize(copy.Get());
  });
}

void BM_CopyOutput(benchmark::State& state) {
  static const OwnedRqExprCondVector outputs = [] {
    OwnedRqExprCondVector normalForms;
    for (const CorpusEntry& entry : Corpus()) normalForms.push_back(ToNormalForm(*entry.condition));
    return normalForms;
  }();
  TimeCorpus(state, [](std::size_t i, const CorpusEntry&) {
    if (!outputs[i]) return;
    const Heap<RqNode> copy(outputs[i]->DeepCopy(false));
    benchmark::DoNotOptimize(copy.Get());
  });
}

/// A filter as Z3 holds it: columns are integer constants, and a comparison is one of its own.
z3::expr ToZ3(z3::context& context, const RqExpr& expr) {
  const auto operand = [&](int i) { return ToZ3(context, *expr.GetIthOperand(i)); };
  switch (expr.GetObjectType()) {
    case kRqExprCondAnd:
      return operand(0) && operand(1);
    case kRqExprCondOr:
      return operand(0) || operand(1);
    case kRqExprCondLess:
      return operand(0) < operand(1);
    case kRqExprCondGreater:
      return operand(0) > operand(1);
    case kRqExprCondGreaterEqual:
      return operand(0) >= operand(1);
    case kRqExprCondNotEqual:
      return operand(0) != operand(1);
    case kRqExprCondEquality:
      return operand(0) == operand(1);
    case kRqExprCondIsNull: {
      const std::string name =
          static_cast<const RqTargetColumn&>(*expr.GetIthOperand(0)).GetColumnName(nullptr).ToUTF8();
      return context.bool_const((name + " null").c_str());
    }
    case kRqTargetColumn:
      return context.int_const(static_cast<const RqTargetColumn&>(expr).GetColumnName(nullptr).ToUTF8().c_str());
    case kRqExprIntegerLiteral:
      return context.int_val(static_cast<const RqExprIntegerLiteral&>(expr).GetValue());
    default:
      std::abort();  // nothing else is in the corpus
  }
}

/// Applies the tactic and takes the clauses out.
void ApplyTactic(z3::context& context, const z3::tactic& tactic, const z3::expr& formula) {
  z3::goal goal(context);
  goal.add(formula);
  const z3::apply_result result = tactic(goal);
  const z3::goal clauses = result[0];
  for (unsigned i = 0; i < clauses.size(); ++i) {
    benchmark::DoNotOptimize(static_cast<Z3_ast>(clauses[static_cast<int>(i)]));
  }
}

// The tactic of Z3 that comes nearest: clauses by distribution where that stays small, by new names where it does not.

/// From the condition to Z3's clauses.
void BM_Z3(benchmark::State& state) {
  z3::context context;
  const z3::tactic tactic(context, "tseitin-cnf");
  for (auto _ : state) {
    for (const CorpusEntry& entry : Corpus()) ApplyTactic(context, tactic, ToZ3(context, *entry.condition));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Corpus().size()));
}

/// The tactic alone, on formulas made beforehand.
void BM_Z3Tactic(benchmark::State& state) {
  z3::context context;
  const z3::tactic tactic(context, "tseitin-cnf");
  std::vector<z3::expr> formulas;
  for (const CorpusEntry& entry : Corpus()) formulas.push_back(ToZ3(context, *entry.condition));
  for (auto _ : state) {
    for (const z3::expr& formula : formulas) ApplyTactic(context, tactic, formula);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(formulas.size()));
}

BENCHMARK(BM_GenerateCNF)->Name("generate_cnf");
BENCHMARK(BM_CNFConjuncts)->Name("cnf_conjuncts");
BENCHMARK(BM_DNFDisjuncts)->Name("dnf_disjuncts");
BENCHMARK(BM_Masks)->Name("masks");
BENCHMARK(BM_CopyInput)->Name("copy_input");
BENCHMARK(BM_CopyOutput)->Name("copy_output");
BENCHMARK(BM_Z3)->Name("z3_condition_to_cnf");
BENCHMARK(BM_Z3Tactic)->Name("z3_tseitin_cnf");

[[maybe_unused]] const bool g_ratios = [] {
  AddRatio({"CNF of a filter, median, to masks + 2 copies in + 1 copy out",
            "generate_cnf:median_ns",
            {{1, "masks:median_ns"}, {2, "copy_input:median_ns"}, {1, "copy_output:median_ns"}},
            2.0});
  AddRatio({"CNF of a filter, mean, to masks + 2 copies in + 1 copy out",
            "generate_cnf",
            {{1, "masks"}, {2, "copy_input"}, {1, "copy_output"}},
            2.0});
  AddRatio({"CNF conjuncts of a filter, mean, to the same sum",
            "cnf_conjuncts",
            {{1, "masks"}, {2, "copy_input"}, {1, "copy_output"}}});
  AddRatio({"DNF disjuncts of a filter, mean, to the same sum",
            "dnf_disjuncts",
            {{1, "masks"}, {2, "copy_input"}, {1, "copy_output"}}});
  AddRatio({"the mask program alone, median", "masks:median_ns", {{1, "copy_input:median_ns"}}});
  AddRatio(
      {"CNF of a filter, mean, to Z3 from the same condition", "generate_cnf", {{1, "z3_condition_to_cnf"}}, 1.0 / 3});
  AddRatio({"CNF of a filter, mean, to Z3's tactic alone", "generate_cnf", {{1, "z3_tseitin_cnf"}}});
  return true;
}();

}  // namespace
