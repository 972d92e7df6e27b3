#include "Query/Optimizer/Request/Blocks/SQORNestedJoinGraph.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "Blocks/JoinGraphText.h"
#include "CaseFile.h"

namespace {

/// Collapses the graph; the text is that of the new one, and of the residual condition behind '|'.
std::string Collapse(const std::string& nodesText, const std::string& linksText, bool bOuterJoinsOnly) {
  std::vector<RqJoinNode*> nodes = Graph(nodesText, linksText);
  std::vector<RqJoinNode*> trees;
  OwnedRqExprCondPtr residual;
  NestedJoinGraph::CollapseJoinTree(nodes, bOuterJoinsOnly, trees, residual, nullptr);
  EXPECT_TRUE(nodes.empty());
  const std::string text = GraphText(trees) + (residual ? " | " + CondText(residual.Get()) : "");
  DeletePtrCollection(trees);
  return text;
}

TEST(NestedJoinGraph, WhatBecomesOfAGraph) {
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  for (const TextCase& c : CasesOf("Blocks/join_graphs.txt")) {
    SCOPED_TRACE(c.m_input);
    const auto [graph, outer] = c.Split(" : outer");
    const auto [nodes, links] = TextCase{graph, {}}.Split(" :");
    EXPECT_EQ(Collapse(nodes, links, graph != c.m_input), c.m_expected);
    EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore);
  }
}

TEST(NestedJoinGraph, NothingOfARandomGraphIsLostOrDoubled) {
  std::mt19937 random(4711);
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  for (int round = 0; round < 500; ++round) {
    const std::size_t numNodes = 2 + random() % 6;
    const bool bOuterJoinsOnly = random() % 2 == 0;
    std::ostringstream links;
    std::multiset<std::string> expected;  // names of tables and conditions
    for (std::size_t i = 0; i < numNodes; ++i) expected.insert({char('A' + i)});
    for (std::size_t i = random() % 10; i > 0; --i) {
      const std::size_t in = random() % numNodes;
      const std::size_t out = (in + 1 + random() % (numNodes - 1)) % numNodes;
      const std::size_t type = random() % 2 == 0 ? 0 : random() % std::size(kJoinTypes);
      links << char('A' + in) << ' ' << kJoinTypes[type] << ' ' << char('A' + out) << ' ' << i << (i > 1 ? "," : "");
      expected.insert(std::to_string(i));
    }
    SCOPED_TRACE(links.str() + (bOuterJoinsOnly ? " (outer joins)" : " (all)"));

    std::vector<RqJoinNode*> nodes = Graph(std::string("A B C D E F G").substr(0, 2 * numNodes - 1), links.str());
    std::vector<RqJoinNode*> trees;
    OwnedRqExprCondPtr residual;
    NestedJoinGraph::CollapseJoinTree(nodes, bOuterJoinsOnly, trees, residual, nullptr);
    std::multiset<std::string> found;
    const auto add = [&found](std::vector<std::string> names) { found.insert(names.begin(), names.end()); };
    add(ColumnNames(residual.Get()));
    for (const RqJoinNode* const pTree : trees) {
      add(ColumnNames(pTree));
      for (const char c : TableText(pTree->GetTableReference()))
        if (c >= 'A' && c <= 'Z') add({{c}});
      for (const RqJoinLink* const pLink : pTree->GetIncidentLinks()) {
        EXPECT_NE(pLink->GetInNode(), pLink->GetOutNode());
        if (pLink->GetInNode() == pTree) add(ColumnNames(pLink->GetJoinCond()));
      }
    }
    EXPECT_EQ(found, expected);
    DeletePtrCollection(trees);
    residual = nullptr;
    ASSERT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore);
  }
}

TEST(NestedJoinGraphDeathTest, AGraphThatIsNone) {
  const auto collapse = [](std::vector<RqJoinNode*> nodes, bool bOuterJoinsOnly, std::vector<RqJoinNode*> trees = {}) {
    OwnedRqExprCondPtr residual;
    NestedJoinGraph::CollapseJoinTree(nodes, bOuterJoinsOnly, trees, residual, nullptr);
  };
  EXPECT_DEATH(collapse(Graph("A", ""), false, Graph("B", "")), "joinTrees.empty\\(\\)");
  EXPECT_DEATH(collapse({new RqJoinNode}, false), "joinTreeIter->m_pJoinTree");
  EXPECT_DEATH(collapse({nullptr}, false), "pCurrNode");
  EXPECT_DEATH(collapse(Graph("A", "A left . c1"), false), "pRightTable");
  std::vector<RqJoinNode*> graph = Graph("A B C", "A inner B c1, A left C c2");
  EXPECT_DEATH(collapse({graph[0], graph[2]}, true), "SQORNestedJoinGraph.*logic error")
      << "a link that stays leads out of the graph";
  graph[1]->SetTableReference(nullptr);
  EXPECT_DEATH(collapse(graph, false), "newTableEntryPos != newJoinTree.m_newTableMap.end\\(\\)");
  graph[0]->SetTableReference(nullptr);
  EXPECT_DEATH(collapse(graph, false), "pLeftTable");
  DeletePtrCollection(graph);
}

}  // namespace
