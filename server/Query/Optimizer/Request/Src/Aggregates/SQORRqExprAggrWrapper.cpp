#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

namespace {

RqExpr* Release(RqExpr* pExpr) { return pExpr ? static_cast<RqExpr*>(pExpr->ReleaseFromParent()) : nullptr; }

}  // namespace

RqExprAggr* RqExprAggrWrapper::GetInnermostAggr() {
  // A wrapper that is still to be read has no operands.
  RqExpr* pArg = this;
  while (pArg && pArg->IsAggrWrapper()) {
    pArg = pArg->GetNumOperands() > 0 ? static_cast<RqExprAggrWrapper*>(pArg)->GetFirstArg() : nullptr;
  }
  return pArg && pArg->IsAggr() ? static_cast<RqExprAggr*>(pArg) : nullptr;
}

RqExprAggr* RqExprAggrWrapper::GetKernelExpr() {
  if (!IsAggr()) KX_RAISE(kMsgAggregateExpected, GetName());
  auto* const pAggr = dynamic_cast<RqExprAggr*>(GetFirstArg());
  KX_ASSERT(pAggr);
  return pAggr;
}

RqExpr* RqExprAggrWrapper::GetAggrExpr() {
  RqExprAggr* const pInnermost = GetInnermostAggr();
  return pInnermost ? pInnermost->GetAggrExpr() : GetFirstArg();
}

void RqExprAggrWrapper::SetAggrExpr(RqExpr* pAggrExpr) {
  OwnedRqExprPtr aggrExpr(pAggrExpr);
  GetKernelExpr()->SetAggrExpr(aggrExpr.Release());
}

RqExprColumnList* RqExprAggrWrapper::GetControlBreak() {
  RqExprAggr* const pInnermost = GetInnermostAggr();
  return pInnermost ? pInnermost->GetControlBreak() : nullptr;
}
RqExprColumnList* RqExprAggrWrapper::GetComputeBreak() {
  RqExprAggr* const pInnermost = GetInnermostAggr();
  return pInnermost ? pInnermost->GetComputeBreak() : nullptr;
}

void RqExprAggrWrapper::SetControlBreak(RqExprColumnList* pControlBreak) {
  Heap<RqExprColumnList> controlBreak(pControlBreak);
  GetKernelExpr()->SetControlBreak(pControlBreak ? static_cast<RqExprColumnList*>(pControlBreak->DeepExprCopy(false))
                                                 : nullptr);
  RqExprAggr::SetControlBreak(controlBreak.Release());
}

void RqExprAggrWrapper::SetShareBase(const ShareBaseID& shareBaseID) {
  if (RqExprAggr* const pInnermost = GetInnermostAggr()) pInnermost->SetShareBase(shareBaseID);
}
const ShareBaseID& RqExprAggrWrapper::GetShareBase() const {
  static const ShareBaseID kNone;
  const RqExprAggr* const pInnermost = GetInnermostAggr();
  return pInnermost ? pInnermost->GetShareBase() : kNone;
}

void RqExprAggrWrapper::InstantiateDistinctComputeBreak() {
  GetKernelExpr()->InstantiateDistinctComputeBreak();
  RqExprAggr::InstantiateDistinctComputeBreak();
}

bool RqExprAggrWrapper::IsConstant() const {
  KX_ASSERT(GetIthOperand(kAggrExpr));
  return GetIthOperand(kAggrExpr)->IsConstant();
}

RqExpr* RqExprAggrWrapper::RenderOnSummaryList(RqList&) const { KX_LOGIC_ERROR(L""); }
RqExpr* RqExprAggrWrapper::RenderOntoMoreDetailedSources(ARpGateway*, bool, const SourceContentMap&,
                                                         Int32Vector&) const {
  KX_LOGIC_ERROR(L"");
}
RqExpr* RqExprAggrWrapper::RenderOntoEquivalentSource(ARpGateway*, bool, const LogicalToPhysical&,
                                                      const RqAttribute*) const {
  KX_LOGIC_ERROR(L"");
}

