#include <gtest/gtest.h>

#include <map>
#include <string_view>
#include <vector>

#include "Blocks/BlockSamples.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"
#include "Text/TreeSamples.h"

namespace {

// Visitors that override no more than they must, and there say that they have dealt with the node.
#define OVERRIDE_Pure(Class) \
  bool Visit(Class&) override { return true; }
#define OVERRIDE_False(Class)
#define OVERRIDE_LogicError(Class)

class NodeVisitor final : public AVisitorRqNode {
 public:
  using AVisitorRqNode::Visit;
#define RQ_VISIT(Class, body, state) OVERRIDE_##body(Class)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
};

class ExprVisitor final : public AVisitorRqExpr {
 public:
  using AVisitorRqExpr::Visit;
#define RQ_VISIT(Class, body, state) OVERRIDE_##body(Class)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
};

// The overloads of classes that stand.
enum class Body { Pure, False, LogicError };
using Overloads = std::map<std::string_view, Body>;
#define OVERLOAD_Stands(Class, body) {#Class, Body::body},
#define OVERLOAD_Declared(Class, body)

/// Shows a visitor those of the samples that have an overload of their own. Of the classes that it need not handle
/// there must be a sample each.
template <class Visitor, class Interface>
void ExpectDefaults(Overloads overloads, const std::vector<RqNode*>& samples) {
  Visitor visitor;
  for (RqNode* const pSample : samples) {
    const Heap<RqNode> sample(pSample);
    const auto overload = overloads.find(GetRqNodeTypeName(sample->GetObjectType()));
    if (overload == overloads.end()) continue;
    SCOPED_TRACE(overload->first);
    const auto visit = [&] { return static_cast<Interface&>(*sample).Accept(visitor); };
    if (overload->second == Body::LogicError) {
      EXPECT_DEATH(visit(), "SQORAVisitorRqExpr.*logic error");
    } else {
      EXPECT_EQ(visit(), overload->second == Body::Pure);
    }
    overloads.erase(overload);
  }
  for (const auto& [name, body] : overloads) EXPECT_EQ(body, Body::Pure) << name << " has no sample";
}

TEST(Visitors, OfNodesDoNothingToWhatTheyNeedNotHandle) {
  std::vector<RqNode*> samples{new RqMolapStarJoin(List({Int(1)})), new RqMolapFilterJoin(List({Int(1)}))};
  for (const auto& make : BlockSamples()) samples.push_back(make());
  ExpectDefaults<NodeVisitor, RqNode>(
      {
#define RQ_VISIT(Class, body, state) OVERLOAD_##state(Class, body)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
      },
      samples);
}

TEST(VisitorsDeathTest, OfExpressionsDoNothingToWhatTheyNeedNotHandleOrEnd) {
  SampleRepository repository;
  std::vector<RqNode*> samples;
  for (const TreeSample& sample : TreeSamples(repository)) samples.push_back(sample.m_pNode);
  ExpectDefaults<ExprVisitor, RqExpr>(
      {
#define RQ_VISIT(Class, body, state) OVERLOAD_##state(Class, body)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
      },
      samples);
}

}  // namespace
