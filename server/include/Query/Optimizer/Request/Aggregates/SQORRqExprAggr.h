#pragma once

#include <cstdint>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/KXAssert.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprUtility.h"

class RqDimensionAggr;
class RqList;

/// Identifiers of logical columns: aggregates of one share base may share one computation.
using ShareBaseID = VoidIDVector;
using DimensionIndexVec = KXNodeVector<std::uint32_t>;

/// Has plain and dimension-based aggregates instantiated in different ways. Each result is a new expression of the
/// caller's.
class AggrRequestMediator {
 public:
  virtual ~AggrRequestMediator() = default;
  virtual RqExpr* InstantiateNormalAggr() = 0;
  virtual RqExpr* InstantiateDimensionAggr(const RqDimensionAggr* pAggr) = 0;
};

/// The switches that bear on report aggregates, read once for many of them.
struct ReportAggrCompatFlags {
  explicit ReportAggrCompatFlags(ARpGateway* pRp);

  bool bIsReportAggregateThroughToDate;
  bool bEnable26204777;
};

/// An aggregate: an expression, and the grain at which it is aggregated. The control break is its partition: the
/// columns whose change starts a new value. The compute break is finer: there the aggregate is computed before it is
/// rolled up to the control break. A break that is null and one without columns are the same: no break.
///
/// Invariant, as long as breaks are set through SetControlBreak and SetComputeBreak: where both have columns, the
/// compute break begins with those of the control break, in their order.
///
/// A distinct aggregate is computed at the grain of its control break and its own expression. It has no compute break
/// until InstantiateDistinctComputeBreak makes that one; and an aggregate whose compute break holds its expression is
/// distinct by that alone.
///
/// The rewritings (Render…) leave the aggregate as it is and give a new expression to the caller, or null when it
/// cannot be done. What needs an inner column adds it to the inner block.
class RqExprAggr : public RqExpr {
 public:
  enum { kAggrExpr, kControlBreak, kComputeBreak, kNumOperands };

  virtual RqExpr* GetAggrExpr() { return GetIthOperand(kAggrExpr); }
  const RqExpr* GetAggrExpr() const { return const_cast<RqExprAggr*>(this)->GetAggrExpr(); }
  /// Takes the expression and deletes the one that stood.
  virtual void SetAggrExpr(RqExpr* pAggrExpr) { SetIthOperand(kAggrExpr, pAggrExpr); }
  virtual RqExprColumnList* GetControlBreak() { return GetBreak(kControlBreak); }
  const RqExprColumnList* GetControlBreak() const { return const_cast<RqExprAggr*>(this)->GetControlBreak(); }
  /// Takes the list and deletes the one that stood. Columns of the compute break change place so that it begins with
  /// those of the list, unless the list is the longer one.
  virtual void SetControlBreak(RqExprColumnList* pControlBreak);
  virtual RqExprColumnList* GetComputeBreak() { return GetBreak(kComputeBreak); }
  const RqExprColumnList* GetComputeBreak() const { return const_cast<RqExprAggr*>(this)->GetComputeBreak(); }
  /// Takes the list and deletes the one that stood. Columns of the control break that are in the list come first in
  /// both, in the order of the control break. Those that are not move behind them in the control break, and copies of
  /// them come next in the list; wanted: no copies when the columns found are as many as the list has.
  virtual void SetComputeBreak(RqExprColumnList* pComputeBreak);
  /// Whether the database that it is marked for may compute it.
  virtual bool IsTargetSupportedAggr() const;
  /// The fact table of a measure; null for a plain aggregate.
  virtual VoidID GetLogicalFactTableID(ARpGateway* pRp) const;
  /// Gives a distinct aggregate its compute break: the control break and the aggregated expression. Once it has one,
  /// nothing is changed.
  virtual void InstantiateDistinctComputeBreak();
  /// Leaves the compute break alone.
  virtual void SetDistinctAggregation(bool bDistinct) { m_bDistinctAggregation = bDistinct; }