RqExprAggr* RqExprAggrWrapper::CreateReportAggr(const RqExprColumnList&, bool, const ReportAggrCompatFlags&) const {
  // Where this wrapper has a kernel, those in it have one, too.
  GetKernelExpr();
  return nullptr;
}

void RqExprAggrWrapper::PullupAggr(bool bDeep) {
  RqExprAggr::SetComputeBreak(nullptr);
  RqExprAggr* const pTop = GetKernelExpr();
  RqExprAggr* pBottom = pTop;
  RqExpr* pInner = pTop->GetAggrExpr();
  while (bDeep && pInner && pInner->IsAggr()) {
    pBottom = static_cast<RqExprAggr*>(pInner);
    pInner = pBottom->GetAggrExpr();
  }
  Release(pInner);
  Release(pTop);
  SetFirstArg(pInner);
  pBottom->SetAggrExpr(DeepExprCopy(false));
  RqHandleNode replaced;
  Replace(pTop, replaced);
}

// ---------------------------------------------------------------------------------------------------------------------
// Filter

RqExprAggrIf::RqExprAggrIf(RqExpr* pFirstArg, RqExpr* pFilter, bool bSecurityFilter)
    : RqNodeImpl(pFirstArg), m_bSecurityFilter(bSecurityFilter) {
  AddChild(pFilter);
  KX_ASSERT(GetNumOperands() == kNumOperands);
}

RqExprAggrIf::RqExprAggrIf(const RqExprAggrIf& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_bSecurityFilter(rhs.m_bSecurityFilter) {}

RqExprCond* RqExprAggrIf::GetFilterExpr() {
  KX_ASSERT(GetIthOperand(kFilterExpr)->IsCond());
  auto* const pCond = dynamic_cast<RqExprCond*>(GetIthOperand(kFilterExpr));
  KX_ASSERT(pCond);
  return pCond;
}

bool RqExprAggrIf::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (rhs.GetObjectType() != kRqExprAggrIf) return false;
  const auto& filter = static_cast<const RqExprAggrIf&>(rhs);
  return EquivalentFirstArgs(filter, pred) && pred(*GetFilterExpr(), *filter.GetFilterExpr());
}

void RqExprAggrIf::Distribute(const std::vector<RqExprAggr*>& aggregates) {
  RqHandleNode replaced;
  for (RqExprAggr* const pAggr : aggregates) {
    auto* const pCond = dynamic_cast<RqExpr*>(GetFilterExpr()->DeepCopy(true));
    KX_ASSERT(pCond);
    auto* const pFilter = new RqExprAggrIf(nullptr, pCond, m_bSecurityFilter);
    pAggr->Replace(pFilter, replaced);
    pFilter->SetFirstArg(Release(pAggr));
  }
  Replace(Release(GetFirstArg()), replaced);
}

void RqExprAggrIf::Unnest() {
  KXThread::LowStackCheck(0);
  RqExpr* const pFirstArg = GetFirstArg();
  if (!pFirstArg || pFirstArg->GetObjectType() != kRqExprAggrIf) return;
  auto* const pInner = static_cast<RqExprAggrIf*>(pFirstArg);
  pInner->Unnest();
  RqExpr* const pInnerArg = Release(pInner->GetFirstArg());
  RqExprCond* const pInnerFilter = pInner->GetFilterExpr();
  RqExprCond* const pOwnFilter = GetFilterExpr();
  Release(pInnerFilter);
  Release(pOwnFilter);
  SetIthOperand(kFilterExpr, new RqExprCondAnd(pOwnFilter, pInnerFilter));
  SetFirstArg(pInnerArg);
}

// ---------------------------------------------------------------------------------------------------------------------
// No aggregation

RqExprNoAggregate::RqExprNoAggregate(RqExpr* pFirstArg) : RqNodeImpl(pFirstArg) {
  KX_ASSERT(GetNumOperands() == kNumOperands);
}

bool RqExprNoAggregate::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return rhs.GetObjectType() == kRqExprNoAggregate &&
         EquivalentFirstArgs(static_cast<const RqExprNoAggregate&>(rhs), pred);
}

RqExprMashupsNoAggregate::RqExprMashupsNoAggregate(RqExpr* pFirstArg) : RqNodeImpl(pFirstArg) {
  KX_ASSERT(GetNumOperands() == kNumOperands);
}

