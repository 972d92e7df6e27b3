#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "Host/Expr.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOpaqueTable.h"

namespace {

/// The name by which the table goes in a database; empty if it goes by its own. Of several names for one database the
/// first decides, an empty one too.
KXString FindDynamicName(ARpGateway* pRp, const RefATable& table, const VoidID& databaseID) {
  const RefATable baseTable(pRp, table->GetAliasedTableID());
  std::vector<std::pair<Expr, KXString>> names;
  (baseTable ? baseTable : table)->GetDynamicNames(names);
  for (const auto& [expr, name] : names) {
    std::vector<RefARpObject> objects;
    expr.GetObjectsInExpr(pRp, objects, false);
    if (objects.empty() || objects.front().IsNull()) continue;
    if (RefCast<ADatabase>(objects.front()) && objects.front()->GetID() == databaseID) return name;
  }
  return {};
}

/// Whether a join is one of exactly these two tables.
bool JoinsTheTwo(const AComplexJoin& join, const VoidID& tableID, const VoidID& otherTableID) {
  VoidIDVector joinedIDs;
  join.GetJoinedTableIDs(joinedIDs);
  const auto joins = [&](const VoidID& id) {
    return std::find(joinedIDs.begin(), joinedIDs.end(), id) != joinedIDs.end();
  };
  return joinedIDs.size() == 2 && joins(tableID) && joins(otherTableID);
}

}  // namespace

const KXString RqAtomicTable::kTablePrefix = L"T";

RqAtomicTable::RqAtomicTable(ARpGateway* pRp, int tableNumber, const VoidID& tableID)
    : RqNodeImpl(tableNumber),
      m_repositoryUniqueID(pRp ? pRp->GetRepositoryUniqueID32() : ARpGateway::INVALID_UNIQUE_ID_32),
      m_tableID(tableID) {}

RqAtomicTable::RqAtomicTable(const UniversallyUniqueID& cacheTableID, const RefCntCachePhysicalSeedEntry& cacheEntry,
                             int tableNumber)
    : RqNodeImpl(tableNumber), m_cacheTableID(cacheTableID), m_refCntCachePhysicalEntry(cacheEntry) {
  MarkTargetType(ServerInfo::kInternalRawDataStorage);
}

