#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"

#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"

namespace {

bool Contains(const UInt16Vector& numbers, std::uint16_t number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// RqSharedList

RqSharedList::RqSharedList(RqProjection* pProjection, RqAbstractList* pShared) : m_pSharedRqList(pShared) {
  AddChild(pProjection);
  if (pShared) pShared->SetShared(true);
}

RqProjection* RqSharedList::GetProjection() { return static_cast<RqProjection*>(GetIthChild(kProjection)); }

// ---------------------------------------------------------------------------------------------------------------------
// RqBreakFilter

RqBreakFilter::RqBreakFilter(RqAbstractList* pInner, const UInt16Vector& breakColumns) : RqWrapperList(pInner) {
  KX_ASSERT(!breakColumns.empty());
  const RqProjection& projection = *pInner->GetProjection();
  for (const std::uint16_t index : breakColumns) {
    m_breakColumnNumbers.push_back(static_cast<std::uint16_t>(projection.GetIthColumn(index)->GetColumnNum()));
  }
}

RqBreakFilter::RqBreakFilter(RqAbstractList* pInner, const UInt16Vector& breakColumnIndexes,
                             const UInt16Vector& noOrderByIndexes)
    : RqBreakFilter(pInner, breakColumnIndexes) {
  const RqProjection& projection = *pInner->GetProjection();
  for (const std::uint16_t index : noOrderByIndexes) {
    const auto number = static_cast<std::uint16_t>(projection.GetIthColumn(index)->GetColumnNum());
    if (Contains(m_breakColumnNumbers, number) && !Contains(m_NoOrderByBreakColumnNumbers, number)) {
      m_NoOrderByBreakColumnNumbers.push_back(number);
    }
  }
}

RqBreakFilter::RqBreakFilter(const RqBreakFilter& rhs, bool bNewIDs, bool bDeepCopy)
    : RqWrapperList(rhs, bNewIDs, bDeepCopy),
      m_breakColumnNumbers(rhs.m_breakColumnNumbers),
      m_NoOrderByBreakColumnNumbers(rhs.m_NoOrderByBreakColumnNumbers) {}

void RqBreakFilter::CollectIndexes(UInt16Vector& indexes, bool bDistinct, bool bAccountForNoOrderBy) const {
  const RqProjection* const pProjection = GetProjection();
  if (!pProjection) KX_LOGIC_ERROR(L"");
  indexes.reserve(m_breakColumnNumbers.size());
  for (const std::uint16_t number : m_breakColumnNumbers) {
    if (bAccountForNoOrderBy && Contains(m_NoOrderByBreakColumnNumbers, number)) continue;
    const int index = pProjection->FindColumnIndex(static_cast<int>(number));
    if (index < 0 || index >= pProjection->GetNumColumns()) KX_LOGIC_ERROR(L"");
    const auto position = static_cast<std::uint16_t>(index);
    if (!bDistinct || !Contains(indexes, position)) indexes.push_back(position);
  }
}

void RqBreakFilter::ToByteVector(ByteVector& bv) {
  RqWrapperList::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqBreakFilter::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqWrapperList::FromByteVector(start), *this, kWrittenFields);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqMolapFilterJoin

bool RqMolapFilterJoin::AddFilterJoinQueriesAndJoinIndex(const FilterJoinQueryAndJoinIndex& entry) {
  if (Find(entry.first.second) != m_entries.end()) return false;
  m_entries.push_back(entry);
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// RqStats

void RqStats::ToByteVector(ByteVector& bv) {
  RqWrapperList::ToByteVector(bv);
  (m_refCntStatsStruct ? *m_refCntStatsStruct : StatsStruct()).ToByteVector(bv);
}

const_iterator RqStats::FromByteVector(const_iterator start) {
  m_refCntStatsStruct = RefCnt<StatsStruct>(new StatsStruct());
  return m_refCntStatsStruct->FromByteVector(RqWrapperList::FromByteVector(start));
}
