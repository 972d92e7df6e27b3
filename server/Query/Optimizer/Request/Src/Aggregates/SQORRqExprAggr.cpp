#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXThread.h"
#include "Host/SUCompatFlag.h"
#include "Host/ServerInfo.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

ReportAggrCompatFlags::ReportAggrCompatFlags(ARpGateway* pRp)
    : bIsReportAggregateThroughToDate(SOCompatFlag::GetBool(L"TELM_REPORT_AGGREGATE_THROUGH_TODATE", pRp)),
      bEnable26204777(SOCompatFlag::GetBool(L"TELM_ENABLE_26204777", pRp)) {}

RqExprAggr::RqExprAggr(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak,
                       bool bDistinct)
    : m_bDistinctAggregation(bDistinct) {
  SetNumOperands(kNumOperands);
  SetIthChild(kAggrExpr, pAggrExpr);
  SetIthChild(kControlBreak, pControlBreak);
  if (bDistinct) {
    KX_ASSERT(pComputeBreak == NULL);
    return;
  }
  RqExprAggr::SetComputeBreak(pComputeBreak);
  m_bDistinctAggregation = HasDistinctComputeBreak();
}

RqExprAggr::RqExprAggr(const RqExprAggr& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExpr(rhs, bNewIDs, bDeepCopy),
      m_bDistinctAggregation(rhs.m_bDistinctAggregation),
      m_bBuiltInExecutionOnly(rhs.m_bBuiltInExecutionOnly),
      m_bSQL99Aggregation(rhs.m_bSQL99Aggregation),
      m_bComputeBreakRedundant(rhs.m_bComputeBreakRedundant),
      m_shareBaseID(rhs.m_shareBaseID),
      m_gtDegenDims(rhs.m_gtDegenDims),
      m_bIsNoAggrsInAggregateBy(rhs.m_bIsNoAggrsInAggregateBy),
      m_bIsMashupsPinnedExpr(rhs.m_bIsMashupsPinnedExpr),
      m_bMeasurePredicateTransform(rhs.m_bMeasurePredicateTransform),
      m_bOverrideAsScalar(rhs.m_bOverrideAsScalar),
      m_bIsRewrittenDistinct(rhs.m_bIsRewrittenDistinct) {}

// ---------------------------------------------------------------------------------------------------------------------
// Breaks

namespace {

/// The index of the first column from a place on that equals column; -1 if there is none.
int FindColumn(const RqExprColumnList& list, const RqExpr& column, int from) {
  const RqEquivalence equivalence;
  for (int i = from; i < list.GetNumColumns(); ++i) {
    if (const RqExpr* const pColumn = list.GetIthColumn(i); pColumn && equivalence(column, *pColumn)) return i;
  }
  return -1;
}

void SwapColumns(RqExprColumnList& list, int i, int j) {
  auto* const pFirst = static_cast<RqExpr*>(list.ReleaseIthChild(i));
  auto* const pSecond = static_cast<RqExpr*>(list.ReleaseIthChild(j));
  list.SetIthColumn(i, pSecond);
  list.SetIthColumn(j, pFirst);
}

RqExpr* ReleaseColumn(RqExprColumnList& list, int i) { return static_cast<RqExpr*>(list.ReleaseIthChild(i)); }

/// Puts columns into a list that has none left.
void PutColumns(RqExprColumnList& list, const RqExprVector& columns) {
  for (int i = 0; RqExpr* const pColumn : columns) list.SetIthColumn(i++, pColumn);
}

/// Gives two breaks one order.
/// Law: the same columns stand in each as before, and in compute copies of those of control that it lacked.
/// Ensures: compute begins with the columns of control, in their order, but for those of which no copy was made.
/// Cost: n log n comparisons.
void AlignBreaks(RqExprColumnList& control, RqExprColumnList& compute) {
  RqExprSet computeSet;
  for (int i = 0; i < compute.GetNumColumns(); ++i) computeSet.insert(compute.GetIthColumn(i));

  RqExprVector controlColumns, computeColumns;
  const int numControl = control.GetNumColumns();
  for (int i = 0; i < numControl; ++i) {
    const auto found = computeSet.find(control.GetIthColumn(i));
    if (!control.GetIthColumn(i) || found == computeSet.end()) continue;
    // A column that stands twice in the control break finds its counterpart taken.
    RqExpr* const pMember = *found;
    if (pMember->GetParent()) computeColumns.push_back(static_cast<RqExpr*>(pMember->ReleaseFromParent()));
    controlColumns.push_back(ReleaseColumn(control, i));
  }

  const bool bCopyMissing = static_cast<int>(computeColumns.size()) < compute.GetNumColumns();
  for (int i = 0; i < numControl; ++i) {
    if (!control.GetIthColumn(i)) continue;
    controlColumns.push_back(ReleaseColumn(control, i));
    if (bCopyMissing) computeColumns.push_back(controlColumns.back()->DeepExprCopy(true));
  }
  for (int i = 0; i < compute.GetNumColumns(); ++i) {
    if (compute.GetIthColumn(i)) computeColumns.push_back(ReleaseColumn(compute, i));
  }

  PutColumns(control, controlColumns);
  compute.SetNumColumns(static_cast<int>(computeColumns.size()));
  PutColumns(compute, computeColumns);
}

}  // namespace

void RqExprAggr::SetControlBreak(RqExprColumnList* pControlBreak) {
  RqExprColumnList* const pComputeBreak = GetComputeBreak();
  if (HasColumns(pControlBreak) && HasColumns(pComputeBreak) &&
      pControlBreak->GetNumColumns() <= pComputeBreak->GetNumColumns()) {
    for (int i = 0; i < pControlBreak->GetNumColumns(); ++i) {
      const RqExpr* const pColumn = pControlBreak->GetIthColumn(i);
      const int found = pColumn ? FindColumn(*pComputeBreak, *pColumn, i) : -1;
      if (found > i) SwapColumns(*pComputeBreak, i, found);
    }
  }
  RqExprUtility::RemoveExternalJoiningIndexes(pControlBreak);
  SetIthOperand(kControlBreak, pControlBreak);
}

void RqExprAggr::SetComputeBreak(RqExprColumnList* pComputeBreak) {
  if (pComputeBreak && GetControlBreak()) AlignBreaks(*GetControlBreak(), *pComputeBreak);
  RqExprUtility::RemoveExternalJoiningIndexes(pComputeBreak);
  SetIthOperand(kComputeBreak, pComputeBreak);
}

bool RqExprAggr::HasDistinctComputeBreak() const {
  if (!HasColumns(GetComputeBreak())) return false;
  KX_ASSERT(GetAggrExpr());
  return GetComputeBreak()->HasEquivalentMember(*GetAggrExpr());
}

void RqExprAggr::InstantiateDistinctComputeBreak() {
  if (!IsDistinctAggregation() || GetComputeBreak()) return;
  const RqExprColumnList* const pControlBreak = GetControlBreak();
  SetComputeBreak(pControlBreak ? static_cast<RqExprColumnList*>(pControlBreak->DeepCopy(true))
                                : new RqExprColumnList());
  RqExprColumnList* const pComputeBreak = GetComputeBreak();
  // A wrapper that is given one answers with that of its kernel.
  if (pComputeBreak && !pComputeBreak->HasEquivalentMember(*GetAggrExpr())) {
    pComputeBreak->AddChild(GetAggrExpr()->DeepCopy(true));
  }
}

bool EquivalentBreakClauses(const RqExprColumnList* pLhs, const RqExprColumnList* pRhs, const RqEquivalence& pred) {
  if (pLhs && pRhs) return pLhs->IsEquivalent(*pRhs, pred);
  const RqExprColumnList* const pOnly = pLhs ? pLhs : pRhs;
  return !pOnly || pOnly->GetNumColumns() == 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Answers

void RqExprAggr::SetSQL99Aggregation(bool bValue) {
  switch (GetObjectType()) {
    case kRqExprAggrCount:
      m_bSQL99Aggregation = bValue;
      break;
    case kRqExprAggrSum:
    case kRqExprAggrAvg:
    case kRqExprAggrStddev:
    case kRqExprAggrMedian:
    case kRqExprAggrMin:
    case kRqExprAggrMax:
      m_bSQL99Aggregation = bValue && !IsDistinctAggregation();
      break;
    default:
      m_bSQL99Aggregation = false;
  }
}

bool RqExprAggr::IsTargetSupportedAggr() const {
  return !m_bBuiltInExecutionOnly && ServerInfo::IsRemoteTargetType(GetTargetType());
}

VoidID RqExprAggr::GetLogicalFactTableID(ARpGateway*) const { return VoidID::NullID; }
RqExpr* RqExprAggr::RenderReportAggrOnInnerList(RqList&) const { KX_LOGIC_ERROR(L""); }
RqExpr* RqExprAggr::RenderOntoEquivalentSource(ARpGateway*, bool, const LogicalToPhysical&, const RqAttribute*) const {
  return nullptr;
}
RqExpr* RqExprAggr::InstantiateAggrBreakExprs(AggrRequestMediator& mediator) const {
  return mediator.InstantiateNormalAggr();
}
RqExprAggr* RqExprAggr::CreateReportAggr(const RqExprColumnList&, bool, const ReportAggrCompatFlags&) const {
  return nullptr;
}
RqExpr* RqExprAggr::GetSourceAggregator(RqExprColumnList*) const { KX_LOGIC_ERROR(L""); }
RqExprAggr* RqExprAggr::GetPartialsAggregator(RqDerivedColumn*, RqList&) const { KX_LOGIC_ERROR(L""); }

bool RqExprAggr::IsOverAggregates() const {
  const RqExpr* const aggrExpr = GetAggrExpr();
  KX_ASSERT(aggrExpr);
  return FoundNodes(aggrExpr, RqNode::IsAggrNode());
}

RqExprAggr* CreateReportCommon(RqNodeType_e aggrType, bool bDistinct) {
  switch (aggrType) {
    case kRqExprAggrSum:
    case kRqExprAggrCount:
      return bDistinct ? nullptr : new RqExprAggrReportSum(nullptr, nullptr, nullptr);
    case kRqExprAggrAvg:
      return SUCompatFlag::GetBool(L"TELM_UNDO_14335601") ? new RqExprAggrReportAvg(nullptr, nullptr, nullptr)
                                                          : nullptr;
    case kRqExprAggrMin:
      return new RqExprAggrReportMin(nullptr, nullptr, nullptr);
    case kRqExprAggrMax:
      return new RqExprAggrReportMax(nullptr, nullptr, nullptr);
    default:
      return nullptr;
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparison and bytes

bool RqExprAggr::IsConstant() const {
  KX_ASSERT(GetAggrExpr());
  return GetAggrExpr()->IsAlwaysNull();
}

bool RqExprAggr::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (rhs.GetObjectType() == kRqDimensionAggr) return rhs.IsEquivalent(*this, pred);
  return PrivateIsEquivalent(rhs, pred);
}

bool RqExprAggr::PrivateIsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (GetObjectType() != rhs.GetObjectType() || GetNumOperands() != rhs.GetNumOperands()) return false;
  const auto& aggr = static_cast<const RqExprAggr&>(rhs);
  return EquivalentOperands(GetAggrExpr(), aggr.GetAggrExpr(), pred) &&
         EquivalentBreakClauses(GetControlBreak(), aggr.GetControlBreak(), pred) &&
         EquivalentBreakClauses(GetComputeBreak(), aggr.GetComputeBreak(), pred) &&
         m_bDistinctAggregation == aggr.m_bDistinctAggregation;
}

bool RqExprAggr::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprAggr& aggr) { return aggr.m_bDistinctAggregation; });
}

