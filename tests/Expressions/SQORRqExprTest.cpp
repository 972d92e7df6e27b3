#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Host/KXThread.h"
#include "Node/SmallStack.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "TestUtil.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Owned = std::unique_ptr<RqExpr>;

const RqShallowLessThan kShallow;
const RqEquivalence kEquivalence;

// Order of trees

/// Reads what Text writes of rows, integers of one digit, nulls and null operands.
RqExpr* Parse(const char*& pText) {
  while (*pText == ' ') ++pText;
  const char first = *pText++;
  if (first == '-') return nullptr;
  if (first == 'n') return pText += 3, Null();
  if (first != '[') return Int(first - '0');
  RqExpr* const pRow = Row({});
  while (*pText != ']') pRow->AddChild(Parse(pText));
  ++pText;
  return pRow;
}

TEST(DeepOrder, OfTrees) {
  // Each left tree is less than the right one, or both are equivalent.
  const std::tuple<const char*, const char*, const char*, bool> rows[] = {
      {"kinds by number", "9", "null", false},
      {"kind before operands", "[9]", "1", false},
      {"equal trees", "[1 [2]]", "[1 [2]]", true},
      {"leaf before operands", "[]", "[-]", false},
      {"null operand first", "[- 9]", "[1 1]", false},
      {"null operand before another", "[- 1]", "[1 -]", false},
      {"null operands tie", "[- 1]", "[- 2]", false},
      {"first operand decides", "[1 9]", "[2 1]", false},
      {"later operand decides", "[1 2]", "[1 3]", false},
      {"prefix first", "[1]", "[1 0]", false},
      {"null behind a prefix", "[1]", "[1 -]", false},
      {"operand before length", "[1 1 1]", "[2]", false},
      {"depth first", "[[1 4] 9]", "[[1 5] 1]", false},
  };
  for (auto [name, leftText, rightText, bSame] : rows) {
    SCOPED_TRACE(name);
    const Owned pLeft(Parse(leftText));
    const Owned pRight(Parse(rightText));
    const auto check = [bSame = bSame](RqExpr& left, RqExpr& right, bool bLess) {
      for (const bool bBefore : {false, true}) {
        bool bTied = bBefore;
        EXPECT_EQ(left.IsDeepLessThan(right, kShallow, bTied), bLess);
        EXPECT_EQ(bTied, bSame);
      }
      EXPECT_EQ(left.IsLessThan(right, kShallow), bLess);
      EXPECT_EQ(LessEquivalentRqExpr()(&left, &right), bLess);
      EXPECT_EQ(RqDeepLessThanShareBase()(left, right), bLess);
      EXPECT_EQ(left.IsEquivalent(right, kEquivalence), bSame);
    };
    check(*pLeft, *pRight, !bSame);
    check(*pRight, *pLeft, false);
  }
}

TEST(Equivalence, AsksThePredicateForEachOperand) {
  /// Holds whatever is an integer for the same.
  class AllIntegers : public RqEquivalence {
   public:
    bool operator()(const RqExpr& lhs, const RqExpr& rhs) const override {
      return lhs.GetObjectType() == kRqExprIntegerLiteral ? rhs.GetObjectType() == kRqExprIntegerLiteral
                                                          : lhs.IsEquivalent(rhs, *this);
    }
  };
  const Owned pLeft(Row({Row({Int(1)}), Col(L"a")}));
  const Owned pRight(Row({Row({Int(2)}), Col(L"a")}));
  EXPECT_TRUE(pLeft->IsEquivalent(*pRight, AllIntegers()));
  EXPECT_FALSE(pLeft->IsEquivalent(*pRight, kEquivalence));
}

