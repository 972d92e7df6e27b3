#include "Query/Optimizer/Request/Blocks/SQORNestedJoinGraph.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "Blocks/JoinGraphText.h"

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

constexpr bool kOuterJoinsOnly = true;
struct {
  const char* m_nodes;
  const char* m_links;
  const char* m_expected;
  bool m_bOuterJoinsOnly = false;
} constexpr kCases[] = {
    {"A", "", "(A)"},
    {"A/c1", "", "(A on c1)"},
    {"A B", "A inner B c1", "(A inner B on c1)"},
    {"B A", "A natural B -", "(A natural B)"},
    {"A B", "A right B c1", "(B left A on c1)"},
    // All links of a node, then those of its neighbours, one after the other.
    {"A B C D E", "C inner E c4, B inner D c3, A inner B c1, A inner C c2",
     "((((A inner B on c1) inner C on c2) inner D on c3) inner E on c4)"},
    {"A B C", "A inner B c1, C left A c2", "(C left (A inner B on c1) on c2)"},
    // A reference that is a join stays; one around a single table goes, with the condition that stands on it.
    {"[AB] C", "A inner C c1", "((A inner B) inner C on c1)"},
    {"C [AB]", "C full A c1", "(C full (A inner B) on c1)"},
    {"[AB] [CD] E", "C left A c1, E left C c2", "(E left ((C inner D) left (A inner B) on c1) on c2)"},
    {"A/c9 B", "A inner B c1", "(A inner B on c1)"},
    // Cycles.
    {"A B C", "A inner B c1, B inner C c2, A inner C c3", "((A inner B on c1) inner C on c2&c3)"},
    {"A B C", "A inner B c1, A left C c3, C left B c2", "((A inner B on c1) inner C on c2&c3)"},
    {"A B", "A left B c1, B left A c2", "(A inner B on c1&c2)"},
    {"A B", "A left B c1, A left B c2", "(A left B on c1&c2)"},
    {"A B", "A left B c1, B right A c2", "(A left B on c1&c2)"},
    {"A B", "A left B c1, A inner B c2", "(A inner B on c1&c2)"},
    {"A B", "A left B c1, B full A c2", "(A left B on c1&c2)"},
    {"A B", "A full B c1, B left A c2", "(A right B on c1&c2)"},
    {"A B", "A stitch B c1, A natural B c2", "(A natural B on c1&c2)"},
    {"A B", "A left B c1, B left A -", "(A left B on c1)"},
    // The driving side, in trees and on links that stay.
    {"B A", "A inner B c1 <", "(A <inner B on c1)"},
    {"A B", "A inner B c1 >", "(A inner> B on c1)"},
    {"A B", "A right B c1 <", "(B left> A on c1)"},
    {"A B C", "A inner B c1 >!, C inner B c2 <", "(A) (B) (C), 0 inner 1 c1 #0 >!, 2 inner 1 c2 #1 <", kOuterJoinsOnly},
    {"A B C", "A inner B c1 >, C left B c2", "(A) (C left B on c2), 0 inner 1 c1 #0 >", kOuterJoinsOnly},
    // Outer joins alone.
    {"A B", "B inner A c1", "(A) (B), 1 inner 0 c1 #0", kOuterJoinsOnly},
    {"A B C", "A inner B c1, B left C c2", "(A) (B left C on c2), 0 inner 1 c1 #0", kOuterJoinsOnly},
    {"A B C", "A inner B c1, B left C c2, C inner A c3", "(A) (B left C on c2), 0 inner 1 c1 #0, 1 inner 0 c3 #2",
     kOuterJoinsOnly},
    {"A B C", "B inner C c1, A inner C c2, A inner B c3",
     "(A) (B) (C), 0 inner 2 c2 #1, 0 inner 1 c3 #2, 1 inner 2 c1 #0", kOuterJoinsOnly},
    {"A B", "A left B c1, A inner B c2, B inner A c3, A inner B -", "(A left B on c1) | c2&c3", kOuterJoinsOnly},
};

TEST(NestedJoinGraph, WhatBecomesOfAGraph) {
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.m_nodes) + ": " + c.m_links);
    EXPECT_EQ(Collapse(c.m_nodes, c.m_links, c.m_bOuterJoinsOnly), c.m_expected);
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
  EXPECT_DEATH(collapse({graph[0], graph[2]}, true), "") << "a link that stays leads out of the graph";
  graph[1]->SetTableReference(nullptr);
  EXPECT_DEATH(collapse(graph, false), "newTableEntryPos != newJoinTree.m_newTableMap.end\\(\\)");
  graph[0]->SetTableReference(nullptr);
  EXPECT_DEATH(collapse(graph, false), "pLeftTable");
  DeletePtrCollection(graph);
}

}  // namespace
