#pragma once

#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"

// Aggregates for tests. What these give belongs to the caller, or to the node that takes it.

inline RqExprColumnList* Columns(std::initializer_list<RqExpr*> columns) {
  auto* const pList = new RqExprColumnList;
  for (RqExpr* const pColumn : columns) pList->AddChild(pColumn);
  return pList;
}

/// An aggregate of any kind that is none of the wrappers: an argument is 9, a deviation that of a sample.
template <class Aggr>
RqExprAggr* Of(RqExpr* pExpr, RqExprColumnList* pControl, RqExprColumnList* pCompute, bool bDistinct) {
  if constexpr (std::is_constructible_v<Aggr, RqExpr*, RqExpr*, RqExprColumnList*, RqExprColumnList*, bool>) {
    return new Aggr(pExpr, Int(9), pControl, pCompute, bDistinct);
  } else if constexpr (std::is_same_v<Aggr, RqExprAggrRank>) {
    return new Aggr(pExpr, pControl, pCompute, bDistinct, true, true);
  } else if constexpr (std::is_constructible_v<Aggr, RqExpr*, RqExprColumnList*, RqExprColumnList*, bool, bool>) {
    return new Aggr(pExpr, pControl, pCompute, bDistinct, true);
  } else if constexpr (std::is_constructible_v<Aggr, RqExpr*, RqExprColumnList*, RqExprColumnList*, bool>) {
    return new Aggr(pExpr, pControl, pCompute, bDistinct);
  } else {
    return Changed(new Aggr(pExpr, pControl, pCompute), [=](Aggr& e) { e.SetDistinctAggregation(bDistinct); });
  }
}

/// How it is made, its name, and what a text has behind its expression.
struct AggrKind {
  RqExprAggr* (*m_of)(RqExpr* pExpr, RqExprColumnList* pControl, RqExprColumnList* pCompute, bool bDistinct);
  std::string m_name, m_behind;

  std::string GetOpening() const {
    if (m_name == "count_star") return "count(* : ";
    return m_name == "Stddev_SAMP" ? "Stddev SAMP(" : m_name + (m_name == "DENSE_RANK" ? "([" : "(");
  }
};

template <class... Aggrs>
void AddKinds(std::vector<AggrKind>& kinds, const char* names, const char* behind = "") {
  std::istringstream words(names);
  std::string name;
  (kinds.push_back({&Of<Aggrs>, (words >> name, name), behind}), ...);
}

inline const std::vector<AggrKind>& AggrKinds() {
  static const std::vector<AggrKind> kKinds = [] {
    std::vector<AggrKind> kinds;
    AddKinds<RqExprAggrSum, RqExprAggrCount, RqExprAggrCountStar, RqExprAggrAvg, RqExprAggrStddev, RqExprAggrMedian,
             RqExprAggrMin, RqExprAggrMax, RqExprAggrFirst, RqExprAggrLast, RqExprAggrListAgg, RqExprAggrNullAgg,
             RqExprAggrNullIfNotUnique, RqExprAggrPercentile, RqExprAggrRowNum, RqExprAggrSubtotal, RqExprAggrReport,
             RqExprAggrReportSum, RqExprAggrReportMin, RqExprAggrReportMax, RqExprAggrReportCount, RqExprAggrReportAvg,
             RqExprAggrRunningSum, RqExprAggrRunningCount, RqExprAggrRunningMax, RqExprAggrRunningMin>(
        kinds,
        "sum count count_star avg Stddev_SAMP Median min max first last ListAgg NullAgg nullifnotunique percentile "
        "rownum subtotal REPORT_AGGREGATE Report_Sum Report_Min Report_Max Report_Count Report_Avg rsum rcount rmax "
        "rmin");
    AddKinds<RqExprAggrNtile, RqExprAggrTopN, RqExprAggrBottomN, RqExprAggrMovingAvg, RqExprAggrMovingSum>(
        kinds, "ntile topN bottomN mavg msum", ", 9");
    AddKinds<RqExprAggrRank>(kinds, "DENSE_RANK", " desc]");
    return kinds;
  }();
  return kKinds;
}

