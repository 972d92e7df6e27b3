#pragma once

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOrderBy.h"

// Aggregates that give each row a value by its place among the others: ranks, and values that move or run along an
// order of rows.

using SortDirectonVector = KXNodeVector<RqSortSpec::SortDirection>;

/// A kind with one operand more, behind the breaks. Rewritten it stays whole over an inner block that has a column for
/// that operand too.
template <class Derived, class Base, RqNodeType_e kKind>
class RqAggrWithArgument : public RqAggrKind<Derived, Base, kKind> {
 public:
  enum { kArgument = RqExprAggr::kNumOperands, kNumOperands };
  static constexpr AggrTraits kTraits{true, AggrAnswer::kNever, AggrAnswer::kNever, AggrAnswer::kNever, true};

  RqAggrWithArgument() = default;
  RqAggrWithArgument(RqExpr* pAggrExpr, RqExpr* pArgument, RqExprColumnList* pControlBreak,
                     RqExprColumnList* pComputeBreak, bool bDistinct)
      : RqAggrKind<Derived, Base, kKind>(pAggrExpr, pControlBreak, pComputeBreak, bDistinct) {
    this->AddChild(pArgument);
  }
  RqAggrWithArgument(const RqAggrWithArgument& rhs, bool bNewIDs, bool bDeepCopy)
      : RqAggrKind<Derived, Base, kKind>(rhs, bNewIDs, bDeepCopy) {}

  RqExpr* RenderOnSummaryList(RqList& inner) const override {
    RqExpr* const pAggrExpr = this->MakeReference(inner, this->GetAggrExpr());
    RqExpr* const pArgument = this->MakeReference(inner, this->GetIthOperand(kArgument));
    RqExprColumnList* const pControl = this->RenderBreakList(this->GetControlBreak(), inner);
    RqExprColumnList* const pCompute = this->RenderBreakList(this->GetComputeBreak(), inner);
    return this->AsDistinctAsThis(
        new Derived(pAggrExpr, pArgument, pControl, pCompute, this->IsDistinctWithout(pCompute)));
  }
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway*, bool, const SourceContentMap&, Int32Vector&) const override {
    return nullptr;
  }

 protected:
  bool PrivateIsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override {
    return Base::PrivateIsEquivalent(rhs, pred) &&
           RqExprAggr::EquivalentOperands(this->GetIthOperand(kArgument), rhs.GetIthOperand(kArgument), pred);
  }
};

// ---------------------------------------------------------------------------------------------------------------------
// Ranks

/// The place of the row by its values, the first one 1. What it ranks by is always a column list, each column with a
/// direction.
///
/// Wanted: directions and density order ranks only in part and take no part in equivalence, so that ranks by the same
/// columns are one form.
class RqExprAggrRank final : public RqAggrKind<RqExprAggrRank, RqExprAggr, kRqExprAggrRank> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kNever, AggrAnswer::kNever, AggrAnswer::kNever, true};

  RqExprAggrRank() = default;
  /// Ranks from the greatest value down.
  RqExprAggrRank(RqExpr* pExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak, bool bDistinct,
                 bool bDenseRank, bool bCreatedForTopOrBottomN);
  /// As many directions as the column list that is ranked by has columns; none is as above.
  RqExprAggrRank(RqExpr* pExpr, const SortDirectonVector& sortDirections, RqExprColumnList* pControlBreak,
                 RqExprColumnList* pComputeBreak, bool bDistinct, bool bDenseRank, bool bCreatedForTopOrBottomN);
  RqExprAggrRank(const RqExprAggrRank& rhs, bool bNewIDs, bool bDeepCopy);

  const SortDirectonVector& GetSortDirections() const { return m_sortDirections; }
  /// Whether a rank follows the one before without a gap.
  bool IsDenseRank() const { return m_bDenseRank; }
  /// Does not travel.
  bool IsCreatedForTopOrBottomN() const { return m_bCreatedForTopOrBottomN; }

  /// Puts an aggregated expression that is no column list into a new one.
  void SetIthOperand(int i, RqExpr* pNewOperand) override;
  RqExpr* RenderOnSummaryList(RqList& inner) const override;
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway*, bool, const SourceContentMap&, Int32Vector&) const override {
    return nullptr;
  }
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  SortDirectonVector m_sortDirections;
  bool m_bDenseRank = false;
  bool m_bCreatedForTopOrBottomN = false;
};

/// The part of the rows that the row is above.
class RqExprAggrPercentile final : public RqWholeAggr<RqExprAggrPercentile, RqExprAggr, kRqExprAggrPercentile> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kNever, AggrAnswer::kNever, AggrAnswer::kNever, true};
  using RqWholeAggr::RqWholeAggr;
};

/// The number of the row's tile, of as many as the argument says.
class RqExprAggrNtile final : public RqAggrWithArgument<RqExprAggrNtile, RqExprAggr, kRqExprAggrNtile> {
 public:
  using RqAggrWithArgument::RqAggrWithArgument;
  RqExpr* GetNtileExpr() { return GetIthOperand(kArgument); }
  const RqExpr* GetNtileExpr() const { return GetIthOperand(kArgument); }
};

/// The place of the row among the greatest values, as many as the argument says.
class RqExprAggrTopN final : public RqAggrWithArgument<RqExprAggrTopN, RqExprAggr, kRqExprAggrTopN> {
 public:
  using RqAggrWithArgument::RqAggrWithArgument;
  RqExpr* GetTopNExpr() { return GetIthOperand(kArgument); }
  const RqExpr* GetTopNExpr() const { return GetIthOperand(kArgument); }
};