RqAtomicTable::RqAtomicTable(const RqAtomicTable& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_repositoryUniqueID(rhs.m_repositoryUniqueID),
      m_tableID(rhs.m_tableID),
      m_cacheTableID(rhs.m_cacheTableID),
      m_refCntCachePhysicalEntry(rhs.m_refCntCachePhysicalEntry),
      m_pMetaData(rhs.m_pMetaData ? new KXRecordMetaData(*rhs.m_pMetaData) : nullptr),
      m_sampleSize(rhs.m_sampleSize) {}

bool RqAtomicTable::IsAliasedTable(ARpGateway* pRp) const {
  const RefATable table(pRp, m_tableID);
  return table && !table->GetAliasedTableID().IsNullID();
}

KXString RqAtomicTable::GetTableName(ARpGateway* pRp, bool bBareName, bool bTargetSpecific) const {
  if (m_tableID.IsNullID()) {
    const auto* const pTransientTable = dynamic_cast<const RqTransientOpaqueTable*>(this);
    return pTransientTable ? pTransientTable->GetQueryString(pRp) : KXString(L"CacheTable");
  }
  if (!pRp) return m_tableID.ToString();
  const RefATable table(pRp, m_tableID);
  if (!table) KX_LOGIC_ERROR(L"");
  if (bTargetSpecific) {
    VoidID targetID;
    GetTargetID(targetID);
    if (const KXString name = FindDynamicName(pRp, table, targetID); !name.empty()) return name;
  }
  return bBareName ? table->GetName() : table->GetQualifiedName(pRp);
}

KXString RqAtomicTable::GetAliasName(ARpGateway* pRp) const {
  return IsAliasedTable(pRp) ? RefATable(pRp, m_tableID)->GetName() : KXString();
}

bool RqAtomicTable::IsSystemGenerated(ARpGateway* pRp) const {
  const RefATable table(pRp, m_tableID);
  return table && table->IsSystemGenerated();
}

RefAComplexJoin RqAtomicTable::GetCommonComplexJoin(ARpGateway* pRp, const RqAtomicTable* pOtherTable) const {
  KX_ASSERT(pRp);
  KX_ASSERT(pOtherTable);
  if (m_tableID == pOtherTable->m_tableID) return {};
  const RefATable thisRpTable(pRp, m_tableID);
  KX_ASSERT(!thisRpTable.IsNull());
  const RefATable otherRpTable(pRp, pOtherTable->m_tableID);
  KX_ASSERT(!otherRpTable.IsNull());
  VoidIDVector joinIDs;
  thisRpTable->GetComplexJoinIDs(joinIDs);
  for (const VoidID& joinID : joinIDs) {
    RefAComplexJoin join(pRp, joinID);
    if (join && JoinsTheTwo(*join, m_tableID, pOtherTable->m_tableID)) return join;
  }
  return {};
}

KXRecordMetaData* RqAtomicTable::GetMetaData() {
  if (!m_pMetaData && m_refCntCachePhysicalEntry) {
    m_pMetaData = new KXRecordMetaData;
    m_refCntCachePhysicalEntry->GetRecordMetaData(*m_pMetaData);
  }
  return m_pMetaData.Get();
}

bool RqAtomicTable::operator==(const RqAtomicTable& rhs) const {
  if (m_repositoryUniqueID != rhs.m_repositoryUniqueID || m_tableID != rhs.m_tableID) return false;
  if (!ValidCacheTable() || !rhs.ValidCacheTable()) return ValidCacheTable() == rhs.ValidCacheTable();
  return m_cacheTableID == rhs.m_cacheTableID;
}

bool RqAtomicTable::operator<(const RqAtomicTable& rhs) const {
  const auto key = [](const RqAtomicTable& table) {
    return std::tuple<std::uint32_t, const VoidID&, bool, const UniversallyUniqueID&>(
        table.m_repositoryUniqueID, table.m_tableID, table.ValidCacheTable(), table.m_cacheTableID);
  };
  return key(*this) < key(rhs);
}

RefADatabase RqAtomicTable::GetRpDatabaseObj(ARpGateway* pRp) const {
  KX_ASSERT(pRp);
  const RefATable table(pRp, m_tableID);
  return table ? RefADatabase(pRp, table->GetDatabaseID()) : RefADatabase();
}

bool RqAtomicTable::IsEquivalent(const RqAbstractTable& rhs) const {
  if (GetObjectType() != rhs.GetObjectType()) return false;
  const auto& right = static_cast<const RqAtomicTable&>(rhs);
  VoidID targetID;
  GetTargetID(targetID);
  VoidID rightTargetID;
  right.GetTargetID(rightTargetID);
  return m_repositoryUniqueID == right.m_repositoryUniqueID && m_tableID == right.m_tableID &&
         m_cacheTableID == right.m_cacheTableID &&
         (!m_pMetaData || !right.m_pMetaData || m_pMetaData == right.m_pMetaData) &&
         GetTargetType() == right.GetTargetType() && targetID == rightTargetID;
}

void RqAtomicTable::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqAtomicTable::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

bool IsDatabaseTable::operator()(const RqNode& node) const {
  switch (node.GetObjectType()) {
    case kRqAtomicTable:
    case kRqOpaqueTable:
    case kRqTransientOpaqueTable:
    case kRqTELMNativeTable: {
      VoidID tableID;
      static_cast<const RqAtomicTable&>(node).GetTableID(tableID);
      return !tableID.IsNullID();
    }
    default:
      return false;
  }
}
