#pragma once

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"

// ---------------------------------------------------------------------------------------------------------------------
// Kinds that are instantiated before anything is rewritten: rewriting one is a logic error.

template <class Derived, RqNodeType_e kKind>
class RqUnrenderedAggr : public RqAggrKind<Derived, RqExprAggr, kKind> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kAlways, AggrAnswer::kAlways};
  using RqAggrKind<Derived, RqExprAggr, kKind>::RqAggrKind;

  RqExpr* RenderOnSummaryList(RqList&) const override { KX_LOGIC_ERROR(L""); }
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway*, bool, const SourceContentMap&, Int32Vector&) const override {
    KX_LOGIC_ERROR(L"");
  }
  RqExpr* RenderOntoEquivalentSource(ARpGateway*, bool, const LogicalToPhysical&, const RqAttribute*) const override {
    KX_LOGIC_ERROR(L"");
  }
};

/// The value of the group, and null where its rows have more than one.
class RqExprAggrNullIfNotUnique final : public RqUnrenderedAggr<RqExprAggrNullIfNotUnique, kRqExprAggrNullIfNotUnique> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kAlways, AggrAnswer::kAlways, AggrAnswer::kUnlessDistinct};

  RqExprAggrNullIfNotUnique() = default;
  /// Wanted: nothing is kept of bForSubtotallingOnly.
  RqExprAggrNullIfNotUnique(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak,
                            bool bDistinct, [[maybe_unused]] bool bForSubtotallingOnly)
      : RqUnrenderedAggr(pAggrExpr, pControlBreak, pComputeBreak, bDistinct) {}
  RqExprAggrNullIfNotUnique(const RqExprAggrNullIfNotUnique& rhs, bool bNewIDs, bool bDeepCopy)
      : RqUnrenderedAggr(rhs, bNewIDs, bDeepCopy) {}

  bool IsForSubtotallingOnly() const { return false; }

  RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                               const ReportAggrCompatFlags& flags) const override;
};

/// The total of a block of a report.
class RqExprAggrSubtotal final : public RqUnrenderedAggr<RqExprAggrSubtotal, kRqExprAggrSubtotal> {
 public:
  RqExprAggrSubtotal() = default;
  RqExprAggrSubtotal(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak)
      : RqUnrenderedAggr(pAggrExpr, pControlBreak, pComputeBreak, false) {}
  RqExprAggrSubtotal(const RqExprAggrSubtotal& rhs, bool bNewIDs, bool bDeepCopy)
      : RqUnrenderedAggr(rhs, bNewIDs, bDeepCopy) {}
};

/// A total of a report by whichever aggregate the measure in it has.
class RqExprAggrReport final : public RqUnrenderedAggr<RqExprAggrReport, kRqExprAggrReport> {
 public:
  RqExprAggrReport() = default;
  RqExprAggrReport(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak)
      : RqUnrenderedAggr(pAggrExpr, pControlBreak, pComputeBreak, false) {}
  RqExprAggrReport(const RqExprAggrReport& rhs, bool bNewIDs, bool bDeepCopy)
      : RqUnrenderedAggr(rhs, bNewIDs, bDeepCopy) {}
};

// ---------------------------------------------------------------------------------------------------------------------
// Totals of a report over a column of it, each by the aggregate of its name.

/// A report total that Plain computes. Rewritten onto an inner block it becomes that: over itself, as a column of the
/// block, or over its expression.
template <class Derived, RqNodeType_e kKind, class Plain>
class RqReportAggr : public RqUnrenderedAggr<Derived, kKind> {
 public:
  using RqUnrenderedAggr<Derived, kKind>::RqUnrenderedAggr;
  RqReportAggr() = default;
  RqReportAggr(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak)
      : RqUnrenderedAggr<Derived, kKind>(pAggrExpr, pControlBreak, pComputeBreak, false) {}

  RqExpr* RenderOnSummaryList(RqList& inner) const override { return this->RenderSelf(inner, &NewAggr<Plain>); }
  RqExpr* RenderReportAggrOnInnerList(RqList& inner) const override {
    return this->RenderOperand(inner, &NewAggr<Plain>);
  }
};

/// Adds up the values of a report.
class RqExprAggrReportSum final : public RqReportAggr<RqExprAggrReportSum, kRqExprAggrReportSum, RqExprAggrSum> {
 public:
  using RqReportAggr::RqReportAggr;
};

/// The least value of a report.
class RqExprAggrReportMin final : public RqReportAggr<RqExprAggrReportMin, kRqExprAggrReportMin, RqExprAggrMin> {
 public:
  using RqReportAggr::RqReportAggr;
};

/// The greatest value of a report.
class RqExprAggrReportMax final : public RqReportAggr<RqExprAggrReportMax, kRqExprAggrReportMax, RqExprAggrMax> {
 public:
  using RqReportAggr::RqReportAggr;
};

/// Counts the values of a report.
class RqExprAggrReportCount final
    : public RqReportAggr<RqExprAggrReportCount, kRqExprAggrReportCount, RqExprAggrCount> {
 public:
  RqExprAggrReportCount() = default;
  RqExprAggrReportCount(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak,
                        bool bDistinct)
      : RqReportAggr(pAggrExpr, pControlBreak, pComputeBreak, bDistinct) {}
  RqExprAggrReportCount(const RqExprAggrReportCount& rhs, bool bNewIDs, bool bDeepCopy)
      : RqReportAggr(rhs, bNewIDs, bDeepCopy) {}

  /// The compute break of a distinct count is left out. A plain expression that is a column of inner becomes one of
  /// its break columns.
  RqExpr* RenderReportAggrOnInnerList(RqList& inner) const override;
};

/// The mean of the values of a report.
class RqExprAggrReportAvg final : public RqReportAggr<RqExprAggrReportAvg, kRqExprAggrReportAvg, RqExprAggrAvg> {
 public:
  using RqReportAggr::RqReportAggr;
};
