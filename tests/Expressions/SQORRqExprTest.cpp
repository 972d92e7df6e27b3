#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXThread.h"
#include "Node/SmallStack.h"

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
  const struct {
    const char* name;
    const char* left;
    const char* right;
    bool bEquivalent = false;
  } rows[] = {
      {"kinds by number", "9", "null"},
      {"kind before operands", "[9]", "1"},
      {"values", "1", "2"},
      {"equal leaves", "1", "1", true},
      {"equal trees", "[1 [2]]", "[1 [2]]", true},
      {"no operands on either side", "[]", "[]", true},
      {"leaf before operands", "[]", "[-]"},
      {"null operand first", "[- 9]", "[1 1]"},
      {"null operands tie", "[- 1]", "[- 2]"},
      {"all null operands", "[-]", "[-]", true},
      {"first operand decides", "[1 9]", "[2 1]"},
      {"later operand decides", "[1 2]", "[1 3]"},
      {"prefix first", "[1]", "[1 0]"},
      {"null behind a prefix", "[1]", "[1 -]"},
      {"operand before length", "[1 1 1]", "[2]"},
      {"depth first", "[[1 4] 9]", "[[1 5] 1]"},
      {"inner prefix", "[[1] 9]", "[[1 1] 1]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const char* pLeftText = row.left;
    const char* pRightText = row.right;
    const Owned pLeft(Parse(pLeftText));
    const Owned pRight(Parse(pRightText));
    ASSERT_EQ(Text(pLeft) + Text(pRight), std::string(row.left) + row.right);
    const auto check = [&row](RqExpr& left, RqExpr& right, bool bLess) {
      for (const bool bBefore : {false, true}) {
        bool bEquivalent = bBefore;
        EXPECT_EQ(left.IsDeepLessThan(right, kShallow, bEquivalent), bLess);
        EXPECT_EQ(bEquivalent, row.bEquivalent);
      }
      EXPECT_EQ(left.IsLessThan(right, kShallow), bLess);
      EXPECT_EQ(LessEquivalentRqExpr()(&left, &right), bLess);
      EXPECT_EQ(RqDeepLessThanShareBase()(left, right), bLess);
      EXPECT_EQ(left.IsEquivalent(right, kEquivalence), row.bEquivalent);
    };
    check(*pLeft, *pRight, !row.bEquivalent);
    check(*pRight, *pLeft, false);
  }
}

TEST(DeepOrderOfPointers, PutsNullFirst) {
  const Owned pOne(Int(1));
  const LessEquivalentRqExpr less;
  EXPECT_TRUE(less(nullptr, pOne.get()));
  EXPECT_FALSE(less(pOne.get(), nullptr));
  EXPECT_FALSE(less(nullptr, nullptr));
}

