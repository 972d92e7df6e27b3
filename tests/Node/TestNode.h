#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"

class TestNode;

/// A visitor that sees the nodes of these tests and nothing else.
class TestVisitor : public AVisitorRqNode {
 public:
  virtual bool VisitTestNode(TestNode& node) = 0;

#define RQ_VISIT(Class, body, state) \
  bool Visit(Class&) override { return false; }
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
};

/// A node with a name, which says when it dies. Its kind is borrowed.
class TestNode final : public RqNode {
 public:
  /// The nodes that died since it was last emptied.
  inline static std::vector<std::string> s_destroyed;
  /// The name of the node whose copying fails.
  inline static std::string s_failsToCopy;

  explicit TestNode(std::string name, std::initializer_list<RqNode*> children = {}) : m_name(std::move(name)) {
    for (RqNode* const pChild : children) AddChild(pChild);
  }
  TestNode(const TestNode& rhs, bool bNewIDs, bool bDeepCopy) : RqNode(rhs, bNewIDs, bDeepCopy), m_name(rhs.m_name) {
    if (m_name == s_failsToCopy) throw std::runtime_error("cannot copy " + m_name);
  }
  ~TestNode() override { s_destroyed.push_back(m_name); }

  const std::string& GetName() const { return m_name; }

  RqNode* DeepCopy(bool bNewIDs) const override { return new TestNode(*this, bNewIDs, true); }
  RqNodeType_e GetObjectType() const override { return kRqHandleNode; }
  bool Accept(AVisitorRqNode& visitor) override { return static_cast<TestVisitor&>(visitor).VisitTestNode(*this); }

 private:
  std::string m_name;
};

/// "a(b,-,c(d))": names, children in parentheses, "-" for null. A child that takes another for its parent is marked
/// "!".
inline std::string Shape(const RqNode* pNode) {
  if (!pNode) return "-";
  std::string shape = static_cast<const TestNode*>(pNode)->GetName();
  for (int i = 0; i < pNode->GetNumChildren(); ++i) {
    const RqNode* const pChild = pNode->GetIthChild(i);
    shape += i == 0 ? "(" : ",";
    if (pChild && pChild->GetParent() != pNode) shape += "!";
    shape += Shape(pChild);
  }
  return pNode->GetNumChildren() > 0 ? shape + ")" : shape;
}

/// Fails a test that leaves nodes behind.
class NodeTest : public testing::Test {
 protected:
  NodeTest() {
    TestNode::s_destroyed.clear();
    TestNode::s_failsToCopy.clear();
  }
  ~NodeTest() override { EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), m_nodesBefore) << "nodes leaked"; }

  const std::int64_t m_nodesBefore = MemoryDataCollector::GetRqNodeCount();
};
