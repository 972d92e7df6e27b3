#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"

#include <cstddef>
#include <tuple>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqDerivedColumn

const KXString RqDerivedColumn::kColumnPrefix(L"c");

RqDerivedColumn::RqDerivedColumn(RqExpr* pDonated, int columnNum) : m_columnNum(columnNum) { AddChild(pDonated); }

RqDerivedColumn::RqDerivedColumn(const RqDerivedColumn& rhs, bool bNewIDs, bool)
    : RqNodeImpl(rhs, bNewIDs, true),
      SmartRqNodeContainer(),
      m_columnNum(rhs.m_columnNum),
      m_breakStatus(rhs.m_breakStatus) {}

void RqDerivedColumn::SetBreakStatus(BreakStatus status) {
  // A tree that was read may have columns that refer to one another in a circle. The walk compares with one of those
  // that it has passed, and takes a new one after twice as many steps each time: in a circle it meets that one again.
  const RqDerivedColumn* pPassed = this;
  std::size_t stepsLeft = 1;
  std::size_t lastSteps = 1;
  for (RqDerivedColumn* pColumn = this;;) {
    pColumn->m_breakStatus = status;
    const RqExpr* const pExpr = pColumn->GetExpr();
    if (!pExpr || !pExpr->IsDerivedColumnReference()) return;
    const auto& reference = static_cast<const RqDerivedColumnReference&>(*pExpr);
    if (!reference.IsValidDerivedColumnReference()) return;
    RqDerivedColumn* const pReferenced = reference.GetDerivedColumn();
    const RqAbstractList* const pBlock = pReferenced->GetRqAbstractListContainer();
    if (!pBlock || !pBlock->GetParent() || !pBlock->IsRqList()) return;
    if (pBlock->GetParent()->GetObjectType() == kRqUnion) return;
    if (pReferenced->m_breakStatus != kUnknownBreakStatus && pReferenced->m_breakStatus != kNoDuplicates) return;
    if (pReferenced == pPassed) return;
    if (--stepsLeft == 0) {
      pPassed = pReferenced;
      stepsLeft = lastSteps *= 2;
    }
    pColumn = pReferenced;
  }
}

RqAbstractList* RqDerivedColumn::GetRqAbstractListContainer() const {
  const RqNode* const pProjection = GetParent();
  const RqNode* const pBlock = pProjection ? pProjection->GetParent() : nullptr;
  // A select list may stand in a handle for a while.
  if (!pBlock || !pBlock->IsAbstractTable()) return nullptr;
  return const_cast<RqAbstractList*>(static_cast<const RqAbstractList*>(pBlock));
}

void RqDerivedColumn::Replace(RqNode* pReplacement, RqNode& releaseContainer) {
  RqNodeImpl::Replace(pReplacement, releaseContainer);
  if (pReplacement && pReplacement->GetObjectType() == kRqDerivedColumn) {
    SwitchDerivedColumnReferences(static_cast<RqDerivedColumn*>(pReplacement));
  }
}

void RqDerivedColumn::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqDerivedColumn::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqDerivedColumnReference

const KXString g_danglingDerivedColumn(L"Dangling derived column reference");

RqDerivedColumnReference::RqDerivedColumnReference(RqDerivedColumn* pDerivedColumn)
    : m_bTreeVectorForm(false), m_ptrDerivedColumn(pDerivedColumn) {
  KX_ASSERT(pDerivedColumn);
}