  /// The aggregate as it stands in a block over inner. Where inner is grouped, partial values go into inner and are
  /// combined here.
  virtual RqExpr* RenderOnSummaryList(RqList& inner) const = 0;
  /// The plain aggregate, in a block over inner, that a report aggregate asks for. A logic error on other kinds.
  virtual RqExpr* RenderReportAggrOnInnerList(RqList& inner) const;
  /// Whether its value depends on other rows than those it is grouped with, as a ranking's does.
  virtual bool IsFunctionalAggregate() const { return false; }
  /// Whether its value depends on the order of rows.
  virtual bool IsSortDependent() const { return false; }
  virtual bool IsNoAggrsInAggregateBy() const { return m_bIsNoAggrsInAggregateBy; }
  virtual void SetNoAggrsInAggregateBy(bool bValue) { m_bIsNoAggrsInAggregateBy = bValue; }
  /// Whether its rewriting may be another kind or more than one aggregate.
  virtual bool IsComplexRenderAggr() const = 0;
  /// Whether partial values combine to its value.
  virtual bool SupportsAggrSplitting() const = 0;
  /// Whether its value at a source combines to its value.
  virtual bool SupportsEquivalentAggrSplitting() const = 0;
  /// The aggregate over sources that are more detailed. Appends the rows of the map that it needs to indexes; wanted:
  /// the kinds with a single partial append it even when they then give null.
  virtual RqExpr* RenderOntoMoreDetailedSources(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                                Int32Vector& indexes) const = 0;
  /// The aggregate over the translation that mapping has; with pAttr, over its own expression in which the translation
  /// takes that attribute's place. Raises ErrorMessage when the attribute does not occur.
  virtual RqExpr* RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                             const RqAttribute* pAttr) const;
  virtual RqExpr* InstantiateAggrBreakExprs(AggrRequestMediator& mediator) const;
  virtual void SetShareBase(const ShareBaseID& shareBaseID) { m_shareBaseID = shareBaseID; }
  virtual const ShareBaseID& GetShareBase() const { return m_shareBaseID; }
  virtual bool IsShareBase() const { return !m_shareBaseID.empty(); }
  /// The aggregate that totals this one over the columns of a report, as a plain aggregate if bAsDetail says so; null
  /// when there is none.
  virtual RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                                       const ReportAggrCompatFlags& flags) const;
  /// Whether the aggregate of partial values is the aggregate of all values.
  virtual bool IsDistributiveAggr() const { return false; }
  /// The expression of the partial value at a source, with a copy of the breaks as control break. A logic error on
  /// kinds that are not distributive.
  virtual RqExpr* GetSourceAggregator(RqExprColumnList* pBreaks) const;
  /// The aggregate over the partial values that the column of list has. A logic error on kinds that are not
  /// distributive.
  virtual RqExprAggr* GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const;

  bool IsAggr() const override { return true; }
  /// Wanted: an aggregate over a constant depends on the rows and is none; one over what is always null is.
  bool IsConstant() const override;
  /// Structure, breaks and whether it is distinct; share base and marks take no part. A dimension-based rhs decides
  /// for itself.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  bool IsMashupsPinnedExpr() const override { return m_bIsMashupsPinnedExpr; }
  RqNodeType_e GetObjectType() const override { return kRqExprAggr; }
  /// Marks that a rewriting needs only while it runs are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

  /// Never to be pushed to a remote target.
  bool IsBuiltInExecutionOnly() const { return m_bBuiltInExecutionOnly; }
  void SetBuiltInExecutionOnly(bool bValue) { m_bBuiltInExecutionOnly = bValue; }
  /// Whether it may be written as a window aggregate.
  bool IsSQL99Aggregation() const { return m_bSQL99Aggregation; }
  /// Only the kinds that have such a form keep a true value, and all of them but the count only while not distinct.
  void SetSQL99Aggregation(bool bValue);
  bool IsComputeBreakRedundant() const { return m_bComputeBreakRedundant; }
  void MarkComputeBreakRedundant() { m_bComputeBreakRedundant = true; }
  bool IsDistinctAggregation() const { return m_bDistinctAggregation; }
  /// Whether the compute break holds the aggregated expression.
  bool HasDistinctComputeBreak() const;
  /// Grand-total degenerate dimensions, by index.
  void AddGTDegenDim(std::uint32_t dimensionIndex) { m_gtDegenDims.push_back(dimensionIndex); }
  const DimensionIndexVec& GetGTDegenDims() const { return m_gtDegenDims; }
  void SetIsMashupsPinnedExpr(bool bValue) { m_bIsMashupsPinnedExpr = bValue; }
  bool IsMeasurePredicateTransform() const { return m_bMeasurePredicateTransform; }
  void SetMeasurePredicateTransform(bool bValue) { m_bMeasurePredicateTransform = bValue; }
  bool IsOverrideAsScalar() const { return m_bOverrideAsScalar; }
  void SetOverrideAsScalar(bool bValue) { m_bOverrideAsScalar = bValue; }
  /// Whether it stands for a distinct aggregate that was rewritten.
  bool IsRewrittenDistinct() const { return m_bIsRewrittenDistinct; }
  void SetRewrittenDistinct(bool bValue) { m_bIsRewrittenDistinct = bValue; }

  /// Takes an expression and gives it back with each topmost aggregate replaced by what it aggregates. Recursive;
  /// raises ErrorMessage when the stack runs low, and the expression is then deleted.
  static RqExpr* SimplifyConstantExpr(RqExpr* pExpr);
  /// Puts copies of replacement, and last replacement itself, in the places of the attribute in the tree, which must
  /// not be the attribute itself. Raises ErrorMessage kMsgAttributeNotInExpression, with nothing changed, if there is
  /// no such place.
  static void ReplaceAllOccurrences(ARpGateway* pRp, RqExpr* pTree, const RqAttribute& attr, Heap<RqExpr>& replacement);
  /// Puts the columns of a break list into the projection of inner, and makes a list of references to them: sorted,
  /// without constants and duplicates. Null for null. The caller owns it.
  static RqExprColumnList* RenderBreakList(const RqExprColumnList* pList, RqList& inner);

 protected:
  RqExprAggr() = default;
  /// Takes the expression and the breaks. A distinct aggregate must come without a compute break.
  RqExprAggr(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak, bool bDistinct);
  RqExprAggr(const RqExprAggr& rhs, bool bNewIDs, bool bDeepCopy);

  /// IsEquivalent for an rhs that is not dimension-based.
  virtual bool PrivateIsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const;

  /// The report aggregate of a kind that TDetail totals, or TReport in a report: over a copy of this aggregate. Without
  /// a control break an aggregate over aggregates is its own total.
  template <class TDetail, class TReport>
  RqExprAggr* CreateReportAggrHelper(const RqExprColumnList& columns, bool bAsDetail) const {
    Heap<RqExprAggr> copy(static_cast<RqExprAggr*>(DeepExprCopy(false)));
    Heap<RqExprColumnList> compute;
    if (HasColumns(GetControlBreak())) {
      compute = static_cast<RqExprColumnList*>(GetControlBreak()->DeepCopy(false));
    } else if (IsOverAggregates()) {
      return copy.Release();
    }
    auto* const pColumns = static_cast<RqExprColumnList*>(columns.DeepCopy(false));
    if (bAsDetail) return new TDetail(copy.Release(), pColumns, compute.Release(), false);
    return new TReport(copy.Release(), pColumns, compute.Release());
  }

  /// Both null, or both there and equal.
  static bool EquivalentOperands(const RqExpr* pLhs, const RqExpr* pRhs, const RqEquivalence& pred) {
    return pLhs && pRhs ? pred(*pLhs, *pRhs) : pLhs == pRhs;
  }
  static bool HasColumns(const RqExprColumnList* pBreak) { return pBreak && pBreak->GetNumColumns() > 0; }

  // What the rewritings of the kinds are made of.

  /// Makes an aggregate of a kind of what it takes: an expression, a control break, a compute break, distinct.
  using MakeAggr = RqExprAggr* (*)(RqExpr*, RqExprColumnList*, RqExprColumnList*, bool);

  /// A new reference to the column of inner that computes the expression; it is added where there is none.
  static RqExpr* MakeReference(RqList& inner, const RqExpr* pExpr);
  /// What a rewriting that is made with a compute break may be made distinct with: a compute break says it by itself.
  bool IsDistinctWithout(const RqExprColumnList* pComputeBreak) const {
    return IsDistinctAggregation() && !pComputeBreak;
  }
  /// Gives a rewriting back, distinct if this aggregate is.
  RqExpr* AsDistinctAsThis(RqExprAggr* pAggr) const;
  /// An aggregate that stays whole over a column of inner that holds its expression.
  RqExpr* RenderWhole(RqList& inner, MakeAggr makeAggr) const;
  /// This aggregate becomes a column of inner, and one that makeAggr makes stands over it.
  RqExpr* RenderSelf(RqList& inner, MakeAggr makeAggr) const;
  /// One that makeAggr makes over a column of inner that holds the expression, and may hold an aggregate itself.
  RqExpr* RenderOperand(RqList& inner, MakeAggr makeAggr) const;
  /// RenderWhole over an inner block that is not grouped; over one that is, a partial aggregate inside and one that
  /// combines its values here.
  RqExpr* RenderInTwoSteps(RqList& inner, MakeAggr makeSame, MakeAggr makePartial, MakeAggr makeCombining) const;
  /// The column of inner that holds a partial aggregate over pExpr, which is taken, at the grain of inner.
  static RqDerivedColumn* InsertPartial(RqList& inner, Heap<RqExpr> expr, bool bDistinct, MakeAggr makePartial);
  /// The aggregate that combines the partial values of a column of inner.
  RqExpr* Combine(RqDerivedColumn* pColumn, RqList& inner, MakeAggr makeCombining) const;
  /// The translation of a kind that makeAggr totals.
  RqExpr* RenderTranslation(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping, const RqAttribute* pAttr,
                            MakeAggr makeAggr) const;
  /// The translation of the row of the map that has this aggregate.
  RqExpr* RenderMapped(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map, Int32Vector& indexes) const;

 private:
  /// Whether the aggregated expression, which must be there, holds an aggregate.
  bool IsOverAggregates() const;
  RqExprColumnList* GetBreak(int slot) { return static_cast<RqExprColumnList*>(GetIthOperand(slot)); }

  bool m_bDistinctAggregation = false;
  bool m_bBuiltInExecutionOnly = false;
  bool m_bSQL99Aggregation = false;
  bool m_bComputeBreakRedundant = false;
  ShareBaseID m_shareBaseID;
  DimensionIndexVec m_gtDegenDims;
  bool m_bIsNoAggrsInAggregateBy = false;
  bool m_bIsMashupsPinnedExpr = false;
  bool m_bMeasurePredicateTransform = false;
  bool m_bOverrideAsScalar = false;
  bool m_bIsRewrittenDistinct = false;
};

