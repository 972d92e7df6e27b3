#include "Query/Optimizer/Request/Blocks/SQORRqGroupBy.h"

#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"

RqGroupBy::RqGroupBy(RqExprVector& columns, InternalExecutionMode mode) : m_internalExecutionMode(mode) {
  Init(columns, true, true);
}

RqGroupBy::RqGroupBy(RqExprVector& columns, bool bSortColumns) { Init(columns, true, bSortColumns); }

RqGroupBy::RqGroupBy(RqExprVector& columns, RqExprVector& granularity, InternalExecutionMode mode)
    : RqGroupBy(columns, mode) {
  if (!granularity.empty()) m_granularity = new RqExprColumnList(granularity, false, true);
}

RqGroupBy::RqGroupBy(const RqGroupBy& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExprColumnList(rhs, bNewIDs, bDeepCopy),
      m_groupingSetVector(rhs.m_groupingSetVector),
      m_internalExecutionMode(rhs.m_internalExecutionMode),
      m_bIgnoreProjectionInconsistency(rhs.m_bIgnoreProjectionInconsistency) {
  if (rhs.m_granularity) m_granularity = static_cast<RqExprColumnList*>(rhs.m_granularity->DeepCopy(false));
  m_groupingSetFilters.reserve(rhs.m_groupingSetFilters.size());
  for (const Heap<RqExprCond>& filter : rhs.m_groupingSetFilters) {
    m_groupingSetFilters.emplace_back(filter ? static_cast<RqExprCond*>(filter->DeepExprCopy(false)) : nullptr);
  }
}

void RqGroupBy::SetGroupingSetFilters(OwnedRqExprCondVector& filters) {
  KX_ASSERT(filters.size() == m_groupingSetVector.size());
  for (Heap<RqExprCond>& filter : filters) m_groupingSetFilters.emplace_back(filter.Release());
}

int RqGroupBy::GetMySize() const {
  int size =
      RqExprColumnList::GetMySize() + static_cast<int>(m_groupingSetVector.size() * sizeof(Int32Vector::value_type));
  if (m_granularity) size += m_granularity->GetMySize();
  for (const Heap<RqExprCond>& filter : m_groupingSetFilters) {
    if (filter) size += filter->GetMySize();
  }
  return size;
}

void RqGroupBy::ToByteVector(ByteVector& bv) {
  RqNode::ToByteVector(bv);
  RqTreeVector::ToByteVector(m_granularity.Get(), bv);
  DataBlobUtil::ToByteVector(bv, m_groupingSetVector);
}

const_iterator RqGroupBy::FromByteVector(const_iterator start) {
  start = RqNode::FromByteVector(start);
  RqNode* pGranularity = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(start, &pGranularity);
  Heap<RqNode> granularity(pGranularity);
  if (granularity && granularity->GetObjectType() != kRqExprColumnList) {
    DataBlobUtil::RaiseMalformedIfBounded(start, L"column list");
  }
  m_granularity = static_cast<RqExprColumnList*>(granularity.Release());
  return DataBlobUtil::FromByteVector(end, m_groupingSetVector);
}