TEST(ExprVectors, AreComparedPositionByPosition) {
  const Owned pOne(Int(1)), pAlsoOne(Int(1)), pTwo(Int(2));
  RqExpr *const one = pOne.get(), *const alsoOne = pAlsoOne.get(), *const two = pTwo.get();
  // Each left one is less than the right one, or both are equivalent.
  const std::tuple<RqExprVector, RqExprVector, bool> rows[] = {
      {{}, {}, true},
      {{}, {one}, false},
      {{one, nullptr}, {alsoOne, nullptr}, true},
      {{nullptr}, {one}, false},
      {{one, one}, {alsoOne, two}, false},
      {{one}, {alsoOne, nullptr}, false},
      {{one, two}, {two}, false},
  };
  for (const auto& [lhs, rhs, bEquivalent] : rows) {
    EXPECT_EQ(EquivalentVectorExprs(lhs, rhs, kEquivalence), bEquivalent);
    EXPECT_EQ(EquivalentVectorExprs(rhs, lhs, kEquivalence), bEquivalent);
    EXPECT_EQ(LessEquivalentVectorExprs(lhs, rhs), !bEquivalent);
    EXPECT_FALSE(LessEquivalentVectorExprs(rhs, lhs));
  }
}

// Predicates

TEST(Constants, FollowFromOperands) {
  const std::pair<RqExpr*, bool> rows[] = {
      {Int(1), true},
      {Col(L"a"), false},
      {new RqExprParam(1), true},
      {new RqExprSessionVar({L"B", L"V"}), true},
      {Row({}), false},
      {Row({Row({Int(1)}), nullptr}), true},
      {Row({Int(1), Col(L"a")}), false},
      {Row({Row({}), Int(2)}), false},
  };
  for (const auto& [pExpr, bConstant] : rows) {
    const Owned pOwned(pExpr);
    EXPECT_EQ(pExpr->IsConstant(), bConstant);
    EXPECT_EQ(pExpr->IsNavigationConstant(), bConstant);
  }
}

// Searches

TEST(SubExprs, AreFoundTopmostOnly) {
  const Owned pTree(Row({Row({Int(1)}), Row({Row({Int(1)}), nullptr, Int(1)}), Row({Row({Int(1)})})}));
  const auto find = [&pTree](RqExpr* pSearch) {
    const Owned pSearchOwned(pSearch);
    RqExprVector found;
    RqExpr::FindEquivalentSubExprs(pTree.get(), *pSearch, found);
    return found;
  };
  EXPECT_THAT(find(Row({Int(1)})), ElementsAre(pTree->GetIthOperand(0), pTree->GetIthOperand(1)->GetIthOperand(0),
                                               pTree->GetIthOperand(2)->GetIthOperand(0)));
  EXPECT_THAT(find(pTree->DeepExprCopy(true)), ElementsAre(pTree.get())) << "what lies under a match is not searched";
  EXPECT_THAT(find(Int(2)), IsEmpty());
  RqExprVector none;
  RqExpr::FindEquivalentSubExprs(nullptr, *pTree, none);
  EXPECT_THAT(none, IsEmpty());
}

TEST(SubExprs, AreTheLeavesFromLeftToRight) {
  const Owned pTree(Row({Col(L"a"), Row({Int(1), nullptr, Row({})}), Int(2)}));
  ConstRqExprVector leaves;
  RqExpr::FindSubExprs(pTree.get(), leaves);
  std::string text;
  for (const RqExpr* pLeaf : leaves) text += Text(pLeaf) + ";";
  EXPECT_EQ(text, "a;1;[];2;");
  RqExpr::FindSubExprs(nullptr, leaves);
  EXPECT_EQ(leaves.size(), 4u);
}

// Visitors

/// Notes integers, columns and rows; stops at rows of a given number of operands.
class ExprLog : public AVisitorRqExpr {
 public:
  std::string m_visited;
  int m_stopAtNumOperands = -1;
  std::function<void(RqExprColumnListOrdered&)> m_onRow = [](RqExprColumnListOrdered&) {};

#define RQ_VISIT(Class, body, state) \
  bool Visit(Class& expr) override { return OnVisit(expr); }
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"

