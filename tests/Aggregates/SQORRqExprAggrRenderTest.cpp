#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "Aggregates/AggrLanguage.h"
#include "Blocks/BlockSamples.h"
#include "CaseFile.h"
#include "HostMemory/MemoryGateway.h"
#include "TestUtil.h"

namespace {

using Rendering = RqExpr* (RqExprAggr::*)(RqList&) const;

/// "result <- columns of the inner block; break columns", over a block that is grouped by g or not grouped.
std::string OntoBlock(const RqExprAggr& aggr, bool bGrouped, Rendering render = &RqExprAggr::RenderOnSummaryList) {
  const Heap<RqList> inner(List({}));
  RqExprVector columns{Named('g')};
  const Heap<RqGroupBy> groupBy(new RqGroupBy(columns, false));
  if (bGrouped) inner->SetGroupBy(groupBy.Release());
  const std::string before = TextOf(aggr);
  std::string text;
  for (int i = 0; i < 2; ++i) text = Nested(Heap<RqExpr>((aggr.*render)(*inner)).Get());  // once more adds no column
  EXPECT_EQ(TextOf(aggr), before);
  for (int i = 0; i < inner->GetProjection()->GetNumColumns(); ++i) {
    text += (i == 0 ? " <- " : "; ") + Nested(inner->GetProjection()->GetIthColumn(i)->GetExpr());
  }
  UInt16Vector breakColumns;
  inner->GetBreakColumns(breakColumns);
  for (const std::uint16_t index : breakColumns) text += "; break " + std::to_string(index);
  return text;
}

TEST(AggrRendering, OntoAnInnerBlock) {
  for (const TextCase& c : CasesOf("Aggregates/renderings.txt")) {
    const auto [text, rest] = c.Split(" in report");
    const auto aggr = AggrOf(text);
    const bool bReport = text != c.m_input;
    const auto render = bReport ? &RqExprAggr::RenderReportAggrOnInnerList : &RqExprAggr::RenderOnSummaryList;
    const std::string plain = OntoBlock(*aggr, false, render);
    const std::string grouped = bReport ? plain : OntoBlock(*aggr, true, render);
    EXPECT_EQ(plain + (grouped == plain ? "" : "\n" + grouped), c.m_expected) << c.m_input;
  }
}

TEST(AggrRendering, OfWhatNoTextShows) {
  const Heap<RqList> inner(List({}));
  const auto render = [&]<class Kind>(Kind* pAggr) {
    const Heap<Kind> aggr(pAggr);
    return Heap<Kind>(static_cast<Kind*>(aggr->RenderOnSummaryList(*inner)));
  };
  const SortDirectonVector up(1, RqSortSpec::kAsc);
  const auto rank = render(new RqExprAggrRank(Named('x'), up, nullptr, nullptr, true, false, true));
  EXPECT_EQ(rank->GetSortDirections(), up);
  EXPECT_FALSE(rank->IsCreatedForTopOrBottomN() || rank->IsDenseRank());
  EXPECT_TRUE(rank->IsDistinctAggregation());
  EXPECT_FALSE(render(new RqExprAggrMax(Named('x'), nullptr, nullptr, false, true))->IsForSubtotallingOnly());
  EXPECT_EQ(render(new RqExprAggrRowNum(Named('x'), nullptr, Break("a1"), false))->GetSortDirections().size(), 2U)
      << "wanted: as they were, though the constant is gone";
  const auto sum = render(new RqExprAggrSum(Named('x'), nullptr, Break("1"), false));
  EXPECT_TRUE(!sum->GetControlBreak() && sum->GetComputeBreak() && sum->GetComputeBreak()->GetNumColumns() == 0);
  const auto running = AggrOf("rsum(x)");
  static_cast<RqExprAggrRunningSum&>(*running).SetSortSpec(up, {1});
  EXPECT_EQ(OntoBlock(*running, false), "rsum(c1) <- x") << "wanted: without its order";
}

TEST(AggrRendering, OntoAnEquivalentSource) {
  MemoryGateway gateway;
  const RqAttribute attribute(&gateway, gateway.MakeObject<MemoryAttribute>(11U, L"Amount", VoidID()).GetID());
  const Heap<RqExpr> logical(Named('l')), physical(Named('p')), placeHolder(Named('A'));
  const auto withAttribute = [&](const std::string& text) {
    RqHandleNode holder(ExprOf(text).Release()), replaced;
    RqExprVector places;
    RqExpr::FindEquivalentSubExprs(static_cast<RqExpr*>(holder.GetIthChild(0)), *placeHolder, places);
    for (RqExpr* const pPlace : places) pPlace->Replace(attribute.DeepExprCopy(true), replaced);
    return Heap<RqExpr>(static_cast<RqExpr*>(holder.ReleaseRqNode()));
  };
  for (const TextCase& c : CasesOf("Aggregates/translations.txt")) {
    SCOPED_TRACE(c.m_input);
    const auto is = [&c](const char* word) { return c.m_input.find(word) != std::string::npos; };
    const std::string ruleText = c.Split(" | ").second;
    const Heap<RqExpr> aggr = withAttribute(c.m_input), rule = ruleText.empty() ? nullptr : withAttribute(ruleText);
    const LogicalToPhysical mapping{logical.Get(), is(" nowhere") ? nullptr : physical.Get(), rule.Get()};
    const auto render = [&] {
      const Heap<RqExpr> rendered(static_cast<RqExprAggr&>(*aggr).RenderOntoEquivalentSource(
          &gateway, !is(" logical"), mapping, is(" inside") ? &attribute : nullptr));
      return Nested(rendered.Get());
    };
    EXPECT_EQ(TextOrError(render), c.m_expected);
  }
}

TEST(AggrRendering, OntoMoreDetailedSources) {
  OwnedRqExprVector owned;
  SourceContentMap rows;
  for (const auto& [logical, physical] : {std::pair("sum(x)", 's'),
                                          {"count(x)", 'n'},
                                          {"sum(mul(x, x))", 'q'},
                                          {"sum(y)", '-'},
                                          {"sum(w)", 'w'},
                                          {"count_star(1)", 'k'},
                                          {"min(distinct x)", 'm'}}) {
    owned.push_back(ExprOf(logical).Release());
    owned.push_back(physical == '-' ? nullptr : Named(physical));
    rows.push_back({owned[owned.size() - 2], owned.back(), nullptr});
  }
  SourceContentMapWrapper map;
  map.InstallContentMap(rows);
  for (const TextCase& c : CasesOf("Aggregates/sources.txt")) {
    const auto aggr = AggrOf(c.m_input);
    const std::string before = TextOf(*aggr);
    Int32Vector indexes;
    const Heap<RqExpr> rendered(aggr->RenderOntoMoreDetailedSources(nullptr, true, map.GetContentMap(), indexes));
    std::string text = Nested(rendered.Get());
    for (const std::int32_t index : indexes) text += " " + std::to_string(index);
    EXPECT_EQ(text, c.m_expected) << c.m_input;
    EXPECT_EQ(TextOf(*aggr), before) << "the control break is back in its place";
  }
}

TEST(AggrRenderingDeathTest, OfWhatIsNotToBeRendered) {
  constexpr const char* kLogicError = "SQORRqExprAggr.*logic error";
  const Heap<RqList> inner(List({}));
  Int32Vector indexes;
  for (const char* const text : {"filter(sum(x), c)", "subtotal(x)", "nullifnotunique(x)", "Report_Sum(x)"}) {
    SCOPED_TRACE(text);
    const auto aggr = AggrOf(text);
    EXPECT_DEATH(aggr->RenderOntoEquivalentSource(nullptr, true, {}, nullptr), kLogicError);
    EXPECT_DEATH(aggr->RenderOntoMoreDetailedSources(nullptr, true, {}, indexes), kLogicError);
    if (text[0] != 'R') {
      EXPECT_DEATH(aggr->RenderOnSummaryList(*inner), kLogicError);
    }
  }
  EXPECT_DEATH(AggrOf("sum(x)")->RenderReportAggrOnInnerList(*inner), kLogicError);
  EXPECT_DEATH(RqExprAggrRank().RenderOnSummaryList(*inner), "SQUCompositeNode.*logic error");
  EXPECT_DEATH(RqExprAggrRank(nullptr, nullptr, nullptr, false, false, false).RenderOnSummaryList(*inner),
               "pColumnList");
}

}  // namespace
