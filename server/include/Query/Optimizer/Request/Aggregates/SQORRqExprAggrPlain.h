#pragma once

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"

// The aggregate functions over the rows of a group.

/// The sum.
class RqExprAggrSum final : public RqCombiningAggr<RqExprAggrSum, kRqExprAggrSum> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kUnlessDistinct, AggrAnswer::kUnlessDistinct,
                                      AggrAnswer::kUnlessDistinct};
  using RqCombiningAggr::RqCombiningAggr;

  /// Null for a distinct sum without a rule of its own: it cannot be read off values that are summed up already.
  RqExpr* RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                     const RqAttribute* pAttr) const override;
  RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                               const ReportAggrCompatFlags& flags) const override;
  RqExpr* GetSourceAggregator(RqExprColumnList* pBreaks) const override;
  RqExprAggr* GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const override;
};

/// The number of rows whose value is not null. Counts are combined by summing.
class RqExprAggrCount final : public RqCombiningAggr<RqExprAggrCount, kRqExprAggrCount, RqExprAggrSum> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kUnlessDistinct, AggrAnswer::kUnlessDistinct,
                                      AggrAnswer::kUnlessDistinct};
  using RqCombiningAggr::RqCombiningAggr;

  /// Null for a distinct count without a rule of its own.
  RqExpr* RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                     const RqAttribute* pAttr) const override;
  RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                               const ReportAggrCompatFlags& flags) const override;
  /// Of a distinct count the aggregated expression alone: the source keeps the distinct values.
  RqExpr* GetSourceAggregator(RqExprColumnList* pBreaks) const override;
  RqExprAggr* GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const override;
};

/// The number of rows. What it aggregates is a text that stands for the row, "*" unless it was made with another.
class RqExprAggrCountStar final : public RqAggrKind<RqExprAggrCountStar, RqExprAggr, kRqExprAggrCountStar> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kUnlessDistinct, AggrAnswer::kUnlessDistinct};

  RqExprAggrCountStar() = default;
  RqExprAggrCountStar(RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak);
  RqExprAggrCountStar(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak);
  RqExprAggrCountStar(const RqExprAggrCountStar& rhs, bool bNewIDs, bool bDeepCopy)
      : RqAggrKind(rhs, bNewIDs, bDeepCopy) {}

  RqExpr* RenderOnSummaryList(RqList& inner) const override;
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                        Int32Vector& indexes) const override;
  /// Wanted: pAttr makes no difference.
  RqExpr* RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                     const RqAttribute* pAttr) const override;
  RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                               const ReportAggrCompatFlags& flags) const override;
};

/// The mean: the sum divided by the count, and rewritten as such.
class RqExprAggrAvg final : public RqAggrKind<RqExprAggrAvg, RqExprAggr, kRqExprAggrAvg> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kUnlessDistinct, AggrAnswer::kNever};
  using RqAggrKind::RqAggrKind;

  RqExpr* RenderOnSummaryList(RqList& inner) const override;
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                        Int32Vector& indexes) const override;
};

/// The standard deviation, of a sample or of the whole. Rewritten, it is computed from the sums of squares and values
/// and from the count. Wanted: it renders onto grouped blocks though it says that it cannot be split.
class RqExprAggrStddev final : public RqAggrKind<RqExprAggrStddev, RqExprAggr, kRqExprAggrStddev> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kNever, AggrAnswer::kNever};

  RqExprAggrStddev() = default;
  RqExprAggrStddev(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak, bool bDistinct,
                   bool bIsSample)
      : RqAggrKind(pAggrExpr, pControlBreak, pComputeBreak, bDistinct), bIsSample_(bIsSample) {}
  RqExprAggrStddev(const RqExprAggrStddev& rhs, bool bNewIDs, bool bDeepCopy)
      : RqAggrKind(rhs, bNewIDs, bDeepCopy), bIsSample_(rhs.bIsSample_) {}

  bool IsSample() const { return bIsSample_; }

  RqExpr* RenderOnSummaryList(RqList& inner) const override;
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                        Int32Vector& indexes) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 protected:
  bool PrivateIsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;

 private:
  bool bIsSample_ = false;
};

/// The median.
class RqExprAggrMedian final : public RqWholeAggr<RqExprAggrMedian, RqExprAggr, kRqExprAggrMedian> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kNever, AggrAnswer::kNever};
  using RqWholeAggr::RqWholeAggr;
};

