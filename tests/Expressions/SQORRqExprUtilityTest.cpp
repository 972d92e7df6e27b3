#include "Query/Optimizer/Request/Expressions/SQORRqExprUtility.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "Expressions/ExprSamples.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "TestUtil.h"

namespace {

/// An aggregate of any operands, whose kind is borrowed.
class FakeAggr final : public RqExpr {
 public:
  explicit FakeAggr(RqNodeType_e type, std::initializer_list<RqExpr*> operands = {}) : m_type(type) {
    for (RqExpr* const pOperand : operands) AddChild(pOperand);
  }
  FakeAggr(const FakeAggr& rhs, bool bNewIDs, bool bDeepCopy) : RqExpr(rhs, bNewIDs, bDeepCopy), m_type(rhs.m_type) {}

  bool m_bComparisonFails = false;

  RqNodeType_e GetObjectType() const override { return m_type; }
  bool IsAggr() const override { return true; }
  bool IsShallowLessThan(const RqExpr& rhs) const override {
    if (m_bComparisonFails) throw std::runtime_error("comparison");
    return RqExpr::IsShallowLessThan(rhs);
  }
  RqExpr* ShallowCopy() const override { return new FakeAggr(*this, true, false); }
  RqNode* DeepCopy(bool bNewIDs) const override { return new FakeAggr(*this, bNewIDs, true); }
  using RqExpr::Accept;
  bool Accept(AVisitorRqExpr&) override { return true; }

 private:
  RqNodeType_e m_type;
};

// ---------------------------------------------------------------------------------------------------------------------
// Content maps

TEST(ContentMap, FindsByStructureAndTheLastOfEqualRows) {
  const Heap<RqExpr> a(Col(L"a")), alsoA(Col(L"a")), b(Col(L"b")), c(Col(L"c")), physical(Int(1));
  SourceContentMap rows;
  for (RqExpr* const pLogical : Exprs(a.Get(), b.Get(), alsoA.Get(), nullptr))
    rows.push_back({pLogical, physical.Get(), nullptr});
  SourceContentMapWrapper wrapper;
  wrapper.InstallContentMap(rows);
  const SourceContentMap& map = wrapper.GetContentMap();
  int index = -1;
  EXPECT_TRUE(map.FindMapping(a.Get(), index));
  EXPECT_EQ(index, 2);
  EXPECT_FALSE(map.FindMapping(c.Get(), index));
  EXPECT_EQ(index, 2);
  EXPECT_EQ(rows[0].GetLeafTranslationExpr(true), physical.Get());
  EXPECT_EQ(rows[0].GetLeafTranslationExpr(false), a.Get());

  // Another map takes the place of the first one, index and all.
  wrapper.InstallContentMap(SourceContentMap{{c.Get(), nullptr, nullptr}});
  EXPECT_TRUE(map.FindMapping(c.Get(), index));
  EXPECT_EQ(index, 0);
  EXPECT_FALSE(map.FindMapping(a.Get(), index));
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  {
    SourceContentMapWrapper owner;
    owner.recordDummyConstant(Int(7));
  }
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore);
}

TEST(ContentMap, SecondOperandOfAnAggregateTakesNoPart) {
  const FakeAggr key(kRqExprAggrSum, {Col(L"a"), nullptr});
  SourceContentMapWrapper wrapper;
  wrapper.InstallContentMap(SourceContentMap{{&key, nullptr, nullptr}});
  FakeAggr sought(kRqExprAggrSum, {Col(L"a"), Int(5)});
  int index = -1;
  EXPECT_TRUE(wrapper.GetContentMap().FindMapping(&sought, index));
  EXPECT_EQ(Text(sought.GetIthOperand(1)), "5") << "back in its place";
  EXPECT_EQ(sought.GetIthOperand(1)->GetParent(), &sought);
  // Lost when the comparison fails, and nothing leaks.
  sought.m_bComparisonFails = true;
  EXPECT_THROW(wrapper.GetContentMap().FindMapping(&sought, index), std::runtime_error);
  EXPECT_EQ(sought.GetIthOperand(1), nullptr);
}

TEST(ContentMapDeathTest, WithoutIndexOrExpression) {
  int index = 0;
  EXPECT_DEATH(SourceContentMap().FindMapping(nullptr, index), "m_pExprMap");
  SourceContentMapWrapper wrapper;
  wrapper.InstallContentMap({});
  EXPECT_DEATH(wrapper.GetContentMap().FindMapping(nullptr, index), "pExpr");
}

// ---------------------------------------------------------------------------------------------------------------------
// Conjuncts

TEST(ConjunctUtility, InvertsEachComparison) {
  const std::pair<RqExprCond*, const char*> rows[] = {
      {new RqExprCondEquality(Col(L"a"), Int(1), true), "T1.a <> 1"},
      {new RqExprCondNotEqual(Col(L"a"), Int(1)), "T1.a = 1"},
      {new RqExprCondLess(Col(L"a"), Int(1)), "T1.a >= 1"},
      {new RqExprCondLessEqual(Col(L"a"), Int(1)), "T1.a > 1"},
      {new RqExprCondGreater(Col(L"a"), Int(1)), "T1.a <= 1"},
      {new RqExprCondGreaterEqual(Col(L"a"), Int(1)), "T1.a < 1"},
      {new RqExprCondIsNull(Col(L"a"), false), ""},
      {new RqExprCondNot(new RqExprCondLess(Col(L"a"), Int(1))), ""},
  };
  for (const auto& [pCond, text] : rows) {
    const Heap<RqExprCond> cond(pCond);
    const std::string before = TextOf(pCond);
    SCOPED_TRACE(before);
    const Heap<RqExprCond> inverted(ConjunctUtility::InvertComparisonPredicate(pCond));
    EXPECT_EQ(TextOf(inverted.Get()), text);
    EXPECT_TRUE(inverted ? !pCond->GetIthOperand(0) : TextOf(pCond) == before);
  }
}

