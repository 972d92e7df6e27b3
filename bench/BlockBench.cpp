// Query blocks: a whole request from SQL to bytes and back, the collapse of join graphs, and wide select lists.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <string>
#include <vector>

#include "Host/BaseStringUtil.h"
#include "HostMemory/ModelReader.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Blocks/SQORNestedJoinGraph.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "Ratio.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlParser.h"

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// The largest example

class Request {
 public:
  static Request& Get() {
    static Request request;
    return request;
  }

  const std::string& GetText() const { return m_text; }
  Heap<RqAbstractList> Build(const SqlQuery& query) {
    return QueryBuilder(m_text, m_gateway, m_names).Build(query.GetSelect()).m_list;
  }
  MemoryGateway& GetGateway() { return m_gateway; }
  RqNode& GetTree() { return *m_tree; }
  std::size_t CountNodes() const {
    std::list<RqNode*> nodes;
    m_tree->GetObjects(nodes);
    return nodes.size();
  }

 private:
  Request() {
    ModelReader::ReadDefault(m_gateway);
    m_names = RepositoryNames(m_gateway);
    std::filesystem::directory_entry largest;
    for (const auto& entry : std::filesystem::directory_iterator(RQ_SOURCE_DIR "/examples/queries")) {
      if (largest.path().empty() || entry.file_size() > largest.file_size()) largest = entry;
    }
    std::ifstream file(largest.path());
    m_text.assign(std::istreambuf_iterator<char>(file), {});
    const SqlQuery query(m_text);
    m_tree = Build(query);
  }

  MemoryGateway m_gateway;
  RepositoryNames m_names;
  std::string m_text;
  Heap<RqNode> m_tree;
};

void SetNodes(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Request::Get().CountNodes()));
}

void BM_Parse(benchmark::State& state) {
  for (auto _ : state) {
    const SqlQuery query(Request::Get().GetText());
    benchmark::DoNotOptimize(&query);
  }
  SetNodes(state);
}

void BM_Build(benchmark::State& state) {
  const SqlQuery query(Request::Get().GetText());
  for (auto _ : state) benchmark::DoNotOptimize(Request::Get().Build(query).Get());
  SetNodes(state);
}

void BM_NestedCopy(benchmark::State& state) {
  for (auto _ : state) {
    const Heap<RqNode> copy(Request::Get().GetTree().NestedDeepCopy(false));
    benchmark::DoNotOptimize(copy.Get());
  }
  SetNodes(state);
}

void BM_Text(benchmark::State& state) {
  Request& request = Request::Get();
  for (auto _ : state) {
    benchmark::DoNotOptimize(RqDumpout::StringFrom(request.GetTree(), false, true, &request.GetGateway()));
  }
  SetNodes(state);
}

void BM_Write(benchmark::State& state) {
  ByteVector bytes;
  for (auto _ : state) {
    bytes.clear();
    RqTreeVector::ToByteVector(&Request::Get().GetTree(), bytes);
    benchmark::DoNotOptimize(bytes.data());
  }
  SetNodes(state);
}

void BM_Read(benchmark::State& state) {
  ByteVector bytes;
  RqTreeVector::ToByteVector(&Request::Get().GetTree(), bytes);
  for (auto _ : state) {
    RqNode* pNode = nullptr;
    RqTreeVector::FromByteVector(bytes.data(), &pNode);
    const Heap<RqNode> tree(pNode);
    ReattachRequest(*tree);
    benchmark::DoNotOptimize(tree.Get());
  }
  SetNodes(state);
}

BENCHMARK(BM_Parse)->Name("request_parse");
BENCHMARK(BM_Build)->Name("request_build");
BENCHMARK(BM_NestedCopy)->Name("request_nested_copy");
BENCHMARK(BM_Text)->Name("request_text");
BENCHMARK(BM_Write)->Name("request_write");
BENCHMARK(BM_Read)->Name("request_read");

// ---------------------------------------------------------------------------------------------------------------------
// Join graphs

enum class Shape { kChain, kStar };

