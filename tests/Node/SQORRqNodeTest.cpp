#include "Query/Optimizer/Request/Node/SQORRqNode.h"

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Host/KXThread.h"
#include "Node/SmallStack.h"
#include "Node/TestNode.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "TestUtil.h"

namespace {

/// Two trees, a loose node, and a place for what a step lets go of.
struct Grove {
  TestNode* a = new TestNode("a");
  TestNode* b = new TestNode("b", {new TestNode("e")});
  TestNode* c = new TestNode("c");
  TestNode* d = new TestNode("d");
  TestNode p{"p", {a, b, c}};
  TestNode q{"q", {d}};
  TestNode* x = new TestNode("x");
  std::unique_ptr<RqNode> y = std::make_unique<TestNode>("y");
  std::unique_ptr<RqNode> pReleased;
  bool bXAttached = false;

  /// x, which from here on belongs to a tree.
  TestNode* GiveX() {
    bXAttached = true;
    return x;
  }
  ~Grove() {
    if (!bXAttached) delete x;
  }
};

const char* const kP = "p(a,b(e),c)";
const char* const kQ = "q(d)";

// A step, both trees behind it, and what it destroys.
const std::tuple<const char*, void (*)(Grove&), const char*, const char*, std::vector<std::string>> kOwnershipRows[] = {
    {"set deletes what stood there", [](Grove& g) { g.p.SetIthChild(1, g.GiveX()); }, "p(a,x,c)", kQ, {"b", "e"}},
    {"set the same child", [](Grove& g) { g.p.SetIthChild(1, g.b); }, kP, kQ, {}},
    {"set another tree's child", [](Grove& g) { g.p.SetIthChild(0, g.d); }, "p(d,b(e),c)", "q(-)", {"a"}},
    {"set a child of an earlier slot", [](Grove& g) { g.p.SetIthChild(2, g.a); }, "p(-,b(e),a)", kQ, {"c"}},
    {"set a child of a later slot", [](Grove& g) { g.p.SetIthChild(0, g.c); }, "p(-,b(e),c)", kQ, {"a"}},
    {"add", [](Grove& g) { g.p.AddChild(g.GiveX()); }, "p(a,b(e),c,x)", kQ, {}},
    {"add another tree's child", [](Grove& g) { g.p.AddChild(g.d); }, "p(a,b(e),c,d)", "q(-)", {}},
    {"add its own child", [](Grove& g) { g.p.AddChild(g.a); }, "p(-,b(e),c,a)", kQ, {}},
    {"release keeps the slot", [](Grove& g) { g.pReleased.reset(g.p.ReleaseIthChild(1)); }, "p(a,-,c)", kQ, {}},
    {"release from the parent", [](Grove& g) { g.pReleased.reset(g.c->ReleaseFromParent()); }, "p(a,b(e),-)", kQ, {}},
    {"delete a child", [](Grove& g) { g.p.DeleteChild(g.a, nullptr); }, "p(b(e),c)", kQ, {"a"}},
    {"delete a child into a container", [](Grove& g) { g.p.DeleteChild(g.b, &g.q); }, "p(a,c)", "q(d,b(e))", {}},
    {"delete a stranger", [](Grove& g) { g.p.DeleteChild(g.d, nullptr), g.p.DeleteChild(g.x, &g.q); }, kP, kQ, {}},
    {"shrink", [](Grove& g) { g.p.SetNumChildren(1); }, "p(a)", kQ, {"c", "b", "e"}},
    {"grow", [](Grove& g) { g.p.SetNumChildren(6); }, "p(a,b(e),c,-,-,-)", kQ, {}},
    {"delete an attached node", [](Grove& g) { delete g.b; }, "p(a,-,c)", kQ, {"b", "e"}},
    {"replace", [](Grove& g) { g.b->Replace(g.GiveX(), g.q); }, "p(a,x,c)", "q(d,b(e))", {}},
    {"replace by another tree's child", [](Grove& g) { g.b->Replace(g.d, g.q); }, "p(a,d,c)", "q(-,b(e))", {}},
    {"replace a root, which attaches nothing", [](Grove& g) { g.GiveX()->Replace(g.y.get(), g.q); }, kP, "q(d,x)", {}},
};

class Ownership : public NodeTest {};

TEST_F(Ownership, OfChildren) {
  for (const auto& [name, step, p, q, destroyed] : kOwnershipRows) {
    SCOPED_TRACE(name);
    TestNode::s_destroyed.clear();
    Grove g;
    step(g);
    EXPECT_EQ(Shape(&g.p), p);
    EXPECT_EQ(Shape(&g.q), q);
    EXPECT_TRUE(!g.y->GetParent() && !(g.pReleased && g.pReleased->GetParent()));
    EXPECT_EQ(TestNode::s_destroyed, destroyed);
  }
}

template <class Nodes>
std::string Names(const Nodes& nodes) {
  std::string names;
  for (const RqNode* pNode : nodes) names += static_cast<const TestNode*>(pNode)->GetName();
  return names;
}

class RqNodeTree : public NodeTest {
 protected:
  /// A tree with null slots and two nodes of one name.
  TestNode m_tree{"a",
                  {new TestNode("b", {nullptr, new TestNode("d")}), nullptr, new TestNode("c"), new TestNode("d")}};
};

TEST_F(RqNodeTree, FindsAChildByItsFirstSlot) {
  EXPECT_EQ(m_tree.FindChildIndex(m_tree.GetIthChild(3)), 3);
  EXPECT_EQ(m_tree.FindChildIndex(nullptr), 1);
  EXPECT_EQ(m_tree.FindChildIndex(&m_tree), 0x7fffffff);
}

TEST_F(RqNodeTree, CopiesKeepOrRenewIdentities) {
  const VoidID target(3023, 7u);
  m_tree.GetIthChild(0)->MarkTargetType(ServerInfo::kDefault);
  m_tree.GetIthChild(0)->MarkTargetID(target);
  for (const bool bNewIDs : {false, true}) {
    SCOPED_TRACE(bNewIDs);
    const std::unique_ptr<RqNode> pCopy(m_tree.DeepCopy(bNewIDs));
    EXPECT_EQ(Shape(pCopy.get()), "a(b(-,d),-,c,d)");
    EXPECT_EQ(pCopy->GetParent(), nullptr);
    std::map<RqNode*, RqNode*> copies;
    pCopy->GetPtrMap(m_tree, copies);
    EXPECT_EQ(copies.size(), 5u);
    for (const auto& [pSource, pCounterpart] : copies) {
      EXPECT_EQ(pCounterpart->IsCopyOf(*pSource), !bNewIDs);
      EXPECT_EQ(Shape(pCounterpart), Shape(pSource));
    }
    VoidID copiedTarget;
    pCopy->GetIthChild(0)->GetTargetID(copiedTarget);
    EXPECT_EQ(copiedTarget, target);
    EXPECT_EQ(pCopy->GetIthChild(0)->GetTargetType(), ServerInfo::kDefault);
    EXPECT_EQ(pCopy->GetTargetType(), ServerInfo::kUnknown);
    const std::unique_ptr<RqNode> pSecond(m_tree.DeepCopy(false));
    pSecond->GetPtrMap(m_tree, copies);
    EXPECT_EQ(copies.at(&m_tree), pCopy.get()) << "a map keeps what it holds";
  }
  const TestNode shallow(m_tree, true, false);
  EXPECT_EQ(Shape(&shallow), "a(-,-,-,-)");
  EXPECT_EQ(m_tree.GetMySize(), 5 * 64);
}

TEST_F(RqNodeTree, ACopyThatFailsLeavesNothingBehind) {
  for (const char* name : {"d", "c", "b", "a"}) {
    SCOPED_TRACE(name);
    TestNode::s_failsToCopy = name;
    const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
    EXPECT_THROW(m_tree.DeepCopy(true), std::runtime_error);
    EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore);
    EXPECT_EQ(Shape(&m_tree), "a(b(-,d),-,c,d)");
  }
}

