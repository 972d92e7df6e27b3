#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "Aggregates/AggrLanguage.h"
#include "Blocks/BlockSamples.h"
#include "CaseFile.h"
#include "Host/SUCompatFlag.h"
#include "Node/SmallStack.h"
#include "TestUtil.h"

namespace {

/// Whether it is rendered in a complex way, can be split, can be split onto an equivalent source, is distributive,
/// functional, sorted. A letter an answer: T, F, or n for one that is true unless the aggregate is distinct.
std::string AnswersOf(const RqExprAggr& plain, const RqExprAggr& distinct) {
  std::string answers;
  for (const auto question : {&RqExprAggr::IsComplexRenderAggr, &RqExprAggr::SupportsAggrSplitting,
                              &RqExprAggr::SupportsEquivalentAggrSplitting, &RqExprAggr::IsDistributiveAggr,
                              &RqExprAggr::IsFunctionalAggregate, &RqExprAggr::IsSortDependent}) {
    answers += !(plain.*question)() ? 'F' : (distinct.*question)() ? 'T' : 'n';
  }
  return answers;
}

TEST(AggrKinds, Answers) {
  std::map<std::string, std::string> kinds;
  for (const AggrKind& kind : AggrKinds()) {
    const auto aggr = AggrOf(kind.m_name + "(x)"), distinct = AggrOf(kind.m_name + "(distinct x)");
    kinds[AnswersOf(*aggr, *distinct)] += kind.m_name + " ";
  }
  EXPECT_EQ(kinds, (std::map<std::string, std::string>{
                       {"FnnnFF", "sum "},
                       {"TnnnFF", "count "},
                       {"TnnFFF", "count_star "},
                       {"TnFFFF", "avg "},
                       {"TFFFFF", "Stddev_SAMP Median "},
                       {"FTTnFF", "min max nullifnotunique "},
                       {"FnnFFF", "ListAgg NullAgg "},
                       {"FTTFFF",
                        "first last subtotal REPORT_AGGREGATE Report_Sum Report_Min Report_Max Report_Count "
                        "Report_Avg "},
                       {"TFFFTF", "percentile ntile topN bottomN DENSE_RANK "},
                       {"TFFFTT", "rsum rcount rmax rmin mavg msum "},
                       {"FFFFFF", "rownum "}}));
  const auto wrapper = AggrOf("none(sum(x))"), distinct = AggrOf("none(sum(distinct x))");
  EXPECT_EQ(AnswersOf(*wrapper, *distinct), "FTTFFF");
}

TEST(AggrKinds, DirectionsOfColumns) {
  const SortDirectonVector down2(2, RqSortSpec::kDesc), mixed{RqSortSpec::kAsc, RqSortSpec::kDesc};
  const auto rank = AggrOf("DENSE_RANK(x)");
  rank->SetAggrExpr(Named('y'));
  EXPECT_EQ(TextOf(*rank), "DENSE_RANK([y desc])") << "in a list of its own";
  EXPECT_EQ(RqExprAggrRowNum(Named('x'), Break("a"), Break("b"), false).GetSortDirections(), down2) << "a is copied";
  EXPECT_EQ(RqExprAggrRowNum(Named('x'), mixed, nullptr, Break("ab"), false).GetSortDirections(), mixed);
  for (RqExpr* const pSingle : {Named('x'), static_cast<RqExpr*>(nullptr)}) {
    EXPECT_EQ(RqExprAggrRank(pSingle, mixed, nullptr, nullptr, false, true, true).GetSortDirections(), mixed);
  }
  EXPECT_DEATH(RqExprAggrRank(Row({Int(1)}), mixed, nullptr, nullptr, false, true, true),
               "pExpr->GetNumOperands\\(\\) == sortDirections.size\\(\\)");
  EXPECT_DEATH(RqExprAggrRowNum(Named('x'), mixed, nullptr, nullptr, false), "pComputeBreak && ");
  EXPECT_DEATH(RqExprAggrRowNum(Named('x'), mixed, nullptr, Break("a"), false), "pComputeBreak && ");
}

TEST(AggrKinds, DamageInBytesIsNamed) {
  const auto damaged = [](RqExprAggr* pAggr, std::initializer_list<RqExpr*> operands) {
    const Heap<RqExprAggr> aggr(pAggr);
    aggr->SetNumOperands(0);
    for (RqExpr* const pOperand : operands) aggr->AddChild(pOperand);
    EXPECT_EQ(CodeRaisedBy([&] { ReadBack(*aggr); }), kMsgNodeMalformed) << TextOf(pAggr);
  };
  const auto unsorted = [](auto* pAggr) { return pAggr->SetSortSpec({RqSortSpec::kAsc}, {1, 2}), pAggr; };
  damaged(AggrOf("DENSE_RANK(x)").Release(), {Row({Int(1), Int(2)}), nullptr, nullptr});  // one direction
  damaged(new RqExprAggrRank, {Int(1), nullptr, nullptr});
  damaged(unsorted(new RqExprAggrRunningMin), {Int(1), nullptr, nullptr});
  damaged(unsorted(new RqExprAggrMovingSum), {Int(1), nullptr, nullptr, Int(9)});
  damaged(new RqExprAggrMovingSum, {Int(1), nullptr, nullptr});
  damaged(new RqExprAggrSum, {Int(1), Row({Int(1)}), nullptr});
  damaged(new RqExprAggrSum, {Int(1), nullptr, Int(2)});
  damaged(new RqExprAggrSum, {nullptr, nullptr, nullptr});
  damaged(new RqExprAggrIf, {Int(1), nullptr, nullptr, Int(1)});
  damaged(new RqExprNoAggregate, {nullptr, nullptr, nullptr});
  damaged(new RqExprVariableReplace, {Int(1), nullptr, nullptr, Int(1), Int(1)});
  damaged(new RqExprVariableReplace, {Int(1), nullptr, nullptr, Str(L"v")});
  damaged(new RqExprQualify, {Int(1), nullptr, nullptr, Int(1)});
}

TEST(AggrKinds, ReportAggregates) {
  const Heap<RqExprColumnList> columns(Break("c"));
  const ReportAggrCompatFlags flags(nullptr);
  const auto total = [&](const RqExprAggr& aggr, bool bAsDetail) {
    return TextOrError([&] {
      const Heap<RqExprAggr> report(aggr.CreateReportAggr(*columns, bAsDetail, flags));
      return report ? TextOf(*report) : "-";
    });
  };
  for (const TextCase& c : CasesOf("Aggregates/reports.txt")) {
    const auto aggr = AggrOf(c.m_input);
    const std::string report = total(*aggr, false), detail = total(*aggr, true);
    EXPECT_EQ(report + (detail == report ? "" : "\n" + detail), c.m_expected) << c.m_input;
  }
  EXPECT_DEATH(total(*AggrOf("nullifnotunique(x)"), false), "SQORRqExprAggrPlain.*logic error");

  const auto common = [](RqNodeType_e type, bool bDistinct) {
    const Heap<RqExprAggr> report(CreateReportCommon(type, bDistinct));
    return report ? report->GetObjectType() : kRqNullNode;
  };
  for (const auto& [type, plain, distinct] : {std::tuple(kRqExprAggrSum, kRqExprAggrReportSum, kRqNullNode),
                                              {kRqExprAggrCount, kRqExprAggrReportSum, kRqNullNode},
                                              {kRqExprAggrMin, kRqExprAggrReportMin, kRqExprAggrReportMin},
                                              {kRqExprAggrMax, kRqExprAggrReportMax, kRqExprAggrReportMax},
                                              {kRqExprAggrAvg, kRqNullNode, kRqNullNode},
                                              {kRqExprAggrCountStar, kRqNullNode, kRqNullNode}}) {
    EXPECT_TRUE(common(type, false) == plain && common(type, true) == distinct) << GetRqNodeTypeName(type);
  }
  SUCompatFlag::SetBool(L"TELM_UNDO_14335601", true);
  EXPECT_EQ(common(kRqExprAggrAvg, true), kRqExprAggrReportAvg);
  SUCompatFlag::Reset(L"TELM_UNDO_14335601");
}

TEST(AggrKinds, SourceAndPartials) {
  const Heap<RqExprColumnList> breaks(Break("g"));
  for (const TextCase& c : CasesOf("Aggregates/partials.txt")) {
    const auto aggr = AggrOf(c.m_input);
    const Heap<RqList> list(List({Named('p')}));
    const Heap<RqExpr> source(aggr->GetSourceAggregator(breaks.Get()));
    const Heap<RqExprAggr> combining(aggr->GetPartialsAggregator(list->GetProjection()->GetIthColumn(0), *list));
    EXPECT_EQ(
        TextOf(*source) + "\n" + Nested(combining.Get()) + (combining->IsRewrittenDistinct() ? ", rewritten" : ""),
        c.m_expected);
  }
  EXPECT_DEATH(AggrOf("first(x)")->GetSourceAggregator(nullptr), "SQORRqExprAggr.cpp.*logic error");
  EXPECT_DEATH(AggrOf("nullifnotunique(x)")->GetPartialsAggregator(nullptr, *Heap<RqList>(List({}))),
               "SQORRqExprAggr.cpp.*logic error");
}

// ---------------------------------------------------------------------------------------------------------------------
// Wrappers

TEST(AggrWrapper, SpeaksForItsKernel) {
  auto* const pSum = new RqExprAggrSum(Named('x'), Break("a"), Break("ab"), false);
  RqExprNoAggregate wrapper(new RqExprNoAggregate(pSum));
  wrapper.SetShareBase({VoidID(kTIDAAttribute, 1U)});
  EXPECT_TRUE(wrapper.IsShareBase() && pSum->IsShareBase());
  wrapper.SetShareBase({});
  wrapper.SetControlBreak(Break("b"));
  EXPECT_EQ(TextOf(pSum), "sum(x by b at_distinct b, a)");
  EXPECT_EQ(TextOf(wrapper.GetIthOperand(RqExprAggr::kControlBreak)), "[ b] ");
  wrapper.SetComputeBreak(Break("d"));
  EXPECT_EQ(wrapper.GetComputeBreak(), pSum->GetComputeBreak()) << "wanted: the kernel keeps its own";
  EXPECT_EQ(TextOf(wrapper.GetIthOperand(RqExprAggr::kComputeBreak)), "[ b, d] ");
  wrapper.SetAggrExpr(Named('y'));
  EXPECT_EQ(TextOf(wrapper.GetAggrExpr()), "y");
  pSum->SetComputeBreak(nullptr);
  pSum->SetDistinctAggregation(true);
  wrapper.InstantiateDistinctComputeBreak();
  EXPECT_EQ(TextOf(pSum), "sum(distinct y by b at_distinct b, y)");

  RqExprMashupsNoAggregate mashup(AggrOf("sum(x by a)").Release());
  mashup.SetControlBreak(Break("b"));
  mashup.SetComputeBreak(Break("b"));
  EXPECT_TRUE(TextOf(mashup) == "MASHUPS_NOAGGREGATE(sum(x by a))" && !mashup.GetIthOperand(1));
}

TEST(AggrWrapper, WithoutAKernel) {
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  {
    RqExprNoAggregate wrapper(ExprOf("filter(x, c)").Release());
    EXPECT_FALSE(wrapper.IsAggr() || wrapper.IsShareBase() || wrapper.GetControlBreak() || wrapper.GetComputeBreak());
    EXPECT_EQ(wrapper.GetAggrExpr(), wrapper.GetFirstArg());
    wrapper.SetShareBase({VoidID()});
    EXPECT_EQ(CodeRaisedBy([&] { wrapper.GetKernelExpr(); }), 22038U);
    EXPECT_EQ(CodeRaisedBy([&] { wrapper.SetAggrExpr(Int(1)); }), 22038U);
    EXPECT_EQ(CodeRaisedBy([&] { wrapper.SetControlBreak(Break("a")); }), 22038U);
    EXPECT_EQ(CodeRaisedBy([&] { wrapper.InstantiateDistinctComputeBreak(); }), 22038U);
    EXPECT_EQ(CodeRaisedBy([&] { wrapper.PullupAggr(false); }), 22038U);
    EXPECT_EQ(TextOf(wrapper), "FILTER(x USING c = 1)");
  }
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore) << "what was given to it is deleted";
}