 private:
  template <class Class>
  bool OnVisit(Class&) {
    return false;
  }
  bool OnVisit(RqExprIntegerLiteral& expr) {
    m_visited += std::to_string(expr.GetValue());
    return true;
  }
  bool OnVisit(RqTargetColumn& expr) {
    m_visited += Text(&expr);
    return true;
  }
  bool OnVisit(RqExprColumnListOrdered& expr) {
    m_visited += "[";
    m_onRow(expr);
    return expr.GetNumOperands() == m_stopAtNumOperands;
  }
};

/// A node visitor that counts expressions and asks to go on.
class NodeLog : public AVisitorRqNode {
 public:
  int m_numExprs = 0;
  std::function<void(RqExpr&)> m_onExpr = [](RqExpr&) {};

#define RQ_VISIT(Class, body, state) \
  bool Visit(Class& node) override { return OnVisit(node); }
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"

 private:
  template <class Class>
  bool OnVisit(Class&) {
    return false;
  }
  bool OnVisit(RqExpr& expr) {
    ++m_numExprs;
    m_onExpr(expr);
    return false;
  }
};

TEST(Tours, GoThroughOperands) {
  const Owned pTree(
      Row({Int(1), Row({Int(2), nullptr, new RqTargetCubeColumn(KXString(L"c"), 1)}), new RqExprColumnList(), Int(3)}));
  ExprLog log;
  EXPECT_EQ(&pTree->TourExpr(log), &log);
  EXPECT_EQ(log.m_visited, "[1[2c[3");

  ExprLog pruned;
  pruned.m_stopAtNumOperands = 3;
  pTree->TourExpr(pruned);
  EXPECT_EQ(pruned.m_visited, "[1[[3");

  ExprLog shrinking;
  shrinking.m_onRow = [&pTree](RqExprColumnListOrdered& row) {
    if (&row != pTree.get()) pTree->SetNumOperands(2);
  };
  pTree->TourExpr(shrinking);
  EXPECT_EQ(shrinking.m_visited, "[1[2c");
}

TEST(Tours, OfNodesEndAtAnExpression) {
  const Owned pTree(Row({Int(1), Row({Int(2)})}));
  NodeLog log;
  EXPECT_EQ(&pTree->Tour(log), &log);
  EXPECT_EQ(log.m_numExprs, 1);
}

TEST(Tours, EndWhenTheJobIsCancelled) {
  const Owned pTree(Row({Int(1), Row({Int(2)}), Int(3)}));
  const KXJobToken token;
  const KXJobScope scope(token);
  ExprLog log;
  log.m_onRow = [&](RqExprColumnListOrdered& row) {
    if (&row != pTree.get()) token.Cancel();
  };
  EXPECT_EQ(CodeRaisedBy([&] { pTree->TourExpr(log); }), kMsgJobCancelled);
  EXPECT_EQ(log.m_visited, "[1[") << "the next operand is the next cancellation point";
  NodeLog nodeLog;
  EXPECT_EQ(CodeRaisedBy([&] { pTree->Tour(nodeLog); }), kMsgJobCancelled);
  EXPECT_EQ(nodeLog.m_numExprs, 0);
}

TEST(Tours, EndInAnErrorWhenTheStackRunsLow) {
  Owned pTree(Int(1));
  for (int i = 0; i < 100'000; ++i) pTree.reset(Row({pTree.release()}));
  RunOnSmallStack([&] {
    ExprLog log;
    EXPECT_EQ(CodeRaisedBy([&] { pTree->TourExpr(log); }), kMsgStackLow);
    NodeLog nodeLog;  // starts the tour of an expression from its visit over and over
    nodeLog.m_onExpr = [&](RqExpr& expr) { expr.Tour(nodeLog); };
    EXPECT_EQ(CodeRaisedBy([&] { pTree->Tour(nodeLog); }), kMsgStackLow);
  });
}

}  // namespace