/// The place of the row among the least values, as many as the argument says.
class RqExprAggrBottomN final : public RqAggrWithArgument<RqExprAggrBottomN, RqExprAggr, kRqExprAggrBottomN> {
 public:
  using RqAggrWithArgument::RqAggrWithArgument;
  RqExpr* GetBottomNExpr() { return GetIthOperand(kArgument); }
  const RqExpr* GetBottomNExpr() const { return GetIthOperand(kArgument); }
};

/// The number of the row in the order of the columns of its compute break, each with a direction. Order of nulls and
/// directions do not travel.
class RqExprAggrRowNum final : public RqAggrKind<RqExprAggrRowNum, RqExprAggr, kRqExprAggrRowNum> {
 public:
  static constexpr AggrTraits kTraits{false, AggrAnswer::kNever, AggrAnswer::kNever};
  enum NullsSortOrder : std::int32_t { kBackendDB, kNullsFirst, kNullsLast };

  RqExprAggrRowNum() = default;
  /// From the greatest values down.
  RqExprAggrRowNum(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak, bool bDistinct);
  /// There must be a compute break with as many columns as directions.
  RqExprAggrRowNum(RqExpr* pAggrExpr, const SortDirectonVector& sortDirections, RqExprColumnList* pControlBreak,
                   RqExprColumnList* pComputeBreak, bool bDistinct);
  RqExprAggrRowNum(const RqExprAggrRowNum& rhs, bool bNewIDs, bool bDeepCopy);

  const SortDirectonVector& GetSortDirections() const { return m_sortDirections; }
  NullsSortOrder GetNullsSortOrder() const { return m_nullsSortOrder; }
  void SetNullsSortOrder(NullsSortOrder order) { m_nullsSortOrder = order; }

  RqExpr* RenderOnSummaryList(RqList& inner) const override;
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway*, bool, const SourceContentMap&, Int32Vector&) const override {
    return nullptr;
  }

 private:
  NullsSortOrder m_nullsSortOrder = kBackendDB;
  SortDirectonVector m_sortDirections;
};

// ---------------------------------------------------------------------------------------------------------------------
// Moving and running aggregates

/// An aggregate over the rows up to this one, in an order: that of columns of the block, each known by its number and
/// with its direction. Wanted: a rewriting onto an inner block leaves the order out.
class RqExprSortDependentAggr : public RqExprAggr {
 public:
  bool IsSortDependent() const override { return true; }
  /// As many directions as column numbers.
  void SetSortSpec(const SortDirectonVector& directions, const Int32Vector& order);
  void GetSortSpec(SortDirectonVector& directions, Int32Vector& order) const;
  int GetNumSortSpecs() const { return static_cast<int>(m_sortForAggr.size()); }

  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 protected:
  using RqExprAggr::RqExprAggr;
  RqExprSortDependentAggr() = default;
  RqExprSortDependentAggr(const RqExprSortDependentAggr& rhs, bool bNewIDs, bool bDeepCopy);

  bool PrivateIsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;

 private:
  SortDirectonVector m_sortForAggr;
  Int32Vector m_sortOrder;
};

/// An aggregate over the last rows, as many as the argument says.
template <class Derived, RqNodeType_e kKind>
class RqMovingAggr : public RqAggrWithArgument<Derived, RqExprSortDependentAggr, kKind> {
 public:
  enum { kWindowSize = RqMovingAggr::kArgument };
  using RqAggrWithArgument<Derived, RqExprSortDependentAggr, kKind>::RqAggrWithArgument;
  RqExpr* GetWindowSize() { return this->GetIthOperand(kWindowSize); }
  const RqExpr* GetWindowSize() const { return this->GetIthOperand(kWindowSize); }
};

/// An aggregate over all rows up to this one.
template <class Derived, RqNodeType_e kKind>
class RqRunningAggr : public RqWholeAggr<Derived, RqExprSortDependentAggr, kKind> {
 public:
  static constexpr AggrTraits kTraits{true, AggrAnswer::kNever, AggrAnswer::kNever, AggrAnswer::kNever, true};
  using RqWholeAggr<Derived, RqExprSortDependentAggr, kKind>::RqWholeAggr;
};

class RqExprAggrMovingAvg final : public RqMovingAggr<RqExprAggrMovingAvg, kRqExprAggrMovingAvg> {
 public:
  using RqMovingAggr::RqMovingAggr;
};

class RqExprAggrMovingSum final : public RqMovingAggr<RqExprAggrMovingSum, kRqExprAggrMovingSum> {
 public:
  using RqMovingAggr::RqMovingAggr;
};

class RqExprAggrRunningSum final : public RqRunningAggr<RqExprAggrRunningSum, kRqExprAggrRunningSum> {
 public:
  using RqRunningAggr::RqRunningAggr;
};

class RqExprAggrRunningCount final : public RqRunningAggr<RqExprAggrRunningCount, kRqExprAggrRunningCount> {
 public:
  using RqRunningAggr::RqRunningAggr;
};

class RqExprAggrRunningMax final : public RqRunningAggr<RqExprAggrRunningMax, kRqExprAggrRunningMax> {
 public:
  using RqRunningAggr::RqRunningAggr;
};

class RqExprAggrRunningMin final : public RqRunningAggr<RqExprAggrRunningMin, kRqExprAggrRunningMin> {
 public:
  using RqRunningAggr::RqRunningAggr;
};
