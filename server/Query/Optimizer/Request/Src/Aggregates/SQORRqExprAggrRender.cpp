// How aggregates are rewritten: onto an inner block, onto a source that has their value, onto sources that are more
// detailed.
//
// Law: a rewriting leaves the aggregate as it is. The columns that it needs are inserted into the inner block in the
// order in which they are told here; a column that is there already serves all that need it.

#include <algorithm>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

namespace {

RqExpr* Reference(RqDerivedColumn* pColumn) { return new RqDerivedColumnReference(pColumn); }

RqExprColumnList* CopyOf(const RqExprColumnList* pList) {
  return pList ? static_cast<RqExprColumnList*>(pList->DeepCopy(false)) : nullptr;
}

OwnedRqExprPtr CopyOf(const RqExpr* pExpr) { return OwnedRqExprPtr(pExpr->DeepExprCopy(false)); }

/// A rule in the place of a default aggregate, over the translation.
RqExpr* SimpleRenderOverrideAggrRule(const RqExpr& overrideRule, const RqExpr& leaf) {
  RqExpr* const pResult = overrideRule.DeepExprCopy(true);
  if (pResult->IsAggr()) static_cast<RqExprAggr*>(pResult)->SetAggrExpr(leaf.DeepExprCopy(true));
  return pResult;
}

/// An aggregate without breaks.
template <class Aggr>
RqExpr* Total(OwnedRqExprPtr expr) {
  return new Aggr(expr.Release(), nullptr, nullptr, false);
}

/// The translation of an expression in a map, and its row there.
struct Leaf {
  const RqExpr* m_pExpr = nullptr;
  int m_index = 0;

  explicit operator bool() const { return m_pExpr != nullptr; }
  /// Its sum.
  RqExpr* Sum() const { return Total<RqExprAggrSum>(CopyOf(m_pExpr)); }
};

/// The leaf of a partial aggregate, which is deleted; null if the map has none.
Leaf FindLeaf(const SourceContentMap& map, bool bPhysical, RqExpr* pPartial) {
  const OwnedRqExprPtr partial(pPartial);
  Leaf leaf;
  if (map.FindMapping(pPartial, leaf.m_index)) leaf.m_pExpr = map[leaf.m_index].GetLeafTranslationExpr(bPhysical);
  return leaf;
}

/// The standard deviation of its three sums: the square root of the mean of the squares less the square of the mean,
/// over the number of values, or over one less for a sample. Sum makes a new expression of a sum at each call.
template <class SumOf>
RqExpr* MakeStddev(const SumOf& sumOfSquares, const SumOf& sumOfValues, const SumOf& count, bool bIsSample) {
  RqExpr* pDenominator = count();
  if (bIsSample) pDenominator = new RqExprSubtract(pDenominator, new RqExprIntegerLiteral(1));
  RqExpr* const pSquares = sumOfSquares();
  RqExpr* const pFirstSum = sumOfValues();
  RqExpr* const pSquareOfSum = new RqExprMultiply(pFirstSum, sumOfValues());
  RqExpr* const pDeviations = new RqExprSubtract(pSquares, new RqExprDivide(pSquareOfSum, count()));
  return new RqExprSqrt(new RqExprDivide(pDeviations, pDenominator));
}

RqExpr* SquareOf(const RqExpr& expr) { return new RqExprMultiply(expr.DeepExprCopy(false), expr.DeepExprCopy(false)); }

void AddBreakColumn(RqList& list, int column) {
  UInt16Vector breakColumns;
  list.GetBreakColumns(breakColumns);
  const auto index = static_cast<std::uint16_t>(column);
  if (std::find(breakColumns.begin(), breakColumns.end(), index) != breakColumns.end()) return;
  breakColumns.push_back(index);
  list.SetBreakColumns(breakColumns);
}

}  // namespace