RqExprMashupsNoAggregate::RqExprMashupsNoAggregate(const RqExprMashupsNoAggregate& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_DimensionBasedAggrCount(rhs.m_DimensionBasedAggrCount),
      m_bSplitInnerAggrForDimensionBasedAggr(rhs.m_bSplitInnerAggrForDimensionBasedAggr) {}

bool RqExprMashupsNoAggregate::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return rhs.GetObjectType() == kRqExprMashupsNoAggregate &&
         EquivalentFirstArgs(static_cast<const RqExprMashupsNoAggregate&>(rhs), pred);
}

void RqExprMashupsNoAggregate::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_DimensionBasedAggrCount);
  DataBlobUtil::ToByteVector(bv, m_bSplitInnerAggrForDimensionBasedAggr);
}
const_iterator RqExprMashupsNoAggregate::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_DimensionBasedAggrCount);
  return DataBlobUtil::FromByteVector(start, m_bSplitInnerAggrForDimensionBasedAggr);
}

// ---------------------------------------------------------------------------------------------------------------------
// Variables and members

RqExprVariableReplace::RqExprVariableReplace(RqExpr* pFirstArg, RqExprVector& nameValuePairs) : RqNodeImpl(pFirstArg) {
  for (RqExpr* const pExpr : nameValuePairs) AddChild(pExpr);
  nameValuePairs.clear();
}

const RqExprStringLiteral* RqExprVariableReplace::GetIthVariableName(int i) const {
  return static_cast<const RqExprStringLiteral*>(GetIthOperand(2 * i + kNumOperands));
}

void RqExprVariableReplace::GetVariables(
    std::vector<std::pair<const RqExprStringLiteral*, const RqExpr*>>& variables) const {
  variables.clear();
  for (int i = 0; i < GetNumberOfVariables(); ++i) {
    variables.emplace_back(GetIthVariableName(i), GetIthVariableValue(i));
  }
}

bool RqExprVariableReplace::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (rhs.GetObjectType() != kRqExprVariableReplace) return false;
  if (!EquivalentFirstArgs(static_cast<const RqExprVariableReplace&>(rhs), pred)) return false;
  for (int i = kNumOperands; i < GetNumOperands(); ++i) {
    if (i >= rhs.GetNumOperands() || !EquivalentOperands(GetIthOperand(i), rhs.GetIthOperand(i), pred)) return false;
  }
  return true;
}

RqExprQualify::RqExprQualify(RqExpr* pFirstArg, std::vector<RqExprMemberReference*>& references)
    : RqNodeImpl(pFirstArg) {
  for (RqExprMemberReference* const pReference : references) AddChild(pReference);
  references.clear();
}

RqExprMemberReference* RqExprQualify::GetIthMemberReference(int i) {
  return static_cast<RqExprMemberReference*>(GetIthOperand(i + kNumOperands));
}

void RqExprQualify::GetMemberReferences(std::vector<const RqExprMemberReference*>& references) const {
  references.clear();
  for (int i = 0; i < GetNumMemberReferences(); ++i) references.push_back(GetIthMemberReference(i));
}

void RqExprQualify::GetMemberReferencesCopies(std::vector<RqExprMemberReference*>& references) const {
  references.clear();
  for (int i = 0; i < GetNumMemberReferences(); ++i) {
    references.push_back(static_cast<RqExprMemberReference*>(GetIthMemberReference(i)->DeepCopy(false)));
  }
}

bool RqExprQualify::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (rhs.GetObjectType() != kRqExprQualify) return false;
  const auto& qualify = static_cast<const RqExprQualify&>(rhs);
  if (!EquivalentFirstArgs(qualify, pred) || GetNumMemberReferences() != qualify.GetNumMemberReferences()) return false;
  for (int i = 0; i < GetNumMemberReferences(); ++i) {
    bool bFound = false;
    for (int j = 0; j < qualify.GetNumMemberReferences() && !bFound; ++j) {
      bFound = pred(*GetIthMemberReference(i), *qualify.GetIthMemberReference(j));
    }
    if (!bFound) return false;
  }
  return true;
}