TEST_F(RqNodeTree, HasIdentitiesOfItsOwn) {
  TestNode other("other");
  EXPECT_NE(other.GetNodeID() < m_tree.GetNodeID(), m_tree.GetNodeID() < other.GetNodeID());
  other.SetNodeID(m_tree.GetNodeID());
  other.SetUniqueID();
  EXPECT_FALSE(other.IsCopyOf(m_tree));
}

using RqNodeDeathTest = RqNodeTree;

TEST_F(RqNodeDeathTest, EndsOnMistakes) {
  EXPECT_DEATH(m_tree.GetIthChild(4), "SQUCompositeNode");
  EXPECT_DEATH(m_tree.GetIthChild(-1), "SQUCompositeNode");
  EXPECT_DEATH(m_tree.SetIthChild(4, nullptr), "SQUCompositeNode");
  const std::unique_ptr<RqNode> pCopy(m_tree.DeepCopy(false));
  pCopy->AddChild(new TestNode("more"));
  std::map<RqNode*, RqNode*> copies;
  EXPECT_DEATH(pCopy->GetPtrMap(m_tree, copies), "lhsNodes.size\\(\\) == rhsNodes.size\\(\\)");
}

// Tours

class TourLog : public TestVisitor {
 public:
  explicit TourLog(bool bPostOrder = false) : m_bPostOrder(bPostOrder) {}
  std::string m_visited;
  std::string m_pruneAt;
  std::function<void(TestNode&)> m_onVisit = [](TestNode&) {};

