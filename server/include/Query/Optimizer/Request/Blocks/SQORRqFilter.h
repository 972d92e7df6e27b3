#pragma once

#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

/// What the condition clauses of a block have in common: one slot, which holds the condition.
template <class Derived, RqNodeType_e kKind>
class RqFilter : public RqNodeImpl<Derived, RqNode, kKind> {
 public:
  enum { kCond, kNumChildren };

  using RqNodeImpl<Derived, RqNode, kKind>::RqNodeImpl;
  RqFilter() = default;

  /// Null if the clause was read back or copied without one.
  RqExprCond* GetCond() {
    return this->GetNumChildren() ? static_cast<RqExprCond*>(this->GetIthChild(kCond)) : nullptr;
  }
  const RqExprCond* GetCond() const { return const_cast<RqFilter*>(this)->GetCond(); }
  /// Deletes the condition that stands and takes pNewCond.
  void SetCond(RqExprCond* pNewCond) {
    if (!this->GetNumChildren()) this->SetNumChildren(kNumChildren);
    this->SetIthChild(kCond, pNewCond);
  }
  /// Hands the condition to the caller, and leaves the clause without one. Null if there is none.
  RqExprCond* ReleaseCond() {
    return this->GetNumChildren() ? static_cast<RqExprCond*>(this->ReleaseIthChild(kCond)) : nullptr;
  }
};

/// WHERE: which rows of the tables count.
class RqDetailFilter final : public RqFilter<RqDetailFilter, kRqDetailFilter> {
 public:
  RqDetailFilter() = default;  ///< No slot: the target of a read-back.
  /// Takes it.
  explicit RqDetailFilter(RqExprCond* pCond) {
    KX_ASSERT(pCond);
    AddChild(pCond);
  }
  using RqFilter::RqFilter;

  void SetCond(RqExprCond* pNewCond) {
    KX_ASSERT(pNewCond);
    RqFilter::SetCond(pNewCond);
  }
};

/// The filter that stands between the two: which rows count for a summary.
class RqSummaryFilter final : public RqFilter<RqSummaryFilter, kRqSummaryFilter> {
 public:
  RqSummaryFilter() = default;
  /// Takes it.
  explicit RqSummaryFilter(RqExprCond* pCond) { AddChild(pCond); }
  using RqFilter::RqFilter;
};

/// HAVING: which groups count.
class RqHaving final : public RqFilter<RqHaving, kRqHaving> {
 public:
  /// Takes it.
  explicit RqHaving(RqExprCond* pCond) { AddChild(pCond); }
  using RqFilter::RqFilter;
};
