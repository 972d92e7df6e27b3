#pragma once

#include <cstdint>

#include "Host/HostTypes.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"

/// GROUP BY: the columns whose equal values make a group, without constants and duplicates.
///
/// With grouping sets the rows are grouped once for each set. A set is a number that is read as bits, the lowest for
/// the last column; a clear bit means that the column is in the set.
class RqGroupBy final : public RqExprColumnList {
 public:
  static constexpr RqNodeType_e kObjectType = kRqGroupBy;

  enum InternalExecutionMode : std::uint8_t { kUnknown, kHash, kSort };

  RqGroupBy() = default;
  // The vectors of expressions are taken over and left empty, as by RqExprColumnList::Init.
  /// Stores the columns in the order of expressions.
  RqGroupBy(RqExprVector& columns, InternalExecutionMode mode);
  RqGroupBy(RqExprVector& columns, bool bSortColumns);
  /// Stores both in the order of expressions; constants may be in the granularity.
  RqGroupBy(RqExprVector& columns, RqExprVector& granularity, InternalExecutionMode mode);
  /// The granularity and the filters of the copy keep their identities.
  RqGroupBy(const RqGroupBy& rhs, bool bNewIDs, bool bDeepCopy);

  virtual bool IsGroupingSet() const { return !m_groupingSetVector.empty(); }
  virtual void SetGroupingSet(Int32Vector groupingSets) { m_groupingSetVector = std::move(groupingSets); }
  virtual const Int32Vector& GetGroupingSet() const { return m_groupingSetVector; }
  /// Appends the filters, one for each grouping set, and leaves the vector with null ones.
  virtual void SetGroupingSetFilters(OwnedRqExprCondVector& filters);
  virtual const OwnedRqExprCondVector& GetGroupingSetFilters() const { return m_groupingSetFilters; }
  virtual bool IsGroupingSetFiltersAvailable() const { return !m_groupingSetFilters.empty(); }

  /// The grain of the groups where it is not that of the columns; null where it is. Lent.
  RqExprColumnList* GetGranularity() const { return m_granularity.Get(); }
  /// How the engine is to group.
  InternalExecutionMode GetInternalExecutionMode() const { return m_internalExecutionMode; }
  void SetInternalExecutionMode(InternalExecutionMode mode) { m_internalExecutionMode = mode; }
  /// Whether columns of the select list that are not grouped are let pass.
  bool IsIgnoreProjectionConsistency() const { return m_bIgnoreProjectionInconsistency; }
  void SetIgnoreProjectionConsistency(bool bIgnore) { m_bIgnoreProjectionInconsistency = bIgnore; }

  RqNodeType_e GetObjectType() const override { return kRqGroupBy; }
  RqNode* DeepCopy(bool bNewIDs) const override { return new RqGroupBy(*this, bNewIDs, true); }
  RqExpr* ShallowCopy() const override { return new RqGroupBy(*this, true, false); }
  using RqExprColumnList::Accept;
  /// A clause to a visitor of nodes, and a column list to one of expressions.
  bool Accept(AVisitorRqNode& visitor) override { return visitor.Visit(*this); }
  /// With the granularity, the numbers of the grouping sets and their filters.
  int GetMySize() const override;
  /// The filters and the way of execution are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  [[no_unique_address]] RqNode::KindMark<kRqGroupBy> m_kindMark{this};  // in place of the list's
  Heap<RqExprColumnList> m_granularity;
  Int32Vector m_groupingSetVector;
  OwnedRqExprCondVector m_groupingSetFilters;
  InternalExecutionMode m_internalExecutionMode = kUnknown;
  bool m_bIgnoreProjectionInconsistency = false;
};
