#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"

#include <iterator>
#include <tuple>

#include "Host/DataBlobUtil.h"

namespace {

SortDirectonVector AllDescending(const RqExpr* pColumns) {
  return SortDirectonVector(pColumns ? pColumns->GetNumOperands() : 0, RqSortSpec::kDesc);
}

/// Directions travel as their number in int32 and each in uint32.
void WriteDirections(ByteVector& bv, const SortDirectonVector& directions) {
  DataBlobUtil::ToByteVector(bv, static_cast<std::int32_t>(directions.size()));
  for (const RqSortSpec::SortDirection direction : directions) {
    DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(direction));
  }
}
const_iterator ReadDirections(const_iterator start, SortDirectonVector& directions) {
  std::int32_t count = 0;
  start = DataBlobUtil::FromByteVector(start, count);
  directions.clear();
  for (std::int32_t i = 0; i < count; ++i) {
    directions.emplace_back();
    start = DataBlobUtil::FromByteVector(start, directions.back(), RqSortSpec::kEitherDirection);
  }
  return start;
}

/// What is ranked by: a column list, made of an expression that is none.
RqExpr* AsColumnList(RqExpr* pExpr) {
  if (!pExpr || dynamic_cast<RqExprColumnListOrdered*>(pExpr)) return pExpr;
  RqExprVector columns{pExpr};
  return new RqExprColumnListOrdered(columns);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Ranks

RqExprAggrRank::RqExprAggrRank(RqExpr* pExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak,
                               bool bDistinct, bool bDenseRank, bool bCreatedForTopOrBottomN)
    : RqExprAggrRank(pExpr, {}, pControlBreak, pComputeBreak, bDistinct, bDenseRank, bCreatedForTopOrBottomN) {}

RqExprAggrRank::RqExprAggrRank(RqExpr* pExpr, const SortDirectonVector& sortDirections, RqExprColumnList* pControlBreak,
                               RqExprColumnList* pComputeBreak, bool bDistinct, bool bDenseRank,
                               bool bCreatedForTopOrBottomN)
    : RqAggrKind(AsColumnList(pExpr), pControlBreak, pComputeBreak, bDistinct),
      m_sortDirections(sortDirections),
      m_bDenseRank(bDenseRank),
      m_bCreatedForTopOrBottomN(bCreatedForTopOrBottomN) {
  if (sortDirections.empty()) {
    m_sortDirections = AllDescending(GetAggrExpr());
  } else if (pExpr && pExpr->IsMultiExpr()) {
    // Wanted: a single expression may have any number of directions, of which the first is its own.
    KX_ASSERT_TEXT(pExpr->GetNumOperands() == std::ssize(sortDirections),
                   L"pExpr->GetNumOperands() == sortDirections.size()");
  }
}

RqExprAggrRank::RqExprAggrRank(const RqExprAggrRank& rhs, bool bNewIDs, bool bDeepCopy)
    : RqAggrKind(rhs, bNewIDs, bDeepCopy),
      m_sortDirections(rhs.m_sortDirections),
      m_bDenseRank(rhs.m_bDenseRank),
      m_bCreatedForTopOrBottomN(rhs.m_bCreatedForTopOrBottomN) {}

void RqExprAggrRank::SetIthOperand(int i, RqExpr* pNewOperand) {
  RqExpr::SetIthOperand(i, i == kAggrExpr ? AsColumnList(pNewOperand) : pNewOperand);
}

RqExpr* RqExprAggrRank::RenderOnSummaryList(RqList& inner) const {
  const auto* const pColumnList = dynamic_cast<const RqExprColumnListOrdered*>(GetAggrExpr());
  KX_ASSERT(pColumnList);
  RqExprVector references;
  for (int i = 0; i < pColumnList->GetNumColumns(); ++i) {
    references.push_back(MakeReference(inner, pColumnList->GetIthColumn(i)));
  }
  auto* const pColumns = new RqExprColumnListOrdered(references);
  RqExprColumnList* const pControl = RenderBreakList(GetControlBreak(), inner);
  RqExprColumnList* const pCompute = RenderBreakList(GetComputeBreak(), inner);
  return AsDistinctAsThis(new RqExprAggrRank(pColumns, m_sortDirections, pControl, pCompute,
                                             IsDistinctWithout(pCompute), m_bDenseRank, false));
}

bool RqExprAggrRank::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprAggrRank& aggr) {
    return std::pair<bool, const SortDirectonVector&>(aggr.IsDistinctAggregation(), aggr.m_sortDirections);
  });
}