RqDerivedColumnReference::RqDerivedColumnReference(const RqDerivedColumnReference& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_bTreeVectorForm(rhs.m_bTreeVectorForm),
      m_ptrDerivedColumn(rhs.m_ptrDerivedColumn),
      m_tableName(rhs.m_tableName) {}

int RqDerivedColumnReference::GetColumnNumber() const {
  return m_bTreeVectorForm ? m_columnNumber : GetDerivedColumn()->GetColumnNum();
}

RqDerivedColumn* RqDerivedColumnReference::GetDerivedColumn() const {
  RqDerivedColumn* const pDerivedColumn = FindDerivedColumn();
  if (!pDerivedColumn) KX_LOGIC_ERROR(L"invalid derived column reference");
  return pDerivedColumn;
}

namespace {

/// The derived table that a column is one of; null if it is one of none.
const RqDerivedTable* FindTable(const RqDerivedColumn& column) {
  const RqAbstractList* const pBlock = column.GetRqAbstractListContainer();
  return pBlock ? pBlock->GetRqDerivedTableContainer() : nullptr;
}

}  // namespace

KXString RqDerivedColumnReference::GetSourceTableName() const {
  if (m_bTreeVectorForm) return m_tableName;
  const RqDerivedColumn* const pDerivedColumn = FindDerivedColumn();
  if (!pDerivedColumn) return g_danglingDerivedColumn;
  const RqDerivedTable* const pTable = FindTable(*pDerivedColumn);
  return pTable ? RqDerivedTable::kTablePrefix + BaseStringUtil::StringFrom(pTable->GetTableNumber()) : KXString();
}

int RqDerivedColumnReference::GetSourceTableNumber() const {
  const RqDerivedColumn* const m_ptrDerivedColumn = FindDerivedColumn();
  KX_ASSERT(m_ptrDerivedColumn);
  const RqDerivedTable* const pTable = FindTable(*m_ptrDerivedColumn);
  return pTable ? pTable->GetTableNumber() : 0;
}

KXString RqDerivedColumnReference::GetColumnName() const {
  const RqDerivedColumn* const pDerivedColumn = FindDerivedColumn();
  if (!pDerivedColumn) return {};
  return RqDerivedColumn::kColumnPrefix + BaseStringUtil::StringFrom(pDerivedColumn->GetColumnNum());
}

bool RqDerivedColumnReference::AdjustDerivedColumnPtr(const RqIdentifiedTable* pTable) {
  KX_ASSERT(RefersTo(pTable));
  const RqAbstractList* const pInnerList = static_cast<const RqDerivedTable*>(pTable)->GetInnerList();
  const RqProjection* const pProjection = pInnerList->GetProjection();
  KX_ASSERT(pProjection);
  const RqDerivedColumn* const pOld = GetDerivedColumn();
  if (pOld->GetParent() == pProjection) return true;
  for (int i = 0; i < pProjection->GetNumColumns(); ++i) {
    const RqDerivedColumn* const pColumn = pProjection->GetIthColumn(i);
    if (pColumn && pColumn->IsCopyOf(*pOld)) {
      SetDerivedColumn(const_cast<RqDerivedColumn*>(pColumn));
      return true;
    }
  }
  return false;
}

bool RqDerivedColumnReference::RefersTo(const RqIdentifiedTable* pTable) const {
  return pTable && pTable->IsDerivedTable() && pTable->GetTableNumber() == GetSourceTableNumber();
}

bool RqDerivedColumnReference::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqNodeImpl::IsEquivalent(rhs, pred)) return false;
  const auto& other = static_cast<const RqDerivedColumnReference&>(rhs);
  const RqDerivedColumn* const pMine = FindDerivedColumn();
  const RqDerivedColumn* const pOthers = other.FindDerivedColumn();
  if (pMine == pOthers) return true;
  return pMine && pOthers && GetSourceTableNumber() == other.GetSourceTableNumber() &&
         pMine->GetColumnNum() == pOthers->GetColumnNum();
}

bool RqDerivedColumnReference::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqDerivedColumnReference& reference) {
    return std::make_tuple(reference.GetSourceTableNumber(), reference.GetDerivedColumn()->GetColumnNum());
  });
}

void RqDerivedColumnReference::ToByteVector(ByteVector& bv) {
  const RqDerivedColumn* const pDerivedColumn = GetDerivedColumn();
  DataBlobUtil::ToByteVector(bv, GetSourceTableName());
  DataBlobUtil::ToByteVector(bv, std::int32_t{pDerivedColumn->GetColumnNum()});
  RqNodeImpl::ToByteVector(bv);
}

const_iterator RqDerivedColumnReference::FromByteVector(const_iterator start) {
  m_bTreeVectorForm = true;
  start = DataBlobUtil::FromByteVector(start, m_tableName, true);
  start = DataBlobUtil::FromByteVector(start, m_columnNumber);
  return RqNodeImpl::FromByteVector(start);
}