using OwnedRqExprAggrPtr = Heap<RqExprAggr>;

/// Whether two breaks are equal: no break, or equivalent lists.
bool EquivalentBreakClauses(const RqExprColumnList* pLhs, const RqExprColumnList* pRhs, const RqEquivalence& pred);

/// An empty report aggregate for a dimension's rule, by the kind of the rule's aggregate; the caller owns it. Null
/// where there is none.
RqExprAggr* CreateReportCommon(RqNodeType_e aggrType, bool bDistinct);

// ---------------------------------------------------------------------------------------------------------------------
// What the kinds have in common

/// When something can be done with an aggregate.
enum class AggrAnswer : std::uint8_t { kNever, kUnlessDistinct, kAlways };

/// What a kind answers to the questions that steer splitting.
struct AggrTraits {
  bool m_bComplexRender;
  AggrAnswer m_splitting;
  AggrAnswer m_equivalentSplitting;
  AggrAnswer m_distributive = AggrAnswer::kNever;
  bool m_bFunctional = false;
};

/// An aggregate of a kind that is made of the four. A compute break makes it distinct by itself, where it holds the
/// expression; a distinct one without is made as such.
template <class Aggr>
RqExprAggr* NewAggr(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak,
                    bool bDistinct) {
  auto* const pAggr = new Aggr(pAggrExpr, pControlBreak, pComputeBreak, bDistinct && !pComputeBreak);
  if (bDistinct) pAggr->SetDistinctAggregation(true);
  return pAggr;
}

