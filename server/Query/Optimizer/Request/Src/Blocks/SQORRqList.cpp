#include "Query/Optimizer/Request/Blocks/SQORRqList.h"

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Host/SystemUtility.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

void ProbeQuery::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, m_MeasureName);
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_ProbeQueryType));
  DataBlobUtil::ToByteVector(bv, m_ProbeSql);
  DataBlobUtil::ToByteVector(bv, m_PresentationColumns);
  m_VBLConnectionPoolID.ToByteVector(bv);
}

const_iterator ProbeQuery::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, m_MeasureName, true);
  start = DataBlobUtil::FromByteVector(start, m_ProbeQueryType, kUnknownProbeQuery);
  start = DataBlobUtil::FromByteVector(start, m_ProbeSql, true);
  start = DataBlobUtil::FromByteVector(start, m_PresentationColumns, true);
  return m_VBLConnectionPoolID.FromByteVector(start);
}

RqNode* GetFromClause(RqNode& node) {
  return node.GetObjectType() == kRqList ? static_cast<RqList&>(node).GetJoinSpec() : nullptr;
}

RqList::RqList(int startingNumber) {
  MakeSlots(kNumChildren);
  FillSlot(kProjection, new RqProjection(startingNumber));
}

RqList::RqList(const RqList& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_bDistinct(rhs.m_bDistinct),
      m_bUnsuppressed(rhs.m_bUnsuppressed),
      m_bBypassNavigation(rhs.m_bBypassNavigation),
      m_breakColumns(rhs.m_breakColumns),
      m_DynamicSamplingLevel(rhs.m_DynamicSamplingLevel),
      m_bPredicateRewrite(rhs.m_bPredicateRewrite),
      m_ProbeSqls(rhs.m_ProbeSqls),
      m_bHdsEvaluateBreakFilter(rhs.m_bHdsEvaluateBreakFilter),
      m_bHdsSimulateUserDistinct(rhs.m_bHdsSimulateUserDistinct),
      m_HDSSummaryParameters(rhs.m_HDSSummaryParameters),
      m_bIsMarkedForRemoteRPD(rhs.m_bIsMarkedForRemoteRPD) {}

RqJoinSpec* RqList::GetJoinSpec() { return static_cast<RqJoinSpec*>(GetIthChild(kJoinSpec)); }

void RqList::SetJoinSpec(RqJoinSpec* pJoinSpec) { SetIthChild(kJoinSpec, pJoinSpec); }

void RqList::SetGroupBy(RqGroupBy* pGroupBy) {
  SetIthChild(kGroupBy, pGroupBy);
  if (m_bDistinct && GroupByCoveredByProjection()) m_bDistinct = false;
}

void RqList::ConcatenateToDetailFilter(RqExprCond* pCond) {
  if (RqDetailFilter* const pFilter = GetDetailFilter()) {
    pFilter->SetCond(RqExprCondAnd::Concatenate(pFilter->ReleaseCond(), pCond));
  } else {
    SetDetailFilter(new RqDetailFilter(pCond));
  }
}

bool RqList::GroupByCoveredByProjection() const {
  const RqGroupBy* const pGroupBy = GetGroupBy();
  if (!pGroupBy) return false;
  KXString setting;
  if (SystemUtility::Getenv(L"TELM_Remove_Distinct_Based_On_GroupBy", setting) &&
      BaseStringUtil::IsCaseInsensitiveMatch(setting, L"NO")) {
    return false;
  }
  const RqProjection* const pProjection = GetProjection();
  if (!pProjection) return true;
  for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
    const RqExpr* const pColumn = pGroupBy->GetIthColumn(i);
    if (pColumn && !pProjection->GetMatchingColumn(pColumn)) return false;
  }
  return true;
}

bool RqList::IsLeafTable() const { return ServerInfo::IsRemoteTargetType(GetTargetType()); }

bool RqList::IsLeafCandidate() const {
  const RqJoinSpec* const pJoinSpec = GetJoinSpec();
  if (!pJoinSpec) return true;
  for (int i = 0; i < pJoinSpec->GetNumTableReferences(); ++i) {
    const RqTableReference* const pReference = pJoinSpec->GetIthTableReference(i);
    if (!pReference || !pReference->IsLeafTable()) return false;
  }
  return true;
}