/// The least value.
class RqExprAggrMin final : public RqCombiningAggr<RqExprAggrMin, kRqExprAggrMin> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kAlways, AggrAnswer::kAlways, AggrAnswer::kUnlessDistinct};
  using RqCombiningAggr::RqCombiningAggr;

  RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                               const ReportAggrCompatFlags& flags) const override;
  RqExpr* GetSourceAggregator(RqExprColumnList* pBreaks) const override;
  RqExprAggr* GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const override;
};

/// The greatest value.
class RqExprAggrMax final : public RqCombiningAggr<RqExprAggrMax, kRqExprAggrMax> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kAlways, AggrAnswer::kAlways, AggrAnswer::kUnlessDistinct};

  RqExprAggrMax() = default;
  RqExprAggrMax(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak, bool bDistinct,
                bool bForSubtotallingOnly = false)
      : RqCombiningAggr(pAggrExpr, pControlBreak, pComputeBreak, bDistinct),
        m_bForSubtotallingOnly(bForSubtotallingOnly) {}
  RqExprAggrMax(const RqExprAggrMax& rhs, bool bNewIDs, bool bDeepCopy)
      : RqCombiningAggr(rhs, bNewIDs, bDeepCopy),
        m_bForSubtotallingOnly(rhs.m_bForSubtotallingOnly),
        m_isLeafDimID(rhs.m_isLeafDimID) {}

  /// Whether it was added for totals, over values that are equal in a group.
  bool IsForSubtotallingOnly() const { return m_bForSubtotallingOnly; }
  /// The dimension whose test for leaves it was made for; null if it was made for none. Does not travel.
  const VoidID& GetIsLeafDimID() const { return m_isLeafDimID; }
  void SetIsLeafDimID(const VoidID& dimensionID) { m_isLeafDimID = dimensionID; }
  bool IsCreatedForIsLeaf() const { return !m_isLeafDimID.IsNullID(); }

  RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                               const ReportAggrCompatFlags& flags) const override;
  RqExpr* GetSourceAggregator(RqExprColumnList* pBreaks) const override;
  RqExprAggr* GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  bool m_bForSubtotallingOnly = false;
  VoidID m_isLeafDimID;
};

/// The value of the first row.
class RqExprAggrFirst final : public RqCombiningAggr<RqExprAggrFirst, kRqExprAggrFirst> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kAlways, AggrAnswer::kAlways};
  using RqCombiningAggr::RqCombiningAggr;
  RqExprAggrFirst(const RqExprAggrFirst& rhs, bool bNewIDs, bool bDeepCopy)
      : RqCombiningAggr(rhs, bNewIDs, bDeepCopy), m_bFirstPeriod(rhs.m_bFirstPeriod) {}

  /// Whether the first row is that of the first period. Does not travel.
  bool IsFirstPeriod() const { return m_bFirstPeriod; }
  void SetFirstPeriod(bool bFirstPeriod) { m_bFirstPeriod = bFirstPeriod; }

 private:
  bool m_bFirstPeriod = false;
};

/// The value of the last row.
class RqExprAggrLast final : public RqCombiningAggr<RqExprAggrLast, kRqExprAggrLast> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kAlways, AggrAnswer::kAlways};
  using RqCombiningAggr::RqCombiningAggr;
  RqExprAggrLast(const RqExprAggrLast& rhs, bool bNewIDs, bool bDeepCopy)
      : RqCombiningAggr(rhs, bNewIDs, bDeepCopy), m_bLastPeriod(rhs.m_bLastPeriod) {}

  /// Whether the last row is that of the last period. Does not travel.
  bool IsLastPeriod() const { return m_bLastPeriod; }
  void SetLastPeriod(bool bLastPeriod) { m_bLastPeriod = bLastPeriod; }

 private:
  bool m_bLastPeriod = false;
};

/// The values in one text.
class RqExprAggrListAgg final : public RqCombiningAggr<RqExprAggrListAgg, kRqExprAggrListAgg> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kUnlessDistinct, AggrAnswer::kUnlessDistinct};
  using RqCombiningAggr::RqCombiningAggr;
};

/// Null, whatever the values are.
class RqExprAggrNullAgg final : public RqCombiningAggr<RqExprAggrNullAgg, kRqExprAggrNullAgg> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kUnlessDistinct, AggrAnswer::kUnlessDistinct};
  using RqCombiningAggr::RqCombiningAggr;
};