TEST(Equivalence, NeedsNullsInTheSameSlots) {
  const Owned pBoth(Row({Int(1), nullptr}));
  const Owned pFirst(Row({nullptr, Int(1)}));
  const Owned pLonger(Row({Int(1), nullptr, nullptr}));
  EXPECT_TRUE(kEquivalence(*pBoth, *Owned(pBoth->DeepExprCopy(true))));
  EXPECT_FALSE(kEquivalence(*pBoth, *pFirst));
  EXPECT_FALSE(kEquivalence(*pFirst, *pBoth));
  EXPECT_FALSE(kEquivalence(*pBoth, *pLonger));
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
  const Owned pOne(Int(1));
  const Owned pAlsoOne(Int(1));
  const Owned pTwo(Int(2));
  RqExpr* const one = pOne.get();
  RqExpr* const alsoOne = pAlsoOne.get();
  RqExpr* const two = pTwo.get();
  // Each left one is less than the right one, or both are equivalent.
  const struct {
    RqExprVector lhs;
    RqExprVector rhs;
    bool bEquivalent;
  } rows[] = {
      {{}, {}, true},
      {{}, {one}, false},
      {{one}, {alsoOne}, true},
      {{one, nullptr}, {alsoOne, nullptr}, true},
      {{nullptr}, {one}, false},
      {{one, one}, {alsoOne, two}, false},
      {{one}, {alsoOne, nullptr}, false},
      {{one, two}, {two}, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const auto check = [&row](const auto& lhs, const auto& rhs) {
      EXPECT_EQ(EquivalentVectorExprs(lhs, rhs, kEquivalence), row.bEquivalent);
      EXPECT_EQ(EquivalentVectorExprs(rhs, lhs, kEquivalence), row.bEquivalent);
      EXPECT_EQ(LessEquivalentVectorExprs(lhs, rhs), !row.bEquivalent);
      EXPECT_FALSE(LessEquivalentVectorExprs(rhs, lhs));
    };
    check(row.lhs, row.rhs);
    check(ConstRqExprVector(row.lhs.begin(), row.lhs.end()), ConstRqExprVector(row.rhs.begin(), row.rhs.end()));
  }
}

// Predicates

TEST(Constants, FollowFromOperands) {
  const struct {
    Owned pExpr;
    bool bConstant;
  } rows[] = {
      {Owned(Int(1)), true},
      {Owned(Col(L"a")), false},
      {Owned(Row({})), false},
      {Owned(Row({Int(1), nullptr})), true},
      {Owned(Row({Int(1), Col(L"a")})), false},
      {Owned(Row({Row({Int(1)}), Int(2)})), true},
      {Owned(Row({Row({}), Int(2)})), false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(Text(row.pExpr));
    EXPECT_EQ(row.pExpr->IsConstant(), row.bConstant);
    EXPECT_EQ(row.pExpr->IsNavigationConstant(), row.bConstant);
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
  EXPECT_EQ(find(Int(1)).size(), 4u);
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

#define RQ_VISIT(Class, body, state) \
  bool Visit(Class& node) override { return OnVisit(node); }
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"

 private:
  template <class Class>
  bool OnVisit(Class&) {
    return false;
  }
  bool OnVisit(RqExpr&) {
    ++m_numExprs;
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

template <class Tour>
unsigned long CodeOf(Tour tour) {
  try {
    tour();
  } catch (const ErrorMessage& message) {
    return message.GetCode();
  }
  return 0;
}

TEST(Tours, EndWhenTheJobIsCancelled) {
  const Owned pTree(Row({Int(1), Row({Int(2)}), Int(3)}));
  const KXJobToken token;
  const KXJobScope scope(token);
  ExprLog log;
  log.m_onRow = [&](RqExprColumnListOrdered& row) {
    if (&row != pTree.get()) token.Cancel();
  };
  EXPECT_EQ(CodeOf([&] { pTree->TourExpr(log); }), kMsgJobCancelled);
  EXPECT_EQ(log.m_visited, "[1[") << "the next operand is the next cancellation point";
  NodeLog nodeLog;
  EXPECT_EQ(CodeOf([&] { pTree->Tour(nodeLog); }), kMsgJobCancelled);
  EXPECT_EQ(nodeLog.m_numExprs, 0);
}

TEST(Tours, EndInAnErrorWhenTheStackRunsLow) {
  Owned pTree(Int(1));
  for (int i = 0; i < 100'000; ++i) pTree.reset(Row({pTree.release()}));
  RunOnSmallStack([&] {
    ExprLog log;
    EXPECT_EQ(CodeOf([&] { pTree->TourExpr(log); }), kMsgStackLow);
  });
}

// Types in payloads

TEST(TypeInfo, TravelsByName) {
  for (int type = 0; type < KXMaxType; ++type) {
    SCOPED_TRACE(type);
    const KXTypeInfo typeInfo(static_cast<KXDataType>(type), -7 * type, static_cast<short>(3 - type), type % 2);
    ByteVector bytes;
    RqExpr::ToByteVector_KXTypeInfo(bytes, typeInfo);
    KXTypeInfo copy;
    EXPECT_EQ(RqExpr::FromByteVector_KXTypeInfo(bytes.data(), copy), bytes.data() + bytes.size());
    EXPECT_EQ(copy, typeInfo);
  }
  ByteVector bytes;
  RqExpr::ToByteVector_KXTypeInfo(bytes, KXTypeInfo(KXDoubleData, 1, 2, 1));
  KXString name;
  const const_iterator behindName = DataBlobUtil::FromByteVector(bytes.data(), name, true);
  EXPECT_EQ(name, L"DOUBLE");
  EXPECT_EQ(bytes.data() + bytes.size() - behindName, 4 + 2 + 1);
}

}  // namespace