void RqExprAggr::ToByteVector(ByteVector& bv) {
  RqExpr::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bDistinctAggregation);
  DataBlobUtil::ToByteVector(bv, m_bBuiltInExecutionOnly);
  VoidIDVectorUtil::ToByteVector(bv, m_shareBaseID);
  DataBlobUtil::ToByteVector(bv, m_bIsMashupsPinnedExpr);
  DataBlobUtil::ToByteVector(bv, m_bOverrideAsScalar);
  DataBlobUtil::ToByteVector(bv, m_bIsRewrittenDistinct);
}

const_iterator RqExprAggr::FromByteVector(const_iterator start) {
  start = RqExpr::FromByteVector(start);
  start = DataBlobUtil::FromByteVector(start, m_bDistinctAggregation);
  start = DataBlobUtil::FromByteVector(start, m_bBuiltInExecutionOnly);
  start = VoidIDVectorUtil::FromByteVector(start, m_shareBaseID);
  start = DataBlobUtil::FromByteVector(start, m_bIsMashupsPinnedExpr);
  start = DataBlobUtil::FromByteVector(start, m_bOverrideAsScalar);
  return DataBlobUtil::FromByteVector(start, m_bIsRewrittenDistinct);
}

// ---------------------------------------------------------------------------------------------------------------------
// Sweeps