void RqExprAggrRank::ToByteVector(ByteVector& bv) {
  RqAggrKind::ToByteVector(bv);
  WriteDirections(bv, m_sortDirections);
  DataBlobUtil::ToByteVector(bv, m_bDenseRank);
}
const_iterator RqExprAggrRank::FromByteVector(const_iterator start) {
  start = ReadDirections(RqAggrKind::FromByteVector(start), m_sortDirections);
  return DataBlobUtil::FromByteVector(start, m_bDenseRank);
}

RqExprAggrRowNum::RqExprAggrRowNum(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak,
                                   bool bDistinct)
    : RqAggrKind(pAggrExpr, pControlBreak, pComputeBreak, bDistinct),
      m_sortDirections(AllDescending(GetComputeBreak())) {}

RqExprAggrRowNum::RqExprAggrRowNum(RqExpr* pAggrExpr, const SortDirectonVector& sortDirections,
                                   RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak, bool bDistinct)
    : RqAggrKind(pAggrExpr, pControlBreak, pComputeBreak, bDistinct), m_sortDirections(sortDirections) {
  KX_ASSERT_TEXT(pComputeBreak && pComputeBreak->GetNumOperands() == std::ssize(sortDirections),
                 L"pComputeBreak && pComputeBreak->GetNumOperands() == sortDirections.size()");
}

RqExprAggrRowNum::RqExprAggrRowNum(const RqExprAggrRowNum& rhs, bool bNewIDs, bool bDeepCopy)
    : RqAggrKind(rhs, bNewIDs, bDeepCopy),
      m_nullsSortOrder(rhs.m_nullsSortOrder),
      m_sortDirections(rhs.m_sortDirections) {}

RqExpr* RqExprAggrRowNum::RenderOnSummaryList(RqList& inner) const {
  RqExpr* const pAggrExpr = MakeReference(inner, GetAggrExpr());
  RqExprColumnList* const pControl = RenderBreakList(GetControlBreak(), inner);
  RqExprColumnList* const pCompute = RenderBreakList(GetComputeBreak(), inner);
  // Constants and repeats of the compute break are gone, and with them the directions do not fit it any more.
  auto* const pRowNum = new RqExprAggrRowNum(pAggrExpr, pControl, pCompute, IsDistinctWithout(pCompute));
  pRowNum->m_sortDirections = m_sortDirections;
  return AsDistinctAsThis(pRowNum);
}

// ---------------------------------------------------------------------------------------------------------------------
// Moving and running aggregates

RqExprSortDependentAggr::RqExprSortDependentAggr(const RqExprSortDependentAggr& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExprAggr(rhs, bNewIDs, bDeepCopy), m_sortForAggr(rhs.m_sortForAggr), m_sortOrder(rhs.m_sortOrder) {}

void RqExprSortDependentAggr::SetSortSpec(const SortDirectonVector& directions, const Int32Vector& order) {
  m_sortForAggr = directions;
  m_sortOrder = order;
}

void RqExprSortDependentAggr::GetSortSpec(SortDirectonVector& directions, Int32Vector& order) const {
  directions = m_sortForAggr;
  order = m_sortOrder;
}

bool RqExprSortDependentAggr::PrivateIsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqExprAggr::PrivateIsEquivalent(rhs, pred)) return false;
  const auto& aggr = static_cast<const RqExprSortDependentAggr&>(rhs);
  return m_sortForAggr == aggr.m_sortForAggr && m_sortOrder == aggr.m_sortOrder;
}

bool RqExprSortDependentAggr::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprSortDependentAggr& aggr) {
    return std::tuple<bool, const SortDirectonVector&, const Int32Vector&>(aggr.IsDistinctAggregation(),
                                                                           aggr.m_sortForAggr, aggr.m_sortOrder);
  });
}

void RqExprSortDependentAggr::ToByteVector(ByteVector& bv) {
  RqExprAggr::ToByteVector(bv);
  WriteDirections(bv, m_sortForAggr);
  DataBlobUtil::ToByteVector(bv, m_sortOrder);
}
const_iterator RqExprSortDependentAggr::FromByteVector(const_iterator start) {
  start = ReadDirections(RqExprAggr::FromByteVector(start), m_sortForAggr);
  return DataBlobUtil::FromByteVector(start, m_sortOrder);
}