RqExprColumnList* RqExprAggr::RenderBreakList(const RqExprColumnList* pList, RqList& inner) {
  if (!pList) return nullptr;
  RqExprVector copies;
  for (int i = 0; i < pList->GetNumColumns(); ++i) copies.push_back(pList->GetIthColumn(i)->DeepExprCopy(false));
  const RqExprColumnList sorted(copies, true, true);
  Heap<RqExprColumnList> rendered(new RqExprColumnList());
  rendered->SetNumColumns(sorted.GetNumColumns());
  for (int i = 0; i < sorted.GetNumColumns(); ++i) {
    rendered->SetIthColumn(i, MakeReference(inner, sorted.GetIthColumn(i)));
  }
  return rendered.Release();
}

RqExpr* RqExprAggr::MakeReference(RqList& inner, const RqExpr* pExpr) {
  return Reference(inner.GetProjection()->InsertColumnExpr(pExpr));
}

RqExpr* RqExprAggr::AsDistinctAsThis(RqExprAggr* pAggr) const {
  if (IsDistinctAggregation()) pAggr->SetDistinctAggregation(true);
  return pAggr;
}

// ---------------------------------------------------------------------------------------------------------------------
// Onto an inner block

RqExpr* RqExprAggr::RenderWhole(RqList& inner, MakeAggr makeAggr) const {
  RqExpr* const pAggrExpr = MakeReference(inner, GetAggrExpr());
  RqExprColumnList* const pControlBreak = RenderBreakList(GetControlBreak(), inner);
  return makeAggr(pAggrExpr, pControlBreak, RenderBreakList(GetComputeBreak(), inner), IsDistinctAggregation());
}

RqDerivedColumn* RqExprAggr::InsertPartial(RqList& inner, Heap<RqExpr> expr, bool bDistinct, MakeAggr makePartial) {
  return inner.GetProjection()->InsertDonatedColumnExpr(
      makePartial(expr.Release(), CopyOf(inner.GetGroupBy()), nullptr, bDistinct));
}

RqExpr* RqExprAggr::Combine(RqDerivedColumn* pColumn, RqList& inner, MakeAggr makeCombining) const {
  RqExprColumnList* const pControlBreak = RenderBreakList(GetControlBreak(), inner);
  return makeCombining(Reference(pColumn), pControlBreak, RenderBreakList(inner.GetGroupBy(), inner), false);
}

RqExpr* RqExprAggr::RenderInTwoSteps(RqList& inner, MakeAggr makeSame, MakeAggr makePartial,
                                     MakeAggr makeCombining) const {
  if (!inner.GetGroupBy()) return RenderWhole(inner, makeSame);
  RqDerivedColumn* const pPartial = InsertPartial(inner, CopyOf(GetAggrExpr()), IsDistinctAggregation(), makePartial);
  return Combine(pPartial, inner, makeCombining);
}

RqExpr* RqExprAggrCountStar::RenderOnSummaryList(RqList& inner) const {
  if (!inner.GetGroupBy()) {
    RqExprColumnList* const pControlBreak = RenderBreakList(GetControlBreak(), inner);
    return new RqExprAggrCountStar(pControlBreak, RenderBreakList(GetComputeBreak(), inner));
  }
  RqDerivedColumn* const pPartial =
      inner.GetProjection()->InsertDonatedColumnExpr(new RqExprAggrCountStar(CopyOf(inner.GetGroupBy()), nullptr));
  return Combine(pPartial, inner, &NewAggr<RqExprAggrSum>);
}

RqExpr* RqExprAggrAvg::RenderOnSummaryList(RqList& inner) const {
  if (!inner.GetGroupBy()) return RenderWhole(inner, &NewAggr<RqExprAggrAvg>);
  const bool bDistinct = IsDistinctAggregation();
  RqDerivedColumn* const pSum = InsertPartial(inner, CopyOf(GetAggrExpr()), bDistinct, &NewAggr<RqExprAggrSum>);
  RqDerivedColumn* const pCount = InsertPartial(inner, CopyOf(GetAggrExpr()), bDistinct, &NewAggr<RqExprAggrCount>);
  RqExpr* const pDividend = Combine(pSum, inner, &NewAggr<RqExprAggrSum>);
  return new RqExprDivide(pDividend, Combine(pCount, inner, &NewAggr<RqExprAggrSum>));
}

