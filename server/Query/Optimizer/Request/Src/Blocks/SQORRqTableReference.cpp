#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"

#include <algorithm>
#include <utility>

#include "Host/KXAssert.h"
#include "Host/ServerInfo.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

namespace {

/// The same side after left and right have been exchanged.
DrivingTableHint FlipHint(DrivingTableHint hint) {
  if (hint == kDriving_UnknownTable) return hint;
  return hint == kDriving_LeftTable ? kDriving_RightTable : kDriving_LeftTable;
}

NodeInfoVector* CopyNodeInfos(const NodeInfoVector& nodeInfos) {
  Heap<NodeInfoVector> copies(new NodeInfoVector);
  copies->reserve(nodeInfos.size());
  for (const NodeInfo* const pNodeInfo : nodeInfos) copies->push_back(new NodeInfo(*pNodeInfo));
  return copies.Release();
}

RqTableReference* AsTableReference(RqAbstractTable* pTable) {
  return pTable && pTable->IsTableReference() ? static_cast<RqTableReference*>(pTable) : nullptr;
}

/// Whether both are missing, or both are there and answer so. One object is equivalent to itself.
bool EquivalentOrMissing(const RqExprCond* pLhs, const RqExprCond* pRhs) {
  if (pLhs == pRhs) return true;
  return pLhs && pRhs && RqEquivalence()(*pLhs, *pRhs);
}

/// The same for tables, where no object passes unasked.
bool EquivalentOrMissing(const RqAbstractTable* pLhs, const RqAbstractTable* pRhs) {
  if (!pLhs || !pRhs) return !pLhs && !pRhs;
  return pLhs->IsEquivalent(*pRhs);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Construction and copies

RqTableReference::RqTableReference() { SetNumChildren(kNumChildren); }

RqTableReference::RqTableReference(SqlTableRef::JoinType joinType, RqAbstractTable* pLeft, RqExprCond* pCond,
                                   RqAbstractTable* pRight, DrivingTableHint drivingTableHint)
    : m_joinTypeTag(joinType), m_drivingTableHint(drivingTableHint) {
  if (joinType == SqlTableRef::kRightOuterJoin) {
    m_joinTypeTag = SqlTableRef::FlipJoinType(joinType);
    m_drivingTableHint = FlipHint(drivingTableHint);
    std::swap(pLeft, pRight);
  }
  SetNumChildren(kNumChildren);
  SetLeftTable(pLeft);
  SetRightTable(pRight);
  SetSearchCond(pCond);
}

RqTableReference::RqTableReference(const RqTableReference& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_joinTypeTag(rhs.m_joinTypeTag),
      m_joinSubTypeTag(rhs.m_joinSubTypeTag),
      m_drivingTableHint(rhs.m_drivingTableHint),
      m_leftJoinColumnIndexes(rhs.m_leftJoinColumnIndexes),
      m_rightJoinColumnIndexes(rhs.m_rightJoinColumnIndexes),
      m_nullsAreEqualFlags(rhs.m_nullsAreEqualFlags),
      m_bRemoveCandidate(rhs.m_bRemoveCandidate),
      m_factTableIndex(rhs.m_factTableIndex),
      m_bJoinAbsorbed(rhs.m_bJoinAbsorbed),
      m_pNodeInfoVector(rhs.m_pNodeInfoVector ? CopyNodeInfos(*rhs.m_pNodeInfoVector) : nullptr),
      m_multiJoinProjectedColumns(rhs.m_multiJoinProjectedColumns),
      m_internalParamsVector(rhs.m_internalParamsVector),
      m_bIsMolapStarJoin(rhs.m_bIsMolapStarJoin),
      m_bHashJoinHint(rhs.m_bHashJoinHint),
      m_estimatedDictionarySize(rhs.m_estimatedDictionarySize),
      m_dictionaryRowCount(rhs.m_dictionaryRowCount) {}

// ---------------------------------------------------------------------------------------------------------------------
// Questions about the nest

void RqTableReference::SetRemoveCandidacy(bool bRemoveCandidate) {
  m_bRemoveCandidate = bRemoveCandidate;
  for (RqAbstractTable* const pTable : {GetLeftTable(), GetRightTable()}) {
    if (RqTableReference* const pTableRef = AsTableReference(pTable)) pTableRef->SetRemoveCandidacy(bRemoveCandidate);
  }
}

bool RqTableReference::IsDeclarativeTableReference() const {
  return m_joinTypeTag == SqlTableRef::kInnerJoin && GetLeftTable() && GetLeftTable()->IsIdentifiedTable() &&
         !GetRightTable();
}

bool RqTableReference::IsDerivedTableReference() const {
  return m_joinTypeTag == SqlTableRef::kInnerJoin && !GetRightTable() && GetLeftTable() &&
         GetLeftTable()->IsDerivedTable();
}

RqDerivedTable* RqTableReference::GetDerivedTable() {
  KX_ASSERT(IsDerivedTableReference());
  return static_cast<RqDerivedTable*>(GetLeftTable());
}

bool RqTableReference::HasOuterJoins() const {
  const RqAbstractTable* pTable = this;
  while (pTable && pTable->IsTableReference()) {
    const auto* const pTableRef = static_cast<const RqTableReference*>(pTable);
    if (pTableRef->m_joinTypeTag != SqlTableRef::kInnerJoin || HasOuterJoins(pTableRef->GetLeftTable())) return true;
    pTable = pTableRef->GetRightTable();
  }
  return false;
}

bool RqTableReference::HasOuterJoins(const RqAbstractTable* pTable) {
  return pTable && pTable->IsTableReference() && static_cast<const RqTableReference*>(pTable)->HasOuterJoins();
}

bool RqTableReference::IsReallyNaturalJoin() const {
  if (m_joinTypeTag == SqlTableRef::kNaturalJoin) return true;
  if (m_joinTypeTag != SqlTableRef::kInnerJoin) return false;
  if (GetSearchCond() || !GetLeftTable() || !GetRightTable()) return false;
  if (FoundNodes(this, IsObjectType(kRqDerivedTable))) return false;
  std::list<RqAtomicTable*> tables;
  GetAllDescendentAtomicTables(const_cast<RqTableReference*>(this), tables);
  return std::any_of(tables.begin(), tables.end(), [](const RqAtomicTable* pTable) {
    return ServerInfo::IsBundleTargetType(pTable->GetTargetType());
  });
}

bool RqTableReference::IsLeafTable() const { return ServerInfo::IsRemoteTargetType(GetTargetType()); }

bool RqTableReference::IsEquivalent(const RqAbstractTable& rhs) const {
  if (rhs.GetObjectType() != kRqTableReference) return false;
  const auto& right = static_cast<const RqTableReference&>(rhs);
  return m_joinTypeTag == right.m_joinTypeTag && IsLeafTable() && right.IsLeafTable() &&
         EquivalentOrMissing(GetSearchCond(), right.GetSearchCond()) &&
         EquivalentOrMissing(GetLeftTable(), right.GetLeftTable()) &&
         EquivalentOrMissing(GetRightTable(), right.GetRightTable());
}

// ---------------------------------------------------------------------------------------------------------------------
// Byte form

void RqTableReference::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqTableReference::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

// ---------------------------------------------------------------------------------------------------------------------
// Tables of a nest

void RqTableReference::CollectIdentifiedTables(RqAbstractTable* pTable, std::list<RqIdentifiedTable*>& tables) {
  if (RqTableReference* const pTableRef = AsTableReference(pTable)) {
    ::CollectIdentifiedTables(pTableRef, tables);
  } else if (pTable && pTable->IsIdentifiedTable()) {
    tables.push_back(static_cast<RqIdentifiedTable*>(pTable));
  } else {
    KX_LOGIC_ERROR(L"");
  }
}

void CollectIdentifiedTables(RqTableReference* pTableRef, std::list<RqIdentifiedTable*>& tables) {
  while (pTableRef) {
    RqTableReference::CollectIdentifiedTables(pTableRef->GetLeftTable(), tables);
    RqAbstractTable* const pRight = pTableRef->GetRightTable();
    pTableRef = AsTableReference(pRight);
    if (pRight && !pTableRef) RqTableReference::CollectIdentifiedTables(pRight, tables);
  }
}

void GetAllDescendentAtomicTables(RqNode* pNode, std::list<RqAtomicTable*>& tables) {
  if (!pNode) return;
  if (pNode->GetObjectType() == kRqAtomicTable) {
    tables.push_back(static_cast<RqAtomicTable*>(pNode));
    return;
  }
  const int numChildren = pNode->GetNumChildren();
  for (int i = 0; i < numChildren; ++i) GetAllDescendentAtomicTables(pNode->GetIthChild(i), tables);
}
