#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"

#include <algorithm>
#include <tuple>

#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"

// Logical columns

RqAttribute::RqAttribute(ARpGateway* pRp, const VoidID& objID)
    : m_objID(objID), m_repositoryUniqueID(pRp->GetRepositoryUniqueID32()) {
  if (const RefAAttribute attribute = GetAttribute(pRp)) m_tableObjID = attribute->GetEntityID();
}

RqAttribute::RqAttribute(const RqAttribute& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_objID(rhs.m_objID),
      m_tableObjID(rhs.m_tableObjID),
      m_repositoryUniqueID(rhs.m_repositoryUniqueID),
      m_bSourceContentMapExpr(rhs.m_bSourceContentMapExpr),
      m_catalogFolderID(rhs.m_catalogFolderID),
      m_bIsSortKeyAttribute(rhs.m_bIsSortKeyAttribute),
      m_DescriptorAttributeName(rhs.m_DescriptorAttributeName) {}

RefAAttribute RqAttribute::GetAlternateSortOrder(ARpGateway* pRp) const {
  const RefAAttribute attribute = GetAttribute(pRp);
  return attribute ? RefAAttribute(pRp, attribute->GetAlternateSortOrderID()) : RefAAttribute();
}

bool RqAttribute::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqNodeImpl::IsEquivalent(rhs, pred)) return false;
  const auto& right = static_cast<const RqAttribute&>(rhs);
  return m_repositoryUniqueID == right.m_repositoryUniqueID && m_objID == right.m_objID;
}

bool RqAttribute::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs,
                                [](const RqAttribute& e) { return std::tie(e.m_objID, e.m_repositoryUniqueID); });
}

void RqAttribute::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqAttribute::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

// Physical columns

RqTargetColumn::RqTargetColumn(ARpGateway* pRp, const VoidID& columnID, int tableNum)
    : m_tableNum(tableNum), m_columnID(columnID), m_repositoryUniqueID(pRp->GetRepositoryUniqueID32()) {}

RqTargetColumn::RqTargetColumn(const RqTargetColumn& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_columnName(rhs.m_columnName),
      m_tableNum(rhs.m_tableNum),
      m_columnID(rhs.m_columnID),
      m_repositoryUniqueID(rhs.m_repositoryUniqueID),
      m_attrIds(rhs.m_attrIds),
      m_bDataMiningColumn(rhs.m_bDataMiningColumn),
      m_relatedRqListPtr(rhs.m_relatedRqListPtr) {}

bool RqTargetColumn::IsEquivalentIgnoreDerivedTypes(const RqExpr& rhs, const RqEquivalence& pred,
                                                    bool bIgnoreDerivedTypes) const {
  if (bIgnoreDerivedTypes ? !rhs.IsTargetColumn() : !RqNodeImpl::IsEquivalent(rhs, pred)) return false;
  const auto& right = static_cast<const RqTargetColumn&>(rhs);
  return GetSourceTableNumber() == right.GetSourceTableNumber() && m_repositoryUniqueID == right.m_repositoryUniqueID &&
         m_columnID == right.m_columnID && m_columnName == right.m_columnName;
}

std::tuple<int, std::uint32_t, const VoidID&, const KXString&> RqTargetColumn::OrderKey(const RqTargetColumn& column) {
  return {column.GetSourceTableNumber(), column.m_repositoryUniqueID, column.m_columnID, column.m_columnName};
}

bool RqTargetColumn::IsShallowLessThan(const RqExpr& rhs) const { return IsShallowLessThanByKey(*this, rhs, OrderKey); }

std::weak_ordering RqTargetColumn::CompareShallow(const RqExpr& rhs) const {
  return CompareShallowByKey(*this, rhs, OrderKey);
}

KXString RqTargetColumn::GetColumnName(ARpGateway* pRp) const {
  const RefAColumn column(pRp, m_columnID);
  return column ? column->GetName() : m_columnName;
}

void RqTargetColumn::AddRelatedAttrId(const VoidID& attrId) {
  if (std::find(m_attrIds.begin(), m_attrIds.end(), attrId) == m_attrIds.end()) m_attrIds.push_back(attrId);
}

bool RqTargetColumn::RefersTo(const RqIdentifiedTable* pTable) const {
  return pTable && pTable->IsAtomicTable() && pTable->GetTableNumber() == m_tableNum;
}

RefADatabase RqTargetColumn::GetRpDatabaseObj(ARpGateway* pRp) const {
  const RefAColumn column(pRp, m_columnID);
  if (!column) return RqNodeImpl::GetRpDatabaseObj(pRp);
  const RefATable table(pRp, column->GetTableID());
  return table ? RefADatabase(pRp, table->GetDatabaseID()) : RefADatabase();
}

void RqTargetColumn::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqTargetColumn::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

RqTargetCubeColumn::RqTargetCubeColumn(const RqTargetCubeColumn& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_bMatchParentAggrType(rhs.m_bMatchParentAggrType) {}

RqTargetCacheColumn::RqTargetCacheColumn(const RqTargetCacheColumn& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_bIsMashupsPinnedExpr(rhs.m_bIsMashupsPinnedExpr) {}

void RqTargetCacheColumn::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bIsMashupsPinnedExpr);
}

const_iterator RqTargetCacheColumn::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_bIsMashupsPinnedExpr);
}