RqExpr* RqExprAggr::SimplifyConstantExpr(RqExpr* pExpr) {
  if (!pExpr) return nullptr;
  const OwnedRqExprPtr expr(pExpr);
  KXThread::LowStackCheck(0);
  if (pExpr->IsAggr()) {
    RqExpr* const pAggrExpr = static_cast<RqExprAggr*>(pExpr)->GetAggrExpr();
    return pAggrExpr ? static_cast<RqExpr*>(pAggrExpr->ReleaseFromParent()) : nullptr;
  }
  for (int i = 0; i < pExpr->GetNumOperands(); ++i) {
    pExpr->SetIthOperand(i, SimplifyConstantExpr(static_cast<RqExpr*>(pExpr->ReleaseIthChild(i))));
  }
  return expr.Release();
}

namespace {

[[noreturn]] void RaiseAttributeMissing(ARpGateway* pRp, const RqAttribute& attr, const RqExpr* pTree) {
  KXString attributeName, parentName;
  if (const RefAAttribute attribute = attr.GetAttribute(pRp); attribute) {
    attributeName = attribute->GetName();
    if (const RefAEntity entity(pRp, attribute->GetEntityID()); entity) parentName = entity->GetName();
  }
  KX_RAISE(kMsgAttributeNotInExpression, parentName, attributeName,
           RqDumpout::StringFrom(pTree, false, false, pRp, false));
}

}  // namespace

void RqExprAggr::ReplaceAllOccurrences(ARpGateway* pRp, RqExpr* pTree, const RqAttribute& attr,
                                       Heap<RqExpr>& replacement) {
  RqExprVector found;
  RqExpr::FindEquivalentSubExprs(pTree, attr, found);
  if (found.empty()) RaiseAttributeMissing(pRp, attr, pTree);
  RqHandleNode replaced;
  for (RqExpr* const pOccurrence : found) {
    const bool bLast = pOccurrence == found.back();
    pOccurrence->Replace(bLast ? replacement.Release() : replacement->DeepExprCopy(true), replaced);
  }
}