/// Sets what no text shows.
template <class Aggr>
Aggr* Marked(Aggr* pAggr) {
  pAggr->SetBuiltInExecutionOnly(true);
  pAggr->MarkComputeBreakRedundant();
  pAggr->AddGTDegenDim(3);
  pAggr->SetNoAggrsInAggregateBy(true);
  pAggr->SetIsMashupsPinnedExpr(true);
  pAggr->SetMeasurePredicateTransform(true);
  pAggr->SetOverrideAsScalar(true);
  pAggr->SetRewrittenDistinct(true);
  return pAggr;
}

/// Each kind, with a value in each field. The attribute of the share base is one that a gateway may know as that of a
/// SampleRepository.
inline std::vector<TreeSample> AggrSamples() {
  const SortDirectonVector directions{RqSortSpec::kAsc, RqSortSpec::kEitherDirection, RqSortSpec::kDesc};
  const auto running = [&](auto* pAggr) {
    pAggr->SetSortSpec(directions, {3, 1, 2});
    return Marked(pAggr);
  };
  const auto sum = [] { return new RqExprAggrSum(Param(1), nullptr, nullptr, false); };
  std::vector<TreeSample> samples = {
      {new RqExprAggrSum(Param(1), Columns({Param(2)}), nullptr, true), "sum(distinct ?1 by ?2)"},
      {Changed(new RqExprAggrSum(Param(1), Columns({Param(2)}), Columns({Param(3)}), false),
               [&](RqExprAggr& e) {
                 e.SetShareBase({VoidID(kTIDAAttribute, 11U), VoidID(kTIDAAttribute, 99U)});
               }),
       "sum(?1 by ?2 SB 4294967295.3003:11,4294967295.3003:99 at_distinct ?2, ?3)",
       "sum(?1 by ?2 SB \"Sales\".\"Amount\",1.3003:99 at_distinct ?2, ?3)",
       "sum(?1 by ?2 SB Amount,1.3003:99 at_distinct ?2, ?3)"},
      {Changed(new RqExprAggrCount(Param(1), nullptr, nullptr, true), [](auto& e) { e.SetSQL99Aggregation(true); }),
       "count_SQL99(distinct ?1)", nullptr, nullptr, kDoesNotTravel},
      {new RqExprAggrCountStar(nullptr, Columns({})), "count(* : '*')"},
      {new RqExprAggrStddev(Param(1), nullptr, nullptr, false, false), "Stddev POP(?1)"},
      {new RqExprAggrRank(Row({Param(1), Param(2), Int(3)}), directions, Columns({Param(4)}), nullptr, true, false,
                          true),
       "Rank([?1 asc, ?2, 3 desc] by ?4)"},
      {running(new RqExprAggrRunningSum(Param(1), Columns({Param(2)}), nullptr, false)),
       "rsum(?1 by ?2 order by [3 asc, 1, 2 desc ])"},
      {running(new RqExprAggrMovingAvg(Param(1), Param(2), nullptr, nullptr, false)), "mavg(?1, ?2)"},
      {Marked(new RqExprAggrIf(sum(), new RqExprCondIsNull(Param(2), false), true)),
       "FILTER(sum(?1) USING ?2 is null)"},
      {Marked(new RqExprNoAggregate(sum())), "sum(?1)"},
      {Changed(Marked(new RqExprMashupsNoAggregate(Param(1))),
               [](auto& e) { e.SetDimensionBasedAggrCount(5), e.SetSplitInnerAggrForDimensionBasedAggr(true); }),
       "MASHUPS_NOAGGREGATE(?1)"},
  };
  RqExprVector variables{Str(L"v"), Int(1), Str(L"w"), Param(2)};
  samples.push_back(
      {Marked(new RqExprVariableReplace(sum(), variables)), "variable_replace( sum(?1), 'v', 1, 'w', ?2) "});
  std::vector<RqExprMemberReference*> members{
      new RqExprMemberReference(new RqExprLevel, new RqExprStringLiteral(L"Q1"))};
  samples.push_back(
      {Marked(new RqExprQualify(sum(), members)), "Qualify(sum(?1), [Level 4294967295.0:4294967295].'Q1')"});
  for (const AggrKind& kind : AggrKinds()) {
    samples.push_back({Marked(kind.m_of(Param(1), Columns({Param(2)}), Columns({Param(2), Param(3)}), false)),
                       kind.GetOpening() + "?1" + kind.m_behind + " by ?2 at_distinct ?2, ?3)"});
  }
  return samples;
}