RqExpr* RqExprAggrStddev::RenderOnSummaryList(RqList& inner) const {
  if (!inner.GetGroupBy()) {
    RqExpr* const pAggrExpr = MakeReference(inner, GetAggrExpr());
    RqExprColumnList* const pControl = RenderBreakList(GetControlBreak(), inner);
    RqExprColumnList* const pCompute = RenderBreakList(GetComputeBreak(), inner);
    return AsDistinctAsThis(
        new RqExprAggrStddev(pAggrExpr, pControl, pCompute, IsDistinctWithout(pCompute), bIsSample_));
  }
  const bool bDistinct = IsDistinctAggregation();
  const auto combined = [&](RqDerivedColumn* pColumn) {
    return [this, &inner, pColumn] { return Combine(pColumn, inner, &NewAggr<RqExprAggrSum>); };
  };
  const auto squares =
      combined(InsertPartial(inner, OwnedRqExprPtr(SquareOf(*GetAggrExpr())), bDistinct, &NewAggr<RqExprAggrSum>));
  const auto values = combined(InsertPartial(inner, CopyOf(GetAggrExpr()), bDistinct, &NewAggr<RqExprAggrSum>));
  const auto count = combined(InsertPartial(inner, CopyOf(GetAggrExpr()), bDistinct, &NewAggr<RqExprAggrCount>));
  return MakeStddev(squares, values, count, bIsSample_);
}

RqExpr* RqExprAggr::RenderSelf(RqList& inner, MakeAggr makeAggr) const {
  RqExpr* const pSelf = MakeReference(inner, this);
  RqExprColumnList* const pControlBreak = RenderBreakList(GetControlBreak(), inner);
  return makeAggr(pSelf, pControlBreak, RenderBreakList(GetComputeBreak(), inner), IsDistinctAggregation());
}

RqExpr* RqExprAggr::RenderOperand(RqList& inner, MakeAggr makeAggr) const {
  RqExpr* const pOperand =
      Reference(inner.GetProjection()->InsertDonatedColumnExpr(GetAggrExpr()->DeepExprCopy(false)));
  RqExprColumnList* const pControlBreak = RenderBreakList(GetControlBreak(), inner);
  return makeAggr(pOperand, pControlBreak, RenderBreakList(GetComputeBreak(), inner), IsDistinctAggregation());
}

RqExpr* RqExprAggrReportCount::RenderReportAggrOnInnerList(RqList& inner) const {
  RqProjection& projection = *inner.GetProjection();
  RqDerivedColumn* const pColumn = projection.InsertDonatedColumnExpr(GetAggrExpr()->DeepExprCopy(false));
  RqExprColumnList* const pControlBreak = RenderBreakList(GetControlBreak(), inner);
  RqExprColumnList* const pComputeBreak = IsDistinctAggregation() ? nullptr : RenderBreakList(GetComputeBreak(), inner);
  if (!FoundNodes(pColumn->GetExpr(), RqNode::IsAggrNode())) {
    const int index = projection.GetMatchingColumnIndex(pColumn->GetExpr());
    if (index < projection.GetNumColumns()) AddBreakColumn(inner, index);
  }
  return NewAggr<RqExprAggrCount>(Reference(pColumn), pControlBreak, pComputeBreak, IsDistinctAggregation());
}

// ---------------------------------------------------------------------------------------------------------------------
// Onto other sources