  bool VisitTestNode(TestNode& node) override {
    m_visited += node.GetName();
    m_onVisit(node);
    return node.GetName() == m_pruneAt;
  }
  bool IsPostOrderVisitor() const override { return m_bPostOrder; }

 private:
  bool m_bPostOrder;
};

TEST_F(RqNodeTree, IsToured) {
  const std::tuple<bool, const char*, const char*> rows[] = {
      {false, "", "abdcd"}, {false, "b", "abcd"}, {true, "b", "dbcda"}};
  for (const auto& [bPostOrder, pruneAt, visited] : rows) {
    TourLog log(bPostOrder);
    log.m_pruneAt = pruneAt;
    EXPECT_EQ(&m_tree.Tour(log), &log);
    EXPECT_EQ(log.m_visited, visited);
  }
}

TEST_F(RqNodeTree, IsTouredByItsCountOfTheMoment) {
  TourLog log;
  log.m_onVisit = [this](TestNode& node) {
    if (node.GetName() == "b") m_tree.SetNumChildren(3);
    if (node.GetName() == "c" && m_tree.GetNumChildren() == 3) m_tree.AddChild(new TestNode("n"));
  };
  m_tree.Tour(log);
  EXPECT_EQ(log.m_visited, "abdcn");
}

// Deep trees

/// A tree that deep, with a leaf and a null slot on each level.
std::unique_ptr<RqNode> MakeDeepTree(int depth) {
  auto pTree = std::make_unique<RqHandleNode>();
  for (int i = 1; i < depth; ++i) {
    auto pRoot = std::make_unique<RqHandleNode>(new RqHandleNode());
    pRoot->AddChild(nullptr);
    pRoot->AddChild(pTree.release());
    pTree = std::move(pRoot);
  }
  return pTree;
}

class DeepTree : public NodeTest {};

TEST_F(DeepTree, DiesInConstantStack) {
  constexpr int kDepth = 1'000'000;
  RunOnSmallStack([] {
    const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
    std::unique_ptr<RqNode> pTree = MakeDeepTree(kDepth);
    ASSERT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore + 2 * kDepth - 1);
    pTree.reset();
    EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore);
  });
}