bool RqList::IsLeafParent() const {
  const RqJoinSpec* const pJoinSpec = GetJoinSpec();
  if (IsLeafCandidate() || !pJoinSpec) return false;
  for (int i = 0; i < pJoinSpec->GetNumTableReferences(); ++i) {
    const RqTableReference* const pReference = pJoinSpec->GetIthTableReference(i);
    if (!pReference || !pReference->IsDerivedTableReference()) return false;
    if (!pReference->GetDerivedTable()->GetInnerList()->IsLeafCandidate()) return false;
  }
  return true;
}

/// Null if there are several.
const RqTableReference* RqList::GetSoleTableReference() const {
  const RqJoinSpec* const pJoinSpec = GetJoinSpec();
  KX_ASSERT(pJoinSpec);
  return pJoinSpec->GetNumTableReferences() == 1 ? pJoinSpec->GetIthTableReference(0) : nullptr;
}

bool RqList::IsArtifactListNode() const {
  const RqTableReference* const pReference = GetSoleTableReference();
  if (!pReference || pReference->GetJoinType() != SqlTableRef::kInnerJoin) return false;
  const RqAbstractTable* const pLeft = pReference->GetLeftTable();
  return pLeft && pLeft->IsDerivedTable() && static_cast<const RqDerivedTable*>(pLeft)->GetInnerList()->IsRqList();
}

bool RqList::IsOpaqueTableWrapper() const {
  const RqTableReference* const pReference = GetSoleTableReference();
  if (!pReference || pReference->GetRightTable()) return false;
  return pReference->GetLeftTable() && pReference->GetLeftTable()->IsRqOpaqueTable();
}

bool RqList::IsEquivalent(const RqAbstractTable& rhs) const {
  if (!RqAbstractTable::IsEquivalent(rhs) || GetNumChildren() != rhs.GetNumChildren()) return false;
  const auto& other = static_cast<const RqList&>(rhs);
  const RqProjection* const pProjection = GetProjection();
  if (pProjection && other.GetProjection() && !pProjection->IsEquivalent(*other.GetProjection())) return false;
  const RqJoinSpec* const pJoinSpec = GetJoinSpec();
  if (pJoinSpec && other.GetJoinSpec() && !pJoinSpec->IsEquivalent(*other.GetJoinSpec())) return false;

  const RqEquivalence equivalence;
  const auto areEquivalent = [&equivalence](const auto& mine, const auto& others) {
    const RqExprCond* const pMine = mine.GetCond();
    const RqExprCond* const pOthers = others.GetCond();
    return !pMine || !pOthers || equivalence(*pMine, *pOthers);
  };
  const RqDetailFilter* const pDetail = GetDetailFilter();
  if (!pDetail != !other.GetDetailFilter()) return false;
  if (!pDetail) return true;
  if (!areEquivalent(*pDetail, *other.GetDetailFilter())) return false;
  const RqSummaryFilter* const pSummary = GetSummaryFilter();
  if (!pSummary != !other.GetSummaryFilter()) return false;
  return !pSummary || areEquivalent(*pSummary, *other.GetSummaryFilter());
}

void RqList::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bDistinct);
  DataBlobUtil::ToByteVector(bv, m_breakColumns);
  DataBlobUtil::ToByteVector(bv, m_DynamicSamplingLevel);
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_ProbeSqls.size()));
  for (const ProbeQuery& probe : m_ProbeSqls) probe.ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bHdsEvaluateBreakFilter);
  DataBlobUtil::ToByteVector(bv, m_bHdsSimulateUserDistinct);
  DataBlobUtil::ToByteVector(bv, m_bIsMarkedForRemoteRPD);
  m_HDSSummaryParameters.ToByteVector(bv);
}

const_iterator RqList::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_bDistinct);
  start = DataBlobUtil::FromByteVector(start, m_breakColumns);
  start = DataBlobUtil::FromByteVector(start, m_DynamicSamplingLevel);
  std::uint32_t numProbes;
  start = DataBlobUtil::FromByteVector(start, numProbes);
  m_ProbeSqls.clear();
  for (std::uint32_t i = 0; i < numProbes; ++i) start = m_ProbeSqls.emplace_back().FromByteVector(start);
  start = DataBlobUtil::FromByteVector(start, m_bHdsEvaluateBreakFilter);
  start = DataBlobUtil::FromByteVector(start, m_bHdsSimulateUserDistinct);
  start = DataBlobUtil::FromByteVector(start, m_bIsMarkedForRemoteRPD);
  return m_HDSSummaryParameters.FromByteVector(start);
}