RqExpr* RqExprAggr::RenderTranslation(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                      const RqAttribute* pAttr, MakeAggr makeAggr) const {
  const RqExpr* const pLeaf = mapping.GetLeafTranslationExpr(bPhysical);
  if (!pLeaf) return nullptr;
  const RqExpr* const pRule = mapping.m_pOverrideAggrRuleExpr;
  if (!pAttr) {
    if (pRule) return SimpleRenderOverrideAggrRule(*pRule, *pLeaf);
    return makeAggr(pLeaf->DeepExprCopy(true), nullptr, nullptr, false);
  }
  // A rule may be the attribute itself, which can be replaced only below a parent.
  RqHandleNode holder;
  holder.AddChild(pRule ? pRule->DeepExprCopy(true)
                        : makeAggr(GetAggrExpr()->DeepExprCopy(false), nullptr, nullptr, false));
  OwnedRqExprPtr replacement(pLeaf->DeepExprCopy(true));
  ReplaceAllOccurrences(pRp, static_cast<RqExpr*>(holder.GetIthChild(0)), *pAttr, replacement);
  return static_cast<RqExpr*>(holder.ReleaseIthChild(0));
}

RqExpr* RqExprAggr::RenderMapped(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                 Int32Vector& indexes) const {
  int index = 0;
  if (!map.FindMapping(this, index)) return nullptr;
  indexes.push_back(index);
  return RenderOntoEquivalentSource(pRp, bPhysical, map[index], nullptr);
}

RqExpr* RqExprAggrSum::RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                                  const RqAttribute* pAttr) const {
  if (IsDistinctAggregation() && !mapping.m_pOverrideAggrRuleExpr) return nullptr;
  return RqCombiningAggr::RenderOntoEquivalentSource(pRp, bPhysical, mapping, pAttr);
}

RqExpr* RqExprAggrCount::RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                                    const RqAttribute* pAttr) const {
  if (IsDistinctAggregation() && !mapping.m_pOverrideAggrRuleExpr) return nullptr;
  return RqCombiningAggr::RenderOntoEquivalentSource(pRp, bPhysical, mapping, pAttr);
}

RqExpr* RqExprAggrCountStar::RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical,
                                                        const LogicalToPhysical& mapping, const RqAttribute*) const {
  return RenderTranslation(pRp, bPhysical, mapping, nullptr, &NewAggr<RqExprAggrSum>);
}

RqExpr* RqExprAggrCountStar::RenderOntoMoreDetailedSources(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                                           Int32Vector& indexes) const {
  return RenderMapped(pRp, bPhysical, map, indexes);
}

RqExpr* RqExprAggrAvg::RenderOntoMoreDetailedSources(ARpGateway*, bool bPhysical, const SourceContentMap& map,
                                                     Int32Vector& indexes) const {
  if (IsDistinctAggregation()) return nullptr;
  const Leaf sum = FindLeaf(map, bPhysical, Total<RqExprAggrSum>(CopyOf(GetAggrExpr())));
  if (!sum) return nullptr;
  const Leaf count = FindLeaf(map, bPhysical, Total<RqExprAggrCount>(CopyOf(GetAggrExpr())));
  if (!count) return nullptr;
  indexes.insert(indexes.end(), {sum.m_index, count.m_index});
  RqExpr* const pDividend = sum.Sum();
  return new RqExprDivide(pDividend, count.Sum());
}

RqExpr* RqExprAggrStddev::RenderOntoMoreDetailedSources(ARpGateway*, bool bPhysical, const SourceContentMap& map,
                                                        Int32Vector& indexes) const {
  if (IsDistinctAggregation()) return nullptr;
  const Leaf squares = FindLeaf(map, bPhysical, Total<RqExprAggrSum>(OwnedRqExprPtr(SquareOf(*GetAggrExpr()))));
  if (!squares) return nullptr;
  const Leaf values = FindLeaf(map, bPhysical, Total<RqExprAggrSum>(CopyOf(GetAggrExpr())));
  if (!values) return nullptr;
  const Leaf count = FindLeaf(map, bPhysical, Total<RqExprAggrCount>(CopyOf(GetAggrExpr())));
  if (!count) return nullptr;
  indexes.insert(indexes.end(), {squares.m_index, values.m_index, count.m_index});
  const auto sumOf = [](const Leaf& leaf) { return [&leaf] { return leaf.Sum(); }; };
  return MakeStddev(sumOf(squares), sumOf(values), sumOf(count), bIsSample_);
}