TEST_F(DeepTree, EndsATourInAnError) {
  RunOnSmallStack([] {
    const std::unique_ptr<RqNode> pTree = MakeDeepTree(100'000);
    TourLog visitor;
    EXPECT_EQ(CodeRaisedBy([&] { pTree->Tour(visitor); }), kMsgStackLow);
  });
}

// Searches

/// Satisfied by the nodes whose names are among the letters.
auto NamedAmong(std::string letters) {
  return [letters](const RqNode& node) {
    return letters.find(static_cast<const TestNode&>(node).GetName()) != std::string::npos;
  };
}

class Searches : public NodeTest {
 protected:
  /// Matches that nest: every "m".
  TestNode m_tree{"r",
                  {new TestNode("m", {new TestNode("x"), nullptr, new TestNode("m")}), nullptr,
                   new TestNode("s", {new TestNode("m")}), new TestNode("y")}};
};

TEST_F(Searches, FindNodes) {
  const std::tuple<const char*, bool, const char*, const char*> rows[] = {
      {"mx", false, "mxmm", "mm"}, {"mx", true, "xmmm", "mm"}, {"rsy", true, "syr", "r"}, {"z", false, "", ""}};
  for (const auto& [letters, bPostOrder, expected, expectedTopmost] : rows) {
    SCOPED_TRACE(std::string(letters) + (bPostOrder ? " post-order" : ""));
    std::list<RqNode*> found, topmost;
    FindNodes(&m_tree, NamedAmong(letters), found, bPostOrder);
    EXPECT_EQ(Names(found), expected);
    FindTopmostNodes(nullptr, &m_tree, NamedAmong(letters), topmost, bPostOrder);
    EXPECT_EQ(Names(topmost), expectedTopmost);
    EXPECT_EQ(FoundNodes(&m_tree, NamedAmong(letters)), !found.empty());
  }
  std::list<RqNode*> none;
  FindNodes(nullptr, NamedAmong("m"), none, false);
  FindTopmostNodes(nullptr, nullptr, NamedAmong("m"), none, false);
  EXPECT_TRUE(none.empty());
  EXPECT_FALSE(FoundNodes(nullptr, NamedAmong("m")));
}

TEST_F(Searches, FindNodesWithSkippedPredicate) {
  const auto find = [this](const char* letters, const char* skipped, std::vector<RqNode*>& nodes, int& index) {
    FindNodesWithSkippedPredicate(&m_tree, NamedAmong(letters), NamedAmong(skipped), nodes, false, index);
  };
  std::vector<RqNode*> nodes(2);
  int index = 0;
  find("mxy", "s", nodes, index);
  ASSERT_EQ(index, 4);
  EXPECT_EQ(nodes.size(), 102u);
  EXPECT_EQ(Names(std::vector<RqNode*>(nodes.begin(), nodes.begin() + index)), "ymmx");

  find("m", "m", nodes, index);
  EXPECT_EQ(index, 4) << "every match is skipped";
  find("m", "", nodes, index);
  EXPECT_EQ(index, 7) << "the count goes on";
  EXPECT_EQ(nodes.size(), 102u);
}

TEST_F(Searches, ByKind) {
  EXPECT_TRUE(FoundNodes(&m_tree, RqNode::IsObjectType({kRqList, kRqHandleNode})));
  EXPECT_FALSE(FoundNodes(&m_tree, RqNode::IsObjectType({kRqList, kRqUnion})));
  EXPECT_FALSE(FoundNodes(&m_tree, RqNode::IsAggrNode()));
}

// The handle

TEST(HandleNode, HoldsATreeWhoseRootMayChange) {
  RqHandleNode handle(new TestNode("old"));
  RqHandleNode pen;
  handle.GetRqNode()->Replace(new TestNode("new"), pen);
  EXPECT_EQ(Shape(handle.GetRqNode()), "new");
  EXPECT_EQ(Shape(pen.GetRqNode()), "old");
  EXPECT_EQ(Shape(std::unique_ptr<RqNode>(handle.ReleaseRqNode()).get()), "new");
  EXPECT_EQ(handle.GetRqNode(), nullptr);
  EXPECT_EQ(RqHandleNode().ReleaseRqNode(), nullptr);
}

}  // namespace
