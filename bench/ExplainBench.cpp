// The whole way of rq explain on the examples, stage by stage, beside SQLite's own preparation of the same statements.

#include <benchmark/benchmark.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <string>
#include <vector>

#include "HostMemory/ModelReader.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "Ratio.h"
#include "rq/run/SqliteDatabase.h"
#include "rq/sample/SampleData.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlParser.h"

namespace {

/// An example as each stage takes it up.
struct Example {
  explicit Example(std::string text) : m_text(std::move(text)), m_query(m_text) {}

  std::string m_text;
  SqlQuery m_query;
  Heap<RqAbstractList> m_tree;
};

class Examples {
 public:
  static Examples& Get() {
    static Examples examples;
    return examples;
  }

  std::deque<Example>& GetAll() { return m_examples; }
  MemoryGateway& GetGateway() { return m_gateway; }
  SqliteDatabase& GetDatabase() { return m_database; }
  Heap<RqAbstractList> Build(const Example& example) {
    return QueryBuilder(example.m_text, m_gateway, m_names).Build(example.m_query.GetSelect()).m_list;
  }

 private:
  Examples() : m_database(":memory:", SqliteDatabase::Access::kReadWrite) {
    ModelReader::ReadDefault(m_gateway);
    m_names = RepositoryNames(m_gateway);
    m_database.Execute(SampleData::GetTables());
    for (const auto& entry : std::filesystem::directory_iterator(RQ_SOURCE_DIR "/examples/queries")) {
      std::ifstream file(entry.path());
      std::string text(std::istreambuf_iterator<char>(file), {});
      // What SQLite does not understand, such as queries over the business model, has nothing to stand beside.
      try {
        static_cast<void>(m_database.Prepare(text));
      } catch (const SqliteError&) {
        continue;
      }
      m_examples.emplace_back(std::move(text));
      m_examples.back().m_tree = Build(m_examples.back());
    }
  }

  MemoryGateway m_gateway;
  RepositoryNames m_names;
  SqliteDatabase m_database;
  std::deque<Example> m_examples;
};

/// A stage over all examples; an item is an example.
template <void (*kStage)(Example&)>
void BM_Stage(benchmark::State& state) {
  std::deque<Example>& examples = Examples::Get().GetAll();
  for (auto _ : state) {
    for (Example& example : examples) kStage(example);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(examples.size()));
}

template <class Visit>
void ForEachBlock(RqNode& root, const Visit& visit) {
  std::list<RqNode*> blocks;
  FindNodes(&root, RqNode::IsObjectType(kRqList), blocks, false);
  for (RqNode* const pBlock : blocks) visit(static_cast<RqList&>(*pBlock));
}

void Parse(Example& example) {
  const SqlQuery query(example.m_text);
  benchmark::DoNotOptimize(&query);
}

void Build(Example& example) { benchmark::DoNotOptimize(Examples::Get().Build(example).Get()); }

void Normalize(Example& example) {
  ForEachBlock(*example.m_tree, [](RqList& block) {
    if (!block.GetDetailFilter()) return;
    ToCNFConjuncts toCNF;
    toCNF.GenerateOwnedCNFConjuncts(*block.GetDetailFilter()->GetCond(), false);
    benchmark::DoNotOptimize(toCNF.GetConversionSuccess());
  });
}

/// With the copy of the graph that it takes.
void Collapse(Example& example) {
  ForEachBlock(*example.m_tree, [](RqList& block) {
    if (!block.GetJoinSpec()) return;
    const Heap<RqJoinSpec> copy(static_cast<RqJoinSpec*>(block.GetJoinSpec()->NestedDeepCopy(false)));
    std::vector<RqJoinNode*> nodes;
    for (int i = 0; i < copy->GetNumTableReferences(); ++i) {
      nodes.push_back(static_cast<RqJoinNode*>(copy->ReleaseIthChild(i)));
    }
    OwnedRqExprCondPtr residual;
    const Heap<RqJoinSpec> joins(RqJoinSpec::CompileLinkGraph(nodes, residual, &Examples::Get().GetGateway(), false));
    benchmark::DoNotOptimize(joins.Get());
  });
}

void Check(Example& example) {
  benchmark::DoNotOptimize(PlanChecker::CheckPlan(&Examples::Get().GetGateway(), *example.m_tree));
}

void Print(Example& example) {
  benchmark::DoNotOptimize(RqDumpout::StringFrom(*example.m_tree, false, true, &Examples::Get().GetGateway()));
}

void Prepare(Example& example) {
  const SqliteStatement statement = Examples::Get().GetDatabase().Prepare(example.m_text);
  benchmark::DoNotOptimize(&statement);
}

BENCHMARK(BM_Stage<Parse>)->Name("explain_parse");
BENCHMARK(BM_Stage<Build>)->Name("explain_build");
BENCHMARK(BM_Stage<Normalize>)->Name("explain_normalize");
BENCHMARK(BM_Stage<Collapse>)->Name("explain_collapse");
BENCHMARK(BM_Stage<Check>)->Name("explain_check");
BENCHMARK(BM_Stage<Print>)->Name("explain_text");
BENCHMARK(BM_Stage<Prepare>)->Name("sqlite_prepare");

[[maybe_unused]] const bool g_ratios = [] {
  const std::vector<std::pair<double, std::string>> whole{{1, "explain_parse"},     {1, "explain_build"},
                                                          {1, "explain_normalize"}, {1, "explain_collapse"},
                                                          {1, "explain_check"},     {1, "explain_text"}};
  AddRatio({"rq explain, an example: its parse, to the whole way", "explain_parse", whole, 0});
  AddRatio({"its tree built, to that", "explain_build", whole, 0});
  AddRatio({"its filters in normal form, to that", "explain_normalize", whole, 0});
  AddRatio({"its joins collapsed, to that", "explain_collapse", whole, 0});
  AddRatio({"its plan checked, to that", "explain_check", whole, 0});
  AddRatio({"its text, to that", "explain_text", whole, 0});
  AddRatio({"the same statement prepared by SQLite, to that", "sqlite_prepare", whole, 0});
  return true;
}();

}  // namespace
