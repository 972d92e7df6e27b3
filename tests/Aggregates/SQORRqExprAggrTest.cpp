#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"

#include <gtest/gtest.h>

#include <string>

#include "Aggregates/AggrLanguage.h"
#include "CaseFile.h"
#include "Host/KXThread.h"
#include "HostMemory/MemoryGateway.h"
#include "Node/SmallStack.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "SQORRqNodeFactory.h"
#include "TestUtil.h"

namespace {

const RqEquivalence kEquivalence;
const RqShallowLessThan kShallow;

TEST(AggrBreaks, AreAligned) {
  for (const TextCase& c : CasesOf("Aggregates/breaks.txt")) {
    SCOPED_TRACE(c.m_input);
    const auto [text, control] = c.Split(" to ");
    const auto aggr = AggrOf(text);
    if (text != c.m_input) aggr->SetControlBreak(Break(control));
    EXPECT_EQ(TextOf(*aggr), c.m_expected);
    EXPECT_TRUE(!aggr->HasDistinctComputeBreak() || aggr->IsDistinctAggregation());
    aggr->InstantiateDistinctComputeBreak();
    EXPECT_EQ(TextOf(*aggr), c.m_expected) << "once there is one";
    const Heap<RqNode> copy(aggr->DeepCopy(true));  // every column has its place and its parent
    EXPECT_EQ(TextOf(*copy), c.m_expected);
    aggr->SetComputeBreak(nullptr);
    aggr->SetControlBreak(nullptr);
    EXPECT_EQ(aggr->GetNumOperands(), 3);
  }
}

TEST(AggrBreaks, LoseTheJoiningIndexesOfExternalData) {
  const auto external = [] {
    auto* const pData = new RqExprExternalData(nullptr, nullptr, nullptr, nullptr, nullptr, {});
    pData->AddExternalJoiningIndex({});
    return pData;
  };
  RqExprExternalData *const pControl = external(), *const pCompute = external();
  const auto aggr = AggrOf("sum(x)");
  aggr->SetControlBreak(Columns({Named('a'), pControl}));
  aggr->SetComputeBreak(Columns({Named('b'), pCompute}));
  EXPECT_TRUE(pControl->GetExternalJoiningIndexVector().empty() && pCompute->GetExternalJoiningIndexVector().empty());
}

TEST(AggrDeathTest, OfWhatCannotBeMade) {
  EXPECT_DEATH(AggrOf("sum(distinct x at a)"), "pComputeBreak == NULL");
  EXPECT_DEATH(RqExprAggrSum(nullptr, nullptr, Break("a"), false), "GetAggrExpr");
  EXPECT_DEATH(RqExprAggrSum(nullptr, nullptr, nullptr, false).IsConstant(), "GetAggrExpr");
  EXPECT_DEATH(RqExprNoAggregate(nullptr).IsConstant(), "GetIthOperand\\(kAggrExpr\\)");
}

/// A digit a field, those that travel first.
std::string MarksOf(const RqExprAggr& aggr) {
  std::string marks = std::to_string(aggr.GetShareBase().size()) + std::to_string(aggr.GetGTDegenDims().size());
  for (const auto mark :
       {&RqExprAggr::IsBuiltInExecutionOnly, &RqExprAggr::IsMashupsPinnedExpr, &RqExprAggr::IsOverrideAsScalar,
        &RqExprAggr::IsRewrittenDistinct, &RqExprAggr::IsSQL99Aggregation, &RqExprAggr::IsComputeBreakRedundant,
        &RqExprAggr::IsNoAggrsInAggregateBy, &RqExprAggr::IsMeasurePredicateTransform}) {
    marks += (aggr.*mark)() ? '1' : '0';
  }
  return marks;
}

TEST(Aggr, MarksOfEachKind) {
  for (const TreeSample& sample : AggrSamples()) {
    const Heap<RqExprAggr> aggr(static_cast<RqExprAggr*>(sample.m_pNode));
    SCOPED_TRACE(sample.m_plain);
    const RqNodeType_e type = aggr->GetObjectType();
    const bool bKeeps = type >= kRqExprAggrSum && type <= kRqExprAggrMax && type != kRqExprAggrCountStar;
    for (const bool bDistinct : {true, false}) {
      aggr->SetDistinctAggregation(bDistinct);
      aggr->SetSQL99Aggregation(true);
      EXPECT_EQ(aggr->IsSQL99Aggregation(), bKeeps && (!bDistinct || type == kRqExprAggrCount));
    }
    // One that is still to be read has a text, and is asked what it is.
    const Heap<RqExpr> empty(static_cast<RqExpr*>(MakeEmptyRqNode(type)));
    EXPECT_EQ(TextOf(*empty).find('?'), std::string::npos);
    EXPECT_EQ(empty->IsAggr(), !aggr->IsAggrWrapper());
    const std::string marks = MarksOf(*aggr);
    EXPECT_EQ(MarksOf(*Copy(*aggr)), marks);
    // What a rewriting marks while it runs does not travel.
    EXPECT_EQ(MarksOf(*ReadBack(*aggr)), marks.substr(0, 1) + "0" + marks.substr(2, 4) + "0000");
  }
  EXPECT_FALSE(AggrOf("sum(1)")->IsConstant());
  EXPECT_TRUE(AggrOf("sum(null)")->IsConstant() && AggrOf("none(1)")->IsConstant());
  const auto sum = AggrOf("sum(x)");
  EXPECT_FALSE(sum->IsTargetSupportedAggr());
  sum->MarkTargetType(ServerInfo::kPostgreSQL);
  EXPECT_TRUE(sum->IsTargetSupportedAggr());
  sum->SetBuiltInExecutionOnly(true);
  EXPECT_FALSE(sum->IsTargetSupportedAggr());
}

std::string Comparison(const RqExpr& left, const RqExpr& right) {
  EXPECT_EQ(kEquivalence(left, right), kEquivalence(right, left));
  EXPECT_FALSE(right.IsLessThan(left, kShallow));
  const bool bBefore = left.IsLessThan(right, kShallow), bEquivalent = kEquivalence(left, right);
  return std::string(bBefore ? "before" : "") + (bBefore && bEquivalent ? ", " : "") +
         (bEquivalent ? "equivalent" : "");
}

TEST(AggrComparison, OfPairs) {
  for (const TextCase& c : CasesOf("Aggregates/order.txt")) {
    const auto [left, right] = c.Split(" | ");
    EXPECT_EQ(Comparison(*ExprOf(left), *ExprOf(right)), c.m_expected) << c.m_input;
  }
  const auto rank = [](RqSortSpec::SortDirection direction, bool bDense, char x) {
    return RqExprAggrRank(Named(x), {direction}, nullptr, nullptr, false, bDense, false);
  };
  const auto running = [](RqSortSpec::SortDirection direction, int column) {
    Heap<RqExprAggrRunningSum> aggr(new RqExprAggrRunningSum(Named('x'), nullptr, nullptr, false));
    aggr->SetSortSpec({direction}, {column});
    return aggr;
  };
  const auto sum = AggrOf("sum(x by a)");
  EXPECT_EQ(Comparison(*sum, *Heap<RqExpr>(Marked(AggrOf("sum(x by a)").Release()))), "equivalent");
  EXPECT_EQ(Comparison(rank(RqSortSpec::kAsc, true, 'x'), rank(RqSortSpec::kDesc, false, 'x')), "before, equivalent");
  EXPECT_EQ(Comparison(rank(RqSortSpec::kAsc, true, 'y'), rank(RqSortSpec::kDesc, true, 'x')), "before");
  EXPECT_EQ(Comparison(rank(RqSortSpec::kAsc, true, 'x'), rank(RqSortSpec::kAsc, false, 'x')), "equivalent");
  EXPECT_EQ(Comparison(*running(RqSortSpec::kAsc, 2), *running(RqSortSpec::kDesc, 1)), "before");
  EXPECT_EQ(Comparison(*running(RqSortSpec::kAsc, 1), *running(RqSortSpec::kAsc, 2)), "before");
}

TEST(AggrComparison, ByShareBase) {
  const VoidID first(kTIDAAttribute, 1U), second(kTIDAAttribute, 2U);
  const RqEquivalenceShareBase equivalence;
  const RqShallowLessThanShareBase shallow;
  const auto sum = [](const VoidIDVector& shareBase) {
    const auto aggr = AggrOf("sum(x)");
    aggr->SetShareBase(shareBase);
    return aggr;
  };
  const Heap<RqExprAggr> ascending[] = {sum({}), sum({first}), sum({first, second}), sum({second})};
  for (const auto& left : ascending) {
    for (const auto& right : ascending) {
      EXPECT_EQ(equivalence(*left, *right), &left == &right);
      EXPECT_EQ(shallow(*left, *right), &left < &right);
      // The rule holds at every depth, through wrappers too.
      const auto within = [](const RqExprAggr& aggr) {
        return RqExprUnaryMinus(new RqExprNoAggregate(aggr.DeepExprCopy(true)));
      };
      EXPECT_EQ(equivalence(within(*left), within(*right)), &left == &right);
      EXPECT_EQ(within(*left).IsLessThan(within(*right), shallow), &left < &right);
      EXPECT_EQ(Comparison(within(*left), within(*right)), "equivalent");
    }
  }
  EXPECT_TRUE(shallow(*AggrOf("count(x)"), *ascending[1])) << "the share base before the kind";
  const RqExprDivide root(ascending[2]->DeepExprCopy(true), ascending[1]->DeepExprCopy(true));
  RqExprVector found;
  RqExpr::FindEquivalentSubExprs(const_cast<RqExprDivide*>(&root), *ascending[1], found);
  EXPECT_TRUE(found.size() == 1 && found[0] == root.GetIthOperand(1));
}

TEST(AggrSweeps, SimplifyConstantExpr) {
  for (const TextCase& c : CasesOf("Aggregates/simplify.txt")) {
    const Heap<RqExpr> simple(RqExprAggr::SimplifyConstantExpr(ExprOf(c.m_input).Release()));
    EXPECT_EQ(TextOf(*simple), c.m_expected);
    EXPECT_EQ(simple->GetParent(), nullptr);
  }
  EXPECT_EQ(RqExprAggr::SimplifyConstantExpr(nullptr), nullptr);
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  RqExpr* pChain = Int(1);
  for (int i = 0; i < 100'000; ++i) pChain = new RqExprUnaryMinus(pChain);
  RunOnSmallStack([&] { EXPECT_EQ(CodeRaisedBy([&] { RqExprAggr::SimplifyConstantExpr(pChain); }), kMsgStackLow); });
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore) << "deleted";
}

TEST(AggrSweeps, ReplaceAllOccurrences) {
  MemoryGateway gateway;
  const VoidID sales = gateway.MakeObject<MemoryEntity>(10U, L"Sales").GetID();
  const RqAttribute amount(&gateway, gateway.MakeObject<MemoryAttribute>(11U, L"Amount", sales).GetID());
  RqExprAggrSum tree(new RqExprDivide(amount.DeepExprCopy(true), new RqExprUnaryMinus(amount.DeepExprCopy(true))),
                     nullptr, nullptr, false);
  Heap<RqExpr> replacement = ExprOf("abs(x)");
  const RqExpr* const pDonated = replacement.Get();
  RqExprAggr::ReplaceAllOccurrences(&gateway, &tree, amount, replacement);
  EXPECT_EQ(TextOf(tree), "sum(abs(x) / -abs(x))");
  EXPECT_EQ(tree.GetAggrExpr()->GetIthOperand(1)->GetIthOperand(0), pDonated) << "the last one is the donated one";
  EXPECT_FALSE(tree.GetAggrExpr()->GetIthOperand(0)->IsCopyOf(*pDonated) || replacement);

  replacement = Int(7);
  const auto messageFor = [&](ARpGateway* pRp, const VoidID& id) -> std::string {
    try {
      RqExprAggr::ReplaceAllOccurrences(pRp, &tree, RqAttribute(&gateway, id), replacement);
    } catch (const ErrorMessage& error) {
      return std::to_string(error.GetCode()) + ": " + error.GetText().ToUTF8();
    }
    return "";
  };
  EXPECT_EQ(messageFor(&gateway, amount.GetID()),
            "15008: The attribute Sales.Amount does not occur in the expression: sum(abs(x) / -abs(x))");
  EXPECT_EQ(messageFor(nullptr, VoidID(kTIDAAttribute, 99U)),
            "15008: The attribute . does not occur in the expression: sum(abs(x) / -abs(x))");
  EXPECT_TRUE(replacement);
}

}  // namespace