/// Kinds without their prefix, operands in parentheses.
std::string Kinds(const RqNode* pNode) {
  constexpr std::string_view kPrefix = "RqExpr";
  std::string text(GetRqNodeTypeName(pNode->GetObjectType()).substr(kPrefix.size()));
  for (int i = 0; i < pNode->GetNumChildren(); ++i) {
    text += (i ? "," : "(") + (pNode->GetIthChild(i) ? Kinds(pNode->GetIthChild(i)) : "-");
  }
  return pNode->GetNumChildren() > 0 ? text + ")" : text;
}

TEST(ConjunctUtility, TakesNotsOutOverRankTests) {
  const auto top = [] { return new FakeAggr(kRqExprAggrTopN); };
  const auto bottom = [] { return new FakeAggr(kRqExprAggrBottomN); };
  const auto other = [] { return new FakeAggr(kRqExprAggrRank); };
  const auto isNull = [](RqExpr* pExpr) { return new RqExprCondIsNull(pExpr, false); };
  const auto lessEqual = [](RqExpr* pExpr) { return new RqExprCondLessEqual(pExpr, Int(3)); };
  const auto no = [](RqExprCond* pCond) { return new RqExprCondNot(pCond); };
  const std::pair<RqExprCond*, const char*> rows[] = {
      {no(lessEqual(top())), "CondGreater(AggrTopN,IntegerLiteral)"},
      {no(lessEqual(bottom())), "CondGreater(AggrBottomN,IntegerLiteral)"},
      {no(lessEqual(other())), "CondNot(CondLessEqual(AggrRank,IntegerLiteral))"},
      // A Not that is not the root.
      {new RqExprCondOr(no(lessEqual(top())), isNull(Int(1))),
       "CondOr(CondGreater(AggrTopN,IntegerLiteral),CondIsNull(IntegerLiteral))"},
      // Left alone for the connective.
      {no(new RqExprCondAnd(lessEqual(top()), isNull(Int(1)))),
       "CondNot(CondAnd(CondLessEqual(AggrTopN,IntegerLiteral),CondIsNull(IntegerLiteral)))"},
      // No comparison to turn round: the Not goes all the same.
      {no(isNull(top())), "CondIsNull(AggrTopN)"},
      {no(no(lessEqual(top()))), "CondGreater(AggrTopN,IntegerLiteral)"},
  };
  for (const auto& [pCond, kinds] : rows) {
    SCOPED_TRACE(kinds);
    RqHandleNode holder;
    KXNodeVector<Heap<RqExprCond>> conjuncts;
    conjuncts.emplace_back(pCond);
    ConjunctUtility::UnNegateTopNBottomNConjuncts(conjuncts, holder);
    EXPECT_EQ(Kinds(conjuncts[0].Get()), kinds);
    EXPECT_EQ(conjuncts[0]->GetParent(), nullptr);
  }
}

TEST(ConjunctUtilityDeathTest, NotOfNothing) {
  Heap<RqExprCond> conjunct(new RqExprCondNot);
  conjunct->SetNumOperands(1);
  RqHandleNode holder;
  EXPECT_DEATH(ConjunctUtility::UnNegateTopNBottomNConjunct(conjunct, holder), "innerCond != NULL");
}

TEST(RqExprUtility, RemovesExternalJoiningIndexesEverywhere) {
  const auto external = [](RqExpr* pConformsTo) {
    auto* const pData = new RqExprExternalData(pConformsTo, nullptr, nullptr, nullptr, nullptr, {});
    pData->AddExternalJoiningIndex({});
    return pData;
  };
  RqExprExternalData* const pInner = external(Int(1));
  RqExprExternalData* const pOuter = external(pInner);
  const Heap<RqExpr> root(Row({Int(1), nullptr, pOuter}));
  RqExprUtility::RemoveExternalJoiningIndexes(root.Get());
  EXPECT_TRUE(pInner->GetExternalJoiningIndexVector().empty());
  EXPECT_TRUE(pOuter->GetExternalJoiningIndexVector().empty());
}

// ---------------------------------------------------------------------------------------------------------------------
// Text

TEST(ExprTexts, OfContainers) {
  const Heap<RqExpr> a(Col(L"a")), b(Int(1));
  EXPECT_EQ(ToString(LogicalToPhysical{a.Get(), nullptr, b.Get()}, nullptr), L"T1.a ->  by 1");
  EXPECT_EQ(ToString(std::vector<LogicalToPhysical>{{a.Get(), b.Get(), nullptr}, {}}, nullptr), L"[T1.a -> 1,  -> ]");
  OwnedRqExprVector owned;
  owned.push_back(Int(2));
  owned.push_back(Int(1));
  EXPECT_EQ(ToString(owned, nullptr), L"[2, 1]");
  OwnedEquivRqPtrSet<RqExprSet> ownedSet;
  ownedSet.insert(Int(2));
  ownedSet.insert(Int(1));
  EXPECT_EQ(ToString(ownedSet, nullptr), L"[1, 2]");
  EXPECT_EQ(ToString(RqExprSet{a.Get(), b.Get()}, nullptr), L"[T1.a, 1]");
}

}  // namespace