/// A kind of aggregate. Derived says what it answers in kTraits.
template <class Derived, class Base, RqNodeType_e kKind>
class RqAggrKind : public RqNodeImpl<Derived, Base, kKind> {
 public:
  using RqNodeImpl<Derived, Base, kKind>::RqNodeImpl;
  RqAggrKind() = default;
  RqAggrKind(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak, bool bDistinct)
      : RqNodeImpl<Derived, Base, kKind>(pAggrExpr, pControlBreak, pComputeBreak, bDistinct) {}

  bool IsComplexRenderAggr() const override { return Derived::kTraits.m_bComplexRender; }
  bool SupportsAggrSplitting() const override { return Answer(Derived::kTraits.m_splitting); }
  bool SupportsEquivalentAggrSplitting() const override { return Answer(Derived::kTraits.m_equivalentSplitting); }
  bool IsDistributiveAggr() const override { return Answer(Derived::kTraits.m_distributive); }
  bool IsFunctionalAggregate() const override { return Derived::kTraits.m_bFunctional; }

 private:
  bool Answer(AggrAnswer answer) const {
    return answer == AggrAnswer::kAlways || (answer == AggrAnswer::kUnlessDistinct && !this->IsDistinctAggregation());
  }
};

/// A kind whose partial values Combining combines; a value from a source is such a partial value.
template <class Derived, RqNodeType_e kKind, class Combining = Derived>
class RqCombiningAggr : public RqAggrKind<Derived, RqExprAggr, kKind> {
 public:
  using RqAggrKind<Derived, RqExprAggr, kKind>::RqAggrKind;

  RqExpr* RenderOnSummaryList(RqList& inner) const override {
    return this->RenderInTwoSteps(inner, &NewAggr<Derived>, &NewAggr<Derived>, &NewAggr<Combining>);
  }
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                        Int32Vector& indexes) const override {
    return this->RenderMapped(pRp, bPhysical, map, indexes);
  }
  RqExpr* RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                     const RqAttribute* pAttr) const override {
    return this->RenderTranslation(pRp, bPhysical, mapping, pAttr, &NewAggr<Combining>);
  }
};

/// A kind that is not split: it stays whole over the inner block, grouped or not, and no source has its value.
template <class Derived, class Base, RqNodeType_e kKind>
class RqWholeAggr : public RqAggrKind<Derived, Base, kKind> {
 public:
  using RqAggrKind<Derived, Base, kKind>::RqAggrKind;

  RqExpr* RenderOnSummaryList(RqList& inner) const override { return this->RenderWhole(inner, &NewAggr<Derived>); }
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway*, bool, const SourceContentMap&, Int32Vector&) const override {
    return nullptr;
  }
};