TEST(AggrWrapper, NestsDeeplyWithoutStack) {
  Heap<RqExprAggr> chain = AggrOf("sum(x by a)");
  const RqExprColumnList* const pControl = chain->GetControlBreak();
  for (int i = 0; i < 100'000; ++i) chain = new RqExprNoAggregate(chain.Release());
  RunOnSmallStack([&] {
    EXPECT_TRUE(chain->IsAggr() && !chain->IsShareBase() && !chain->GetComputeBreak());
    EXPECT_EQ(TextOf(chain->GetAggrExpr()), "x");
    EXPECT_EQ(chain->GetControlBreak(), pControl);
  });
}

TEST(AggrWrapper, PullupAggr) {
  for (const TextCase& c : CasesOf("Aggregates/pullups.txt")) {
    const Heap<RqExpr> root = ExprOf(c.m_input);
    auto& wrapper = static_cast<RqExprAggrWrapper&>(*root->GetIthOperand(0));
    wrapper.SetComputeBreak(Break("e"));
    wrapper.PullupAggr(c.m_input.ends_with("deep"));
    EXPECT_EQ(TextOf(*root), c.m_expected);
  }
}

TEST(AggrWrapper, FiltersAreDistributedAndUnnested) {
  const Heap<RqExpr> root = ExprOf("abs(filter(div(sum(x), max(y)), c))");
  auto* const pFilter = static_cast<RqExprAggrIf*>(root->GetIthOperand(0));
  auto* const pSum = static_cast<RqExprAggr*>(pFilter->GetFirstArg()->GetIthOperand(0));
  pFilter->Distribute({pSum, static_cast<RqExprAggr*>(pFilter->GetFirstArg()->GetIthOperand(1))});
  EXPECT_EQ(TextOf(*root), "abs(FILTER(sum(x) USING c = 1) / FILTER(max(y) USING c = 1))");
  EXPECT_TRUE(static_cast<RqExprAggrIf*>(pSum->GetParent())->IsForSecurityFilter());

  Heap<RqExprAggr> filter = AggrOf("filter(filter(filter(x, a), b), c)");
  for (int i = 0; i < 2; ++i) {
    static_cast<RqExprAggrIf&>(*filter).Unnest();
    EXPECT_EQ(TextOf(*filter), "FILTER(x USING c = 1 and a = 1 and b = 1)");
  }
  for (int i = 0; i < 100'000; ++i) filter = new RqExprAggrIf(filter.Release(), new RqExprCondNot, false);
  RunOnSmallStack(
      [&] { EXPECT_EQ(CodeRaisedBy([&] { static_cast<RqExprAggrIf&>(*filter).Unnest(); }), kMsgStackLow); });
}

TEST(AggrWrapper, VariablesAndMembers) {
  const auto replace = [](std::initializer_list<int> values) {
    RqExprVector pairs;
    for (const int value : values) pairs.insert(pairs.end(), {Str(L"v"), Int(value)});
    return RqExprVariableReplace(Named('x'), pairs);
  };
  const auto qualify = [](std::initializer_list<const wchar_t*> names) {
    std::vector<RqExprMemberReference*> members;
    for (const wchar_t* name : names) {
      members.push_back(new RqExprMemberReference(new RqExprLevel, new RqExprStringLiteral(name)));
    }
    return RqExprQualify(Named('x'), members);
  };
  const RqEquivalence equal;
  EXPECT_TRUE(equal(replace({1}), replace({1, 2}))) << "wanted: the variables of the left one rule";
  EXPECT_FALSE(equal(replace({1, 2}), replace({1})) || equal(replace({1}), replace({2})));
  std::vector<std::pair<const RqExprStringLiteral*, const RqExpr*>> variables;
  const RqExprVariableReplace two = replace({1, 2});
  two.GetVariables(variables);
  EXPECT_TRUE(variables.size() == 2 && TextOf(variables[1].first) == "'v'" && TextOf(variables[1].second) == "2");

  EXPECT_TRUE(equal(qualify({L"a", L"b"}), qualify({L"b", L"a"})));
  EXPECT_FALSE(equal(qualify({L"a", L"b"}), qualify({L"a", L"c"})) || equal(qualify({L"a"}), qualify({L"a", L"b"})));
  std::vector<RqExprMemberReference*> copies;
  qualify({L"a", L"b"}).GetMemberReferencesCopies(copies);
  EXPECT_TRUE(equal(RqExprQualify(Named('x'), copies), qualify({L"a", L"b"})));
}

}  // namespace