/// Nodes that stand in a chain, or of which the first is joined to all others.
std::vector<RqJoinNode*> MakeGraph(Shape shape, int numNodes) {
  std::vector<RqJoinNode*> nodes;
  for (int i = 0; i < numNodes; ++i) {
    auto* const pTable = new RqAtomicTable(nullptr, i + 1, VoidID(kTIDATable, static_cast<std::uint32_t>(i + 1)));
    nodes.push_back(new RqJoinNode(
        new RqTableReference(SqlTableRef::kInnerJoin, pTable, nullptr, nullptr, kDriving_UnknownTable), false));
  }
  for (int i = 1; i < numNodes; ++i) {
    const int other = shape == Shape::kChain ? i - 1 : 0;
    RqExprCond* const pCond = new RqExprCondEquality(new RqTargetColumn(KXString(L"k"), other + 1),
                                                     new RqTargetColumn(KXString(L"k"), i + 1), false);
    nodes[static_cast<std::size_t>(other)]->AddLink(nodes[static_cast<std::size_t>(i)], pCond, SqlTableRef::kInnerJoin,
                                                    kUnknownCardinality, nullptr, false);
  }
  return nodes;
}

template <Shape kShape>
void BM_Collapse(benchmark::State& state) {
  const int numNodes = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<RqJoinNode*> nodes = MakeGraph(kShape, numNodes);
    OwnedRqExprCondPtr residual;
    state.ResumeTiming();
    Heap<RqJoinSpec> collapsed(RqJoinSpec::CompileLinkGraph(nodes, residual, nullptr, false));
    benchmark::DoNotOptimize(collapsed.Get());
    state.PauseTiming();
    collapsed = nullptr;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * (numNodes - 1));
}

BENCHMARK(BM_Collapse<Shape::kChain>)->Name("collapse_chain")->Arg(20)->Arg(200)->Arg(2000);
BENCHMARK(BM_Collapse<Shape::kStar>)->Name("collapse_star")->Arg(20)->Arg(200)->Arg(2000);

// ---------------------------------------------------------------------------------------------------------------------
// A wide select list

constexpr int kWide = 2000;

Heap<RqList> MakeWideList() {
  Heap<RqList> list(new RqList(0));
  for (int i = 0; i < kWide; ++i) {
    list->GetProjection()->AddColumn(new RqDerivedColumn(
        new RqTargetColumn(L"column" + BaseStringUtil::StringFrom(i), 1), RqDerivedColumn::kUnknownColumnNum));
  }
  return list;
}

void BM_WideBuild(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(MakeWideList().Get());
  state.SetItemsProcessed(state.iterations() * kWide);
}

void BM_WideNestedCopy(benchmark::State& state) {
  const Heap<RqList> list = MakeWideList();
  for (auto _ : state) {
    const Heap<RqNode> copy(list->NestedDeepCopy(false));
    benchmark::DoNotOptimize(copy.Get());
  }
  state.SetItemsProcessed(state.iterations() * kWide);
}

void BM_WideLookUp(benchmark::State& state) {
  const Heap<RqList> list = MakeWideList();
  const Heap<RqExpr> last(list->GetProjection()->GetIthColumn(kWide - 1)->GetExpr()->DeepExprCopy(true));
  for (auto _ : state) benchmark::DoNotOptimize(list->GetProjection()->GetMatchingColumn(last.Get()));
  state.SetItemsProcessed(state.iterations() * kWide);
}

BENCHMARK(BM_WideBuild)->Name("wide_build");
BENCHMARK(BM_WideNestedCopy)->Name("wide_nested_copy");
BENCHMARK(BM_WideLookUp)->Name("wide_look_up");

[[maybe_unused]] const bool g_ratios = [] {
  AddRatio({"build of the largest example, to its parse", "request_build", {{1, "request_parse"}}, 0});
  AddRatio({"its nested copy, a node, to copy and destruction of a plain tree",
            "request_nested_copy",
            {{1, "plain_copy_destroy/50"}},
            0});
  AddRatio({"its text, a node, to that", "request_text", {{1, "plain_copy_destroy/50"}}, 0});
  AddRatio({"its byte form written, a node, to that", "request_write", {{1, "plain_copy_destroy/50"}}, 0});
  AddRatio({"its byte form read and repaired, a node, to that", "request_read", {{1, "plain_copy_destroy/50"}}, 0});
  AddRatio({"collapse of a chain, a link: 2,000 nodes to 20", "collapse_chain/2000", {{1, "collapse_chain/20"}}, 0});
  AddRatio({"collapse of a chain, a link: 200 nodes to 20", "collapse_chain/200", {{1, "collapse_chain/20"}}, 0});
  AddRatio({"collapse of a star, a link: 200 nodes to 20", "collapse_star/200", {{1, "collapse_star/20"}}, 0});
  AddRatio({"nested copy of 2,000 columns, a column, to building them", "wide_nested_copy", {{1, "wide_build"}}, 0});
  return true;
}();

}  // namespace
