#include "Query/Optimizer/Request/Blocks/SQORRqOrderBy.h"

#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Host/SUSystemConfig.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Features/SQORFeaturesMgr.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqSortSpec

RqSortSpec::RqSortSpec(int columnNumber, SortDirection direction, bool bNotInLogicalSelect, bool bConstantColumn,
                       NullSortDirection nullDirection)
    : m_columnNumber(columnNumber),
      m_sortDirection(direction),
      m_bNotInLogicalSelect(bNotInLogicalSelect),
      m_nullSortDirection(nullDirection),
      m_bConstantColumn(bConstantColumn) {}

RqSortSpec::RqSortSpec(const RqSortSpec& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_columnNumber(rhs.m_columnNumber),
      m_sortDirection(rhs.m_sortDirection),
      m_bNotInLogicalSelect(rhs.m_bNotInLogicalSelect),
      m_nullSortDirection(rhs.m_nullSortDirection),
      m_bConstantColumn(rhs.m_bConstantColumn) {}

bool RqSortSpec::IsNullSortDirectionIncompatibleWithDB(const RefADatabase& database, ARpGateway* pRp) const {
  const bool bDBNullsFirst =
      FeaturesMgr::IsSupportedFeature(database, SUFeaturesTable::kFeature_NullValuesSortFirst, pRp);
  const bool bAsc = m_sortDirection == kAsc;
  const bool bWantFirst = m_nullSortDirection == kNoCare ? SUSystemConfig::GetSystemConfig().IsNullsSortFirst() == bAsc
                                                         : m_nullSortDirection == kFirst;
  return bAsc ? bWantFirst != bDBNullsFirst : bWantFirst == bDBNullsFirst;
}

void RqSortSpec::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqSortSpec::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqOrderBy

RqOrderBy::RqOrderBy(const std::vector<RqSortSpec>& sortSpecs, bool bAddedForJoin) : m_bAddedForJoin(bAddedForJoin) {
  for (const RqSortSpec& sortSpec : sortSpecs) AddSortSpec(sortSpec);
}

RqOrderBy::RqOrderBy(const std::vector<RqSortSpec>& sortSpecs, const KXTypeInfoVector& stickyTypes, bool bAddedForJoin)
    : RqOrderBy(sortSpecs, bAddedForJoin) {
  m_stickyTypeVector = stickyTypes;
}

RqOrderBy::RqOrderBy(const RqOrderBy& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_stickyTypeVector(rhs.m_stickyTypeVector),
      m_bAddedForJoin(rhs.m_bAddedForJoin),
      m_numSortSpecs(rhs.m_numSortSpecs) {}

void RqOrderBy::SetNumSortSpecs(int numSortSpecs) {
  m_numSortSpecs = numSortSpecs;
  SetNumChildren(numSortSpecs);
}

RqSortSpec* RqOrderBy::GetIthSortSpec(int i) {
  KX_ASSERT(GetIthChild(i));
  return static_cast<RqSortSpec*>(GetIthChild(i));
}

void RqOrderBy::AddSortSpec(const RqSortSpec& sortSpec) {
  Heap<RqNode> copy(sortSpec.DeepCopy(false));
  const int i = GetNumSortSpecs();
  SetNumSortSpecs(i + 1);
  SetIthSortSpec(i, static_cast<RqSortSpec*>(copy.Release()));
}

bool RqOrderBy::NeedHiddenColumnForNullSortOrder(const RefADatabase& database, ARpGateway* pRp) const {
  for (int i = 0; i < m_numSortSpecs; ++i) {
    if (GetIthSortSpec(i)->IsNullSortDirectionIncompatibleWithDB(database, pRp)) return true;
  }
  return false;
}

void RqOrderBy::AppendPushDownAggr(const RqExpr* pExpr) { AddChild(pExpr ? pExpr->DeepCopy(false) : nullptr); }

void RqOrderBy::AppendPushDownAggrs(std::vector<Heap<RqExpr>>& exprs) {
  for (Heap<RqExpr>& expr : exprs) AddChild(expr.Release());
}

void RqOrderBy::GetPushDownAggrDeepCopy(std::vector<Heap<RqExpr>>& exprs) const {
  for (int i = m_numSortSpecs; i < GetNumChildren(); ++i) {
    const auto* const pAggr = static_cast<const RqExpr*>(GetIthChild(i));
    exprs.emplace_back(pAggr ? pAggr->DeepExprCopy(false) : nullptr);
  }
}

void RqOrderBy::CopyOrderBy(const RqList& source, RqList& dest) {
  const RqProjection* const pSourceProjection = source.GetProjection();
  const RqProjection* const pDestProjection = dest.GetProjection();
  const int numDestColumns = pDestProjection->GetNumColumns();
  KX_ASSERT(pSourceProjection->GetNumColumns() <= numDestColumns);
  const RqOrderBy* const pSource = source.GetOrderBy();
  if (!pSource) {
    dest.SetOrderBy(nullptr);
    return;
  }
  std::vector<RqSortSpec> sortSpecs;
  for (int i = 0; i < pSource->GetNumSortSpecs(); ++i) {
    const RqSortSpec& sortSpec = *pSource->GetIthSortSpec(i);
    const int index = pSourceProjection->FindColumnIndex(sortSpec.GetColumnNumber());
    if (index >= numDestColumns) KX_LOGIC_ERROR(L"");
    sortSpecs.emplace_back(pDestProjection->GetIthColumn(index)->GetColumnNum(), sortSpec.GetSortDirection(), false,
                           sortSpec.IsConstantColumn(), sortSpec.GetNullSortDirection());
  }
  Heap<RqOrderBy> copy(new RqOrderBy(sortSpecs, pSource->GetStickyTypes(), pSource->IsAddedForJoin()));
  std::vector<Heap<RqExpr>> aggrs;
  pSource->GetPushDownAggrDeepCopy(aggrs);
  copy->AppendPushDownAggrs(aggrs);
  dest.SetOrderBy(copy.Release());
}

void RqOrderBy::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_numSortSpecs);
}

const_iterator RqOrderBy::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_numSortSpecs);
}
